// Assembles a muscle from an OBJ mesh, holds its two ends and lets it hang
// and contract under gravity, printing one line of figures per step.
//
//   myo_demo [mesh.obj] [steps]

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "core/kernels/volume_constraint.h"
#include "core/log/logger.h"
#include "io/obj_mesh.h"
#include "scenes/muscle_setup.h"

int main(int argc, char** argv) {
  const std::string path = argc > 1 ? argv[1] : "examples/spindle_muscle.obj";
  const int steps = argc > 2 ? std::atoi(argv[2]) : 48;
  if (steps <= 0) {
    std::fprintf(stderr, "myo_demo: steps must be a positive whole number, got '%s'\n", argv[2]);
    return 2;
  }

  myo_core::SetLevel(1);  // info and above, as the plug-in starts
  myo_core::PolygonMesh polygons;
  std::string error;
  if (!myo_io::ReadObjMesh(path, polygons, error)) {
    std::fprintf(stderr, "myo_demo: %s\n", error.c_str());
    return 2;
  }
  myo_scenes::MuscleScene scene;
  myo_scenes::MuscleSetupOptions options;
  options.shape_preservation = 1.0f;
  options.tendon_ends = 1.0f;
  if (!myo_scenes::AssembleMuscle(polygons, options, scene, error)) {
    std::fprintf(stderr, "myo_demo: %s: %s\n", path.c_str(), error.c_str());
    return 2;
  }
  myo_core::MuscleSolver& solver = scene.solver;
  const myo_scenes::PointHold hold(solver, myo_scenes::EndPoints(scene.mesh.points));
  hold.Weigh(solver);
  const float rest_volume = solver.volume_constraint_->rest_volume_;

  std::printf("mesh %s: %u points, %u edge rows, %u shape rows, %u triangles\n", path.c_str(),
              solver.point_count_, solver.edge_constraints_->RowCount(), solver.shape_constraints_->RowCount(),
              scene.mesh.TriangleCount());
  std::printf("%5s %10s %12s %12s %10s\n", "step", "activation", "volume", "max speed", "step us");
  myo_scenes::FrameSettings frame;
  frame.global_damping = 0.75f;  // the deformer's default
  for (int step = 1; step <= steps; ++step) {
    // Activate over the second half of the run, to show the contraction.
    frame.activation = step > steps / 2 ? std::fmin(1.0f, 2.0f * (step - steps / 2) / steps) * 0.5f : 0.0f;
    myo_scenes::ApplyFrameSettings(frame, solver);
    const auto start = std::chrono::steady_clock::now();
    myo_core::Step(solver);
    const auto end = std::chrono::steady_clock::now();
    hold.Restore(solver);

    float max_speed = 0.0f;
    for (uint32_t i = 0; i < solver.point_count_; ++i) {
      const float* v = &solver.velocities_[3 * i];
      max_speed = std::fmax(max_speed, std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]));
    }
    const float volume = myo_core::SixTimesVolume(solver.volume_constraint_->triangles_, solver.positions_.data());
    std::printf("%5d %10.3f %12.6f %12.4f %10.1f\n", step, frame.activation, volume / rest_volume, max_speed,
                std::chrono::duration<double, std::micro>(end - start).count());
  }
  return 0;
}
