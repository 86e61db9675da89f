#include "core/patches/muscle_patches_file.h"

#include <filesystem>
#include <fstream>
#include <locale>
#include <system_error>

namespace myo_core {

namespace {

constexpr int32_t kFormatVersion = 1;
constexpr int kFiberDigits = 10;

// Only a regular file is opened: a pipe or a device could block the read or
// never end it.
bool IsRegularFile(const std::string& path) {
  std::error_code error;
  return std::filesystem::is_regular_file(std::filesystem::path(path), error) && !error;
}

}  // namespace

bool HasMusclePatchesExtension(const std::string& path) {
  const std::size_t dot = path.rfind('.');
  const std::string extension = dot == std::string::npos ? path : path.substr(dot + 1);
  return extension == "mmp";
}

bool WriteMusclePatchesFile(const std::string& path, int32_t vertex_count, const std::vector<int32_t>& ids,
                            const std::vector<std::array<double, 3>>& fibers) {
  if (vertex_count < 0 || ids.size() != static_cast<std::size_t>(vertex_count)) return false;
  std::ofstream file(path, std::ios::out | std::ios::trunc);
  if (!file.is_open()) return false;
  file.imbue(std::locale::classic());

  file << kFormatVersion << std::endl;
  file << vertex_count << std::endl;
  for (std::size_t i = 0; i < ids.size(); ++i) {
    if (i > 0) file << ' ';
    file << ids[i];
  }
  file << std::endl;
  file.setf(std::ios::fixed, std::ios::floatfield);
  file.precision(kFiberDigits);
  for (std::size_t p = 0; p < fibers.size(); ++p) {
    file << fibers[p][0] << ' ' << fibers[p][1] << ' ' << fibers[p][2];
    if (p + 1 < fibers.size()) file << ' ';
  }
  file << std::endl;
  file.close();
  return !file.fail();
}

bool ReadMusclePatchesFile(const std::string& path, uint32_t expected_count, std::vector<int32_t>& ids,
                           std::vector<float>& fibers) {
  ids.clear();
  fibers.clear();
  if (!HasMusclePatchesExtension(path) || !IsRegularFile(path)) return false;

  // Update mode: neither truncates nor creates, and fails on a file that
  // cannot be written.
  std::fstream file(path, std::ios::in | std::ios::out);
  if (!file.is_open()) return false;
  file.imbue(std::locale::classic());

  int32_t version = 0;
  if (!(file >> version) || version != kFormatVersion) return false;
  int32_t count = 0;
  if (!(file >> count) || static_cast<int64_t>(count) != static_cast<int64_t>(expected_count)) return false;

  // Read into local arrays, so that a refused file leaves the outputs empty.
  std::vector<int32_t> read_ids;
  std::vector<float> read_fibers;
  int32_t id = 0;
  while (read_ids.size() < expected_count && file >> id) read_ids.push_back(id);
  float value = 0.0f;
  while (file >> value) read_fibers.push_back(value);
  if (read_ids.empty() || read_fibers.empty()) return false;

  ids = std::move(read_ids);
  fibers = std::move(read_fibers);
  return true;
}

}  // namespace myo_core
