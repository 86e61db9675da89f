#pragma once
// The envelope of a saved state on disk: a header (the tag "MYOSTATE", the
// format version, the size of the state and its checksum) followed by the
// state. Opening it refuses, with the reason, a file of another kind or
// version, a truncated or lengthened one, and one whose bytes changed.

#include <cstdint>
#include <string>

namespace myo_core {

// Raised whenever the layout of any saved record changes.
constexpr uint32_t kStateFormatVersion = 1;

// Header size in bytes: tag 8, version 4, reserved 4, size 8, checksum 8.
constexpr std::size_t kStateHeaderSize = 32;

// The header and the state, ready to be written.
std::string SealState(const std::string& state);

// The state inside `file`. False with the reason in `error` ("truncated:
// ...", "not a myoforge state file", "format version 7; this myoforge reads
// version 1", "damaged: its checksum does not match").
bool OpenState(const std::string& file, std::string& state, std::string& error);

}  // namespace myo_core
