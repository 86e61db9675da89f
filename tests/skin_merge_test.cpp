// The skin merge: binding by nearest vertex over all sources, the blend by
// the painted maps and the deformer's weights, the envelope, and
// connections that do not fit.

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "core/maps/map_store.h"
#include "core/merge/skin_merge.h"
#include "scenes/muscle_meshes.h"
#include "support/log_capture.h"
#include "support/test_geometry.h"

using namespace myo_core;

namespace {

struct Source {
  uint32_t logical_index = 0;
  std::optional<MeshData> mesh;  // the mesh child, connected when set
  bool matrix_connected = true;
  Matrix matrix = IdentityMatrix();
};

// Sources, weights and the playing state a host would hand over.
class MergeHost : public SkinMergeHost {
 public:
  bool IsPlaying() const override { return playing; }
  void ReadConnections(MergeSourceKind kind, MergeConnections& out) override {
    out = MergeConnections();
    for (const Source& source : Of(kind)) {
      if (source.mesh) out.mesh_indices.push_back(source.logical_index);
      if (source.matrix_connected) out.matrix_indices.push_back(source.logical_index);
    }
  }
  bool ReadSource(MergeSourceKind kind, uint32_t logical_index, MeshRead, MeshData& mesh,
                  Matrix& matrix) override {
    for (const Source& source : Of(kind))
      if (source.logical_index == logical_index && source.mesh) {
        mesh = *source.mesh;
        matrix = source.matrix;
        return true;
      }
    return false;
  }
  void ReadMergeWeights(uint32_t count, std::vector<float>& out) override {
    out = weights;
    out.resize(count, 1.0f);
  }

  std::vector<Source> simulated;
  std::vector<Source> animated;
  std::vector<float> weights;
  bool playing = false;

 private:
  std::vector<Source>& Of(MergeSourceKind kind) { return kind == MergeSourceKind::kSimulated ? simulated : animated; }
};

PolygonMesh Moved(PolygonMesh mesh, float dx, float dy, float dz) {
  for (size_t k = 0; k < mesh.points.size(); k += 3) {
    mesh.points[k] += dx;
    mesh.points[k + 1] += dy;
    mesh.points[k + 2] += dz;
  }
  return mesh;
}

std::vector<double> Doubles(const std::vector<float>& points) { return {points.begin(), points.end()}; }

SkinMergeFrame FrameAt(float time) {
  SkinMergeFrame frame;
  frame.current_time = time;
  return frame;
}

// A 4 by 4 grid as the merged mesh, bound at time 0 to one simulated and one
// animated copy of itself.
struct BoundMerge {
  BoundMerge() {
    grid = myo_scenes::MakeGrid(4, 4, 4.0f, 4.0f);
    input = Doubles(grid.points);
    host.simulated.push_back({0, myo_test::BuildMesh(grid)});
    host.animated.push_back({0, myo_test::BuildMesh(grid)});
  }
  void Bind() { merge.Evaluate(FrameAt(0.0f), input, host, maps, output); }
  // A later frame with the sources moved along y.
  void Frame(float sim_y, float anim_y, float envelope = 1.0f) {
    host.simulated[0].mesh = myo_test::BuildMesh(Moved(grid, 0.0f, sim_y, 0.0f));
    host.animated[0].mesh = myo_test::BuildMesh(Moved(grid, 0.0f, anim_y, 0.0f));
    SkinMergeFrame frame = FrameAt(1.0f);
    frame.envelope = envelope;
    merge.Evaluate(frame, input, host, maps, output);
  }
  double Y(size_t point) const { return output[3 * point + 1]; }

  PolygonMesh grid;
  std::vector<double> input;
  std::vector<double> output;
  MergeHost host;
  MapStore maps;
  SkinMerge merge;
};

}  // namespace

