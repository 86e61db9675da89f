// Runs the muscle deformer on an OBJ mesh: both ends are attached to bones
// that sway, the muscle hangs under gravity and contracts in the second half.
// One line of figures per frame.
//
//   myo_demo [mesh.obj] [frames]

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "core/host/deformer_host.h"
#include "core/kernels/volume_constraint.h"
#include "core/log/logger.h"
#include "core/maps/map_store.h"
#include "core/muscle/muscle_deformer.h"
#include "io/obj_mesh.h"

namespace {

// The demo's host: a fixed mesh, 24 frames per second, never playing.
class DemoHost : public myo_core::DeformerHost {
 public:
  explicit DemoHost(const myo_core::MeshData& mesh) : mesh_(mesh) {}
  bool IsPlaying() const override { return false; }
  float FramesPerSecond() const override { return 24.0f; }
  bool ReadInputMesh(myo_core::MeshData& mesh) override {
    mesh = mesh_;
    return true;
  }
  std::string NodeName() const override { return "muscle1"; }

 private:
  const myo_core::MeshData& mesh_;
};

}  // namespace

int main(int argc, char** argv) {
  const std::string path = argc > 1 ? argv[1] : "examples/spindle_muscle.obj";
  const int frames = argc > 2 ? std::atoi(argv[2]) : 48;
  if (frames <= 0) {
    std::fprintf(stderr, "myo_demo: frames must be a positive whole number, got '%s'\n", argv[2]);
    return 2;
  }
  myo_core::SetLevel(myo_core::kLogLevelInfo);

  myo_core::PolygonMesh polygons;
  myo_core::MeshData mesh;
  std::string error;
  if (!myo_io::ReadObjMesh(path, polygons, error) ||
      !myo_core::BuildMeshData(polygons.points, polygons.vertex_counts, polygons.vertices, mesh, error)) {
    std::fprintf(stderr, "myo_demo: %s: %s\n", path.c_str(), error.c_str());
    return 2;
  }
  const uint32_t n = mesh.PointCount();

  // Paint: each tenth of the length at the ends is attached to its bone,
  // the ends are tendons, and the belly keeps its shape.
  float low = 1e30f, high = -1e30f;
  for (uint32_t i = 0; i < n; ++i) {
    low = std::fmin(low, mesh.points[3 * i]);
    high = std::fmax(high, mesh.points[3 * i]);
  }
  const float reach = 0.1f * (high - low);
  std::vector<float> left(n, 0.0f), right(n, 0.0f);
  for (uint32_t i = 0; i < n; ++i) {
    left[i] = mesh.points[3 * i] < low + reach ? 1.0f : 0.0f;
    right[i] = mesh.points[3 * i] > high - reach ? 1.0f : 0.0f;
  }
  myo_core::MapStore maps;
  maps.SetAll("attachmentConstraintsList", "attachmentConstraints", 0, left);
  maps.SetAll("attachmentConstraintsList", "attachmentConstraints", 1, right);
  maps.SetAll("tendonsList", "tendons", 0, [&] {
    std::vector<float> tendons(n);
    for (uint32_t i = 0; i < n; ++i) tendons[i] = left[i] + right[i];
    return tendons;
  }());
  maps.SetAll("shapePreservationList", "shapePreservation", 0, std::vector<float>(n, 1.0f));

  DemoHost host(mesh);
  myo_core::MuscleDeformer deformer;
  myo_core::MuscleFrameValues frame;
  frame.start_time = frame.preroll_start_time = 1.0f / 24.0f;
  frame.gravity = 980.0f;
  frame.attachments.indices = {0, 1};
  const std::vector<double> input(mesh.points.begin(), mesh.points.end());
  std::vector<double> output;

  std::printf("mesh %s: %u points, %u edges, %u triangles\n", path.c_str(), n, mesh.EdgeCount(),
              mesh.TriangleCount());
  std::printf("%5s %10s %10s %12s %10s\n", "frame", "activation", "volume", "max speed", "step us");
  float rest_volume = 0.0f;
  for (int f = 1; f <= frames; ++f) {
    const float sway = static_cast<float>(std::sin(f * 0.15));
    frame.current_time = f / 24.0f;
    frame.activation = f > frames / 2 ? std::fmin(1.0f, 2.0f * (f - frames / 2) / frames) * 0.5f : 0.0f;
    frame.attachments.matrices = {myo_core::TranslationMatrix(0.0f, sway, 0.0f),
                                  myo_core::TranslationMatrix(0.0f, -sway, 0.0f)};
    const auto start = std::chrono::steady_clock::now();
    deformer.Evaluate(frame, input, host, maps, output);
    const auto end = std::chrono::steady_clock::now();

    const myo_core::MuscleSolver& solver = deformer.solver();
    const float volume = myo_core::SixTimesVolume(solver.volume_constraint_->triangles_, solver.positions_.data());
    if (f == 1) rest_volume = volume;
    float max_speed = 0.0f;
    for (uint32_t i = 0; i < solver.point_count_; ++i) {
      const float* v = &solver.velocities_[3 * i];
      max_speed = std::fmax(max_speed, std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]));
    }
    std::printf("%5d %10.3f %10.5f %12.4f %10.1f\n", f, frame.activation, volume / rest_volume, max_speed,
                std::chrono::duration<double, std::micro>(end - start).count());
  }
  return 0;
}
