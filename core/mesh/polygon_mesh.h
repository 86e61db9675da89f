#pragma once
// A mesh as hosts hand it over: points and polygon loops, before topology.

#include <cstdint>
#include <vector>

namespace myo_core {

struct PolygonMesh {
  std::vector<float> points;           // 3N
  std::vector<int32_t> vertex_counts;  // P
  std::vector<int32_t> vertices;       // concatenated loops
};

}  // namespace myo_core
