#pragma once
// A point cache file (".pc2"): a header, then every sample's points as
// little-endian 32-bit floats, three per point. Written atomically: the file
// appears when the last sample is in.

#include <cstdint>
#include <string>
#include <vector>

#include "io/atomic_file.h"

namespace myo_io {

class PointCacheWriter {
 public:
  // Writes the header: "POINTCACHE2\0", version 1, point count, first frame,
  // frames per sample (1) and the number of samples to come.
  bool Open(const std::string& path, uint32_t point_count, float start_frame, uint32_t sample_count,
            std::string& error);
  // As Open, into a file a run resumed from a checkpoint goes on with
  // (AtomicFile::OpenResumable): the first `written` samples already in it
  // are kept, and with none the file starts anew.
  bool OpenResumable(const std::string& path, uint32_t point_count, float start_frame, uint32_t sample_count,
                     uint32_t written, std::string& error);
  // Bytes of a cache file of `samples` samples of `point_count` points.
  static uint64_t FileSize(uint32_t point_count, uint32_t samples);
  // Hands the samples written so far to the system (before a checkpoint).
  bool Flush(std::string& error) { return file_.Flush(error); }
  uint32_t written() const { return written_; }
  // One sample of 3N floats.
  bool Append(const std::vector<float>& points, std::string& error);
  // Fails unless every announced sample was appended.
  bool Commit(std::string& error);

 private:
  AtomicFile file_;
  std::string path_;
  uint32_t point_count_ = 0;
  uint32_t expected_ = 0;
  uint32_t written_ = 0;
};

}  // namespace myo_io
