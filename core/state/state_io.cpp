#include "core/state/state_reader.h"
#include "core/state/state_writer.h"

namespace myo_core {

void StateWriter::Array(const std::vector<bool>& flags) {
  Size(flags.size());
  for (bool flag : flags) Value(flag);
}

void StateWriter::Text(const std::string& text) {
  Size(text.size());
  Put(text.data(), text.size());
}

void StateReader::Fail(const std::string& reason) {
  if (!error_.empty()) return;
  error_ = section_.empty() ? reason : reason + " (in " + section_ + ")";
}

bool StateReader::Finish() {
  if (ok() && offset_ != size_)
    Fail(std::to_string(size_ - offset_) + " bytes follow the end of the state");
  return ok();
}

bool StateReader::Take(void* out, std::size_t size) {
  if (!ok()) return false;
  if (size > size_ - offset_) {
    Fail("the state ends early: " + std::to_string(size) + " bytes wanted at byte " + std::to_string(offset_) +
         ", " + std::to_string(size_ - offset_) + " left");
    return false;
  }
  if (size != 0) std::memcpy(out, data_ + offset_, size);
  offset_ += size;
  return true;
}

std::size_t StateReader::Size(std::size_t item_size) {
  uint64_t count = 0;
  if (!Take(&count, sizeof count)) return 0;
  const uint64_t left = size_ - offset_;
  if (count > left / (item_size == 0 ? 1 : item_size)) {
    Fail("a size of " + std::to_string(count) + " items does not fit the " + std::to_string(left) +
         " bytes left");
    return 0;
  }
  return static_cast<std::size_t>(count);
}

void StateReader::Array(std::vector<bool>& flags) {
  const std::size_t count = Size(1);
  if (!ok()) return;
  flags.assign(count, false);
  for (std::size_t i = 0; i < count && ok(); ++i) {
    bool flag = false;
    Value(flag);
    flags[i] = flag;
  }
}

void StateReader::Text(std::string& text) {
  const std::size_t count = Size(1);
  if (!ok()) return;
  text.resize(count);
  Take(text.data(), count);
}

void StateReader::Section(const std::string& name) {
  std::string found;
  Text(found);
  if (!ok()) return;
  if (found != name) {
    Fail("\"" + name + "\" expected, \"" + (found.size() > 60 ? found.substr(0, 60) + "..." : found) + "\" found");
    return;
  }
  section_ = name;
}

}  // namespace myo_core
