#pragma once
// Appends a node's state to a byte string, field after field, each array and
// text preceded by its size. The field lists of the records are function
// templates over the archive (see state_archive.h), called with a writer to
// save and with a StateReader to load, so that both read the same list.

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

namespace myo_core {

class StateWriter {
 public:
  static constexpr bool kLoading = false;

  // A named mark: the reader checks that the same name comes at this place,
  // and names it in its messages.
  void Section(const std::string& name) { Text(name); }

  template <class T>
  void Value(const T& value) {
    static_assert(std::is_trivially_copyable_v<T> && !std::is_pointer_v<T>, "plain values only");
    Put(&value, sizeof(T));
  }

  template <class T>
  void Array(const std::vector<T>& values) {
    static_assert(std::is_trivially_copyable_v<T> && !std::is_pointer_v<T>, "arrays of plain values only");
    Size(values.size());
    Put(values.data(), values.size() * sizeof(T));
  }

  // One byte per flag.
  void Array(const std::vector<bool>& flags);
  void Text(const std::string& text);

  // The count, then each record through `fields(record)`.
  template <class T, class Fields>
  void Records(const std::vector<T>& records, Fields fields) {
    Size(records.size());
    for (const T& record : records) fields(record);
  }

  // Whether the record is there, then its fields when it is.
  template <class T, class Fields>
  void Optional(const std::unique_ptr<T>& record, Fields fields) {
    Value(static_cast<bool>(record));
    if (record) fields(*record);
  }

  // Room for `size` bytes, so that a state of a known size grows without copies.
  void Reserve(std::size_t size) { bytes_.reserve(size); }
  const std::string& bytes() const { return bytes_; }

 private:
  void Size(std::size_t size) { Value(static_cast<uint64_t>(size)); }
  void Put(const void* data, std::size_t size) {
    if (size != 0) bytes_.append(static_cast<const char*>(data), size);
  }

  std::string bytes_;
};

}  // namespace myo_core
