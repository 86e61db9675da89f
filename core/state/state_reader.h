#pragma once
// Reads back what a StateWriter wrote, through the same field lists. Every
// read checks that the bytes are there and that sizes fit what is left, so
// a damaged state is refused with a reason and never read out of bounds; the
// first fault stops all later reads (they leave their fields alone).

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

namespace myo_core {

class StateReader {
 public:
  static constexpr bool kLoading = true;

  // The bytes must outlive the reader.
  explicit StateReader(const std::string& bytes) : data_(bytes.data()), size_(bytes.size()) {}
  StateReader(const char* data, std::size_t size) : data_(data), size_(size) {}

  bool ok() const { return error_.empty(); }
  // The first fault, naming the section it was found in.
  const std::string& error() const { return error_; }
  // Records a fault found by the caller (a size that does not fit the scene).
  void Fail(const std::string& reason);
  // Fails unless every byte was read.
  bool Finish();

  void Section(const std::string& name);

  template <class T>
  void Value(T& value) {
    static_assert(std::is_trivially_copyable_v<T> && !std::is_pointer_v<T>, "plain values only");
    if constexpr (std::is_same_v<T, bool>) {
      uint8_t byte = 0;
      if (Take(&byte, 1) && byte > 1) Fail("a flag holds " + std::to_string(byte));
      if (ok()) value = byte != 0;
    } else {
      T read;
      if (Take(&read, sizeof(T))) value = read;
    }
  }

  template <class T>
  void Array(std::vector<T>& values) {
    static_assert(std::is_trivially_copyable_v<T> && !std::is_pointer_v<T>, "arrays of plain values only");
    const std::size_t count = Size(sizeof(T));
    if (!ok()) return;
    values.resize(count);
    Take(values.data(), count * sizeof(T));
  }

  void Array(std::vector<bool>& flags);
  void Text(std::string& text);

  // Records are added one by one as their bytes are read, so that a count
  // that the bytes cannot back allocates nothing beyond them.
  template <class T, class Fields>
  void Records(std::vector<T>& records, Fields fields) {
    const std::size_t count = Size(1);
    records.clear();
    for (std::size_t k = 0; k < count && ok(); ++k) {
      records.emplace_back();
      fields(records.back());
    }
  }

  template <class T, class Fields>
  void Optional(std::unique_ptr<T>& record, Fields fields) {
    bool present = false;
    Value(present);
    if (!ok()) return;
    if (!present) {
      record.reset();
      return;
    }
    if (!record) record = std::make_unique<T>();
    fields(*record);
  }

 private:
  // A count of items of `item_size` bytes each that must fit what is left.
  std::size_t Size(std::size_t item_size);
  bool Take(void* out, std::size_t size);

  const char* data_;
  std::size_t size_;
  std::size_t offset_ = 0;
  std::string section_;
  std::string error_;
};

}  // namespace myo_core
