#pragma once
// Map files of the standalone host: one number per point (or per component),
// separated by blanks, commas or line ends; "#" starts a comment.

#include <string>
#include <vector>

namespace myo_io {

// Reads every number of the file as a 32-bit float. False, with `values`
// untouched and one message naming the file, the line and the text, for a
// file that cannot be opened, text that is no decimal number ("nan", "inf",
// words) or a number beyond the float range.
bool ReadMapFile(const std::string& path, std::vector<float>& values, std::string& error);

// The text of a map file: a comment line, then one value per line, printed
// so that ReadMapFile gives the same floats back.
std::string MapFileText(const std::vector<float>& values, const std::string& comment);

}  // namespace myo_io