TEST(SkinMergeTest, BlendEdgeCases) {
  // No blend painted: the output follows the animated source only.
  {
    BoundMerge m;
    m.Bind();
    m.Frame(0.0f, 2.0f);
    for (size_t i = 0; i < 25; ++i) EXPECT_DOUBLE_EQ(m.Y(i), 2.0) << i;
  }
  // Blend 0.5 between a simulated vertex at 0 and an animated one at 2
  // gives 1; blend 1 follows the simulation.
  {
    BoundMerge m;
    std::vector<float> blend(25, 0.5f);
    blend[7] = 1.0f;
    blend[8] = 4.0f;  // clamped to 1
    m.maps.SetAll("blendList", "blend", 0, blend);
    m.Bind();
    m.Frame(0.0f, 2.0f);
    EXPECT_DOUBLE_EQ(m.Y(0), 1.0);
    EXPECT_DOUBLE_EQ(m.Y(7), 0.0);
    EXPECT_DOUBLE_EQ(m.Y(8), 0.0);
  }
  // Merge weight 0 keeps the bind position, not the current input.
  {
    BoundMerge m;
    m.host.weights.assign(25, 1.0f);
    m.host.weights[3] = 0.0f;
    m.host.weights[4] = 0.5f;
    m.Bind();
    m.input = Doubles(Moved(m.grid, 0.0f, 5.0f, 0.0f).points);
    m.Frame(0.0f, 2.0f);
    EXPECT_DOUBLE_EQ(m.Y(3), 0.0);
    EXPECT_DOUBLE_EQ(m.Y(4), 1.0);
    EXPECT_DOUBLE_EQ(m.Y(5), 2.0);
  }
  // Envelope 0: the input; one half: half way to the merge.
  {
    BoundMerge m;
    m.Bind();
    m.Frame(0.0f, 2.0f, 0.0f);
    EXPECT_EQ(m.output, m.input);
    m.Frame(0.0f, 2.0f, 0.5f);
    EXPECT_DOUBLE_EQ(m.Y(12), 1.0);
  }
}

TEST(SkinMergeTest, NeverBoundPassesTheInput) {
  BoundMerge m;
  SkinMergeFrame frame = FrameAt(1.0f);
  frame.initialization_time = 0.5f;
  m.host.animated[0].mesh = myo_test::BuildMesh(Moved(m.grid, 0, 3, 0));
  for (float time : {0.0f, 1.0f, 2.0f}) {
    frame.current_time = time;
    m.merge.Evaluate(frame, m.input, m.host, m.maps, m.output);
    EXPECT_EQ(m.output, m.input);
  }
  EXPECT_FALSE(m.merge.bound());

  // Without an animated source at the initialization time nothing binds.
  m.host.animated.clear();
  m.Bind();
  EXPECT_FALSE(m.merge.bound());
  EXPECT_EQ(m.output, m.input);
}

TEST(SkinMergeTest, InconsistentConnectionsWarn) {
  myo_test::LogCapture log;
  BoundMerge m;
  m.host.simulated[0].matrix_connected = false;
  m.host.animated.push_back({2, myo_test::BuildMesh(Moved(m.grid, 0, 40, 0)), false});
  m.Bind();
  EXPECT_TRUE(m.merge.bound());
  for (const char* kind : {"sim", "anim"})
    EXPECT_EQ(log.Count(std::string("[MyoForge][Warning] Inconsistency in the input connections to the ") + kind +
                        "WorldMesh and " + kind + "WorldMatrix plugs. This may cause unexpected deformer behavior."),
              1u)
        << kind;
  // Every frame, the binding's included, warns while the animation is not
  // playing.
  const std::string sim_line =
      "[MyoForge][Warning] Number of simulation meshes different from number of simulation meshes matrices. This "
      "may cause unexpected deformer behavior.";
  EXPECT_EQ(log.Count(sim_line), 1u);
  log.Clear();
  m.Frame(0.0f, 0.0f);
  EXPECT_EQ(log.Count(sim_line), 1u);
}

TEST(SkinMergeTest, SourcesThatChangeAfterBindingAreReadSafely) {
  myo_test::LogCapture log;
  BoundMerge m;
  m.Bind();
  // The animated source shrinks to a 2 by 2 grid: its points overwrite the
  // start of the range bound to it, and nothing is read or written past the
  // arrays.
  m.host.simulated[0].mesh = myo_test::BuildMesh(Moved(m.grid, 0, 1, 0));
  m.host.animated[0].mesh = myo_test::BuildMesh(myo_scenes::MakeGrid(2, 2, 2.0f, 2.0f));
  m.merge.Evaluate(FrameAt(1.0f), m.input, m.host, m.maps, m.output);
  EXPECT_EQ(m.output.size(), m.input.size());

  // The source is disconnected after binding: nothing is read and the
  // last result stands.
  const std::vector<double> last = m.output;
  m.host.animated.clear();
  m.merge.Evaluate(FrameAt(2.0f), m.input, m.host, m.maps, m.output);
  EXPECT_EQ(m.output, last);

  // The deformed mesh changes its point count: the input passes with a
  // warning.
  const std::vector<double> fewer(m.input.begin(), m.input.begin() + 30);
  m.merge.Evaluate(FrameAt(3.0f), fewer, m.host, m.maps, m.output);
  EXPECT_EQ(m.output, fewer);
  EXPECT_EQ(log.Count("[MyoForge][Warning] The deformed mesh has 10 points, but 25 were bound at the "
                      "initialization time. The input passes through."),
            1u);
}
