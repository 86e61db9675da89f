#pragma once
// The envelope of a saved state on disk: a header (the tag "MYOSTATE", the
// format version, the CRC-32 of the state and its size, little-endian)
// followed by the state. Opening it refuses, with the reason, a file of another kind or
// version, a truncated or lengthened one, and one whose bytes changed.

#include <cstddef>
#include <cstdint>
#include <string>

namespace myo_core {

// Raised whenever the layout of any saved record changes.
constexpr uint32_t kStateFormatVersion = 2;

// Header size in bytes: tag 8, version 4, checksum 4, size 8.
constexpr std::size_t kStateHeaderSize = 24;

// The header of `state`, to be written right before it.
std::string StateHeader(const std::string& state);
// The header and the state in one string.
inline std::string SealState(const std::string& state) { return StateHeader(state) + state; }

// Checks the envelope of `file`: true when the state that follows its
// header (from byte kStateHeaderSize on) is whole. False with the reason in
// `error` ("truncated: ...", "not a myoforge state file", "format version 7;
// this myoforge reads version 1", "damaged: its checksum does not match").
bool OpenState(const std::string& file, std::string& error);

}  // namespace myo_core
