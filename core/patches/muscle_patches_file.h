#pragma once
// The muscle patches file (".mmp"): which patch each vertex of a mesh belongs
// to, and the fiber along which each patch contracts. Plain text, four lines:
//
//   1                      format version
//   N                      vertex count of the mesh (all vertices)
//   id id ... id           N patch ids, 1-based; -1 for a vertex in no patch
//   x y z x y z ...        one fiber per patch with vertices, in ascending id
//                          order, 10 digits behind the point, not normalised
//
// Fibers of patches left empty are not written, so the triple at position
// id - 1 belongs to patch id only while no patch below it is empty; the
// readers take it as that patch's fiber in any case.

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace myo_core {

// Writes the file at `path` (created or truncated): version 1, N, the N ids
// separated by one blank, and the fibers as x, y, z in fixed notation with
// 10 digits behind the point, all on the fourth line separated by one blank;
// each line ends with a line end and a flush. Returns false, without touching
// the file system, when `ids` does not hold N entries (or N is negative), and
// false when the file cannot be opened or a write fails. The learning command
// says nothing about a failed write, so the result may be ignored.
bool WriteMusclePatchesFile(const std::string& path, int32_t vertex_count, const std::vector<int32_t>& ids,
                            const std::vector<std::array<double, 3>>& fibers);

// Reads the file at `path` for a mesh of `expected_count` vertices. True when
// the file is accepted; then `ids` holds its N ids and `fibers` its floats
// (three per patch; a count that is not a multiple of 3 is accepted, and the
// rest is left to the users). On false both arrays are empty.
//
// The file is refused, with the first failing check ending the read, when:
//  - the extension, the text behind the last "." of the path (the whole path
//    without any "."), is not exactly "mmp" in lower case: the file system is
//    not touched;
//  - the path names no regular file, or the file cannot be opened for reading
//    and writing: a write-protected file is refused like a missing one;
//  - the first number is not the integer 1, or the second is not
//    `expected_count`;
//  - no id or no fiber value could be read.
// Numbers are read as a C++ input stream reads them, all whitespace alike:
// ids as 32-bit signed integers until N were stored or a read fails, then
// floats until a read fails, which is the normal end of the file. A failed id
// read leaves the stream failed, so no float follows and the file is refused;
// text inside the fibers ends them, and those read so far are kept. Ids are
// not range-checked.
bool ReadMusclePatchesFile(const std::string& path, uint32_t expected_count, std::vector<int32_t>& ids,
                           std::vector<float>& fibers);

// The extension rule of ReadMusclePatchesFile alone.
bool HasMusclePatchesExtension(const std::string& path);

}  // namespace myo_core
