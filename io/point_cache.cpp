#include "io/point_cache.h"

#include <cstring>

namespace myo_io {

namespace {

// The format is little-endian, as the machines it runs on.
static_assert(sizeof(float) == 4, "32-bit floats expected");

template <typename T>
void Put(std::string& bytes, T value) {
  char raw[sizeof(T)];
  std::memcpy(raw, &value, sizeof(T));
  bytes.append(raw, sizeof(T));
}

std::string Header(uint32_t point_count, float start_frame, uint32_t sample_count) {
  std::string header("POINTCACHE2", 12);  // with its terminating zero
  Put<int32_t>(header, 1);
  Put<int32_t>(header, static_cast<int32_t>(point_count));
  Put<float>(header, start_frame);
  Put<float>(header, 1.0f);
  Put<int32_t>(header, static_cast<int32_t>(sample_count));
  return header;
}

}  // namespace

bool PointCacheWriter::Open(const std::string& path, uint32_t point_count, float start_frame, uint32_t sample_count,
                            std::string& error) {
  path_ = path;
  point_count_ = point_count;
  expected_ = sample_count;
  written_ = 0;
  return file_.Open(path, error) && file_.Write(Header(point_count, start_frame, sample_count), error);
}

bool PointCacheWriter::OpenResumable(const std::string& path, uint32_t point_count, float start_frame,
                                     uint32_t sample_count, uint32_t written, std::string& error) {
  path_ = path;
  point_count_ = point_count;
  expected_ = sample_count;
  const std::string header = Header(point_count, start_frame, sample_count);
  if (written == 0) {
    written_ = 0;
    return file_.OpenResumable(path, 0, error) && file_.Write(header, error);
  }
  if (written > sample_count) {
    error = path + ": " + std::to_string(written) + " samples to go on from, of " + std::to_string(sample_count);
    return false;
  }
  written_ = written;
  return file_.OpenResumable(path, FileSize(point_count, written), error);
}

uint64_t PointCacheWriter::FileSize(uint32_t point_count, uint32_t samples) {
  return Header(point_count, 0.0f, samples).size() + uint64_t{samples} * point_count * 3 * sizeof(float);
}

bool PointCacheWriter::Append(const std::vector<float>& points, std::string& error) {
  if (points.size() != static_cast<std::size_t>(point_count_) * 3) {
    error = path_ + ": a sample of " + std::to_string(points.size() / 3) + " points in a cache of " +
            std::to_string(point_count_);
    file_.Discard();
    return false;
  }
  if (!file_.Write(points.data(), points.size() * sizeof(float), error)) return false;
  ++written_;
  return true;
}

bool PointCacheWriter::Commit(std::string& error) {
  if (written_ != expected_) {
    error = path_ + ": " + std::to_string(written_) + " samples written of " + std::to_string(expected_);
    file_.Discard();
    return false;
  }
  return file_.Commit(error);
}

}  // namespace myo_io
