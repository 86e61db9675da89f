#include "io/file_text.h"

#include <fstream>
#include <sstream>

namespace myo_io {

bool ReadFileText(const std::string& path, std::string& text) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return false;
  std::ostringstream buffer;
  buffer << in.rdbuf();
  if (in.bad()) return false;
  text = buffer.str();
  return true;
}

}  // namespace myo_io
