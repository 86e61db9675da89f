#include "core/state/state_envelope.h"

#include <cstring>

#include "core/state/state_checksum.h"

namespace myo_core {

namespace {

constexpr char kTag[8] = {'M', 'Y', 'O', 'S', 'T', 'A', 'T', 'E'};

template <class T>
void Put(std::string& out, T value) {
  char raw[sizeof(T)];
  std::memcpy(raw, &value, sizeof(T));
  out.append(raw, sizeof(T));
}

template <class T>
T Get(const std::string& in, std::size_t offset) {
  T value;
  std::memcpy(&value, in.data() + offset, sizeof(T));
  return value;
}

}  // namespace

std::string StateHeader(const std::string& state) {
  std::string header(kTag, sizeof kTag);
  Put<uint32_t>(header, kStateFormatVersion);
  Put<uint32_t>(header, Crc32(state.data(), state.size()));
  Put<uint64_t>(header, state.size());
  return header;
}

bool OpenState(const std::string& file, std::string& error) {
  if (file.size() >= sizeof kTag && std::memcmp(file.data(), kTag, sizeof kTag) != 0) {
    error = "not a myoforge state file";
    return false;
  }
  if (file.size() < kStateHeaderSize) {
    error = "truncated: " + std::to_string(file.size()) + " bytes, less than its " +
            std::to_string(kStateHeaderSize) + "-byte header";
    return false;
  }
  const uint32_t version = Get<uint32_t>(file, 8);
  if (version != kStateFormatVersion) {
    error = "format version " + std::to_string(version) + "; this myoforge reads version " +
            std::to_string(kStateFormatVersion);
    return false;
  }
  const uint64_t size = Get<uint64_t>(file, 16);
  const uint64_t held = file.size() - kStateHeaderSize;
  if (size != held) {
    error = (held < size ? "truncated: " : "lengthened: ") + std::to_string(held) +
            " bytes of state where its header announces " + std::to_string(size);
    return false;
  }
  const uint32_t checksum = Get<uint32_t>(file, 12);
  if (Crc32(file.data() + kStateHeaderSize, held) != checksum) {
    error = "damaged: its checksum does not match its contents";
    return false;
  }
  return true;
}

}  // namespace myo_core
