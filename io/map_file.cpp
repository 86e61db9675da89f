#include "io/map_file.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <sstream>

#include "io/number_text.h"

namespace myo_io {

bool ReadMapFile(const std::string& path, std::vector<float>& values, std::string& error) {
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    error = path + ": cannot open the map file";
    return false;
  }
  std::vector<float> out;
  std::string line;
  for (std::size_t number = 1; std::getline(in, line); ++number) {
    const std::size_t hash = line.find('#');
    if (hash != std::string::npos) line.resize(hash);
    std::replace(line.begin(), line.end(), ',', ' ');
    std::istringstream words(line);
    std::string word;
    while (words >> word) {
      double value = 0.0;
      if (!ParseFloatText(word, value)) {
        error = path + ": line " + std::to_string(number) + ": " + Quoted(word) + " " + FloatTextProblem(word);
        return false;
      }
      out.push_back(static_cast<float>(value));
    }
  }
  if (in.bad()) {
    error = path + ": cannot read the map file";
    return false;
  }
  values = std::move(out);
  return true;
}

std::string MapFileText(const std::vector<float>& values, const std::string& comment) {
  std::string text = "# " + comment + "\n";
  text.reserve(text.size() + 16 * values.size());
  char line[32];
  for (float value : values) {
    std::snprintf(line, sizeof line, "%.9g\n", static_cast<double>(value));
    text += line;
  }
  return text;
}

}  // namespace myo_io
