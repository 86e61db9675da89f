#include "core/merge/skin_merge.h"

#include <algorithm>
#include <string>

#include "core/log/logger.h"

namespace myo_core {

namespace {

void ClampUnit(std::vector<float>& values) {
  for (float& value : values) value = std::min(std::max(value, 0.0f), 1.0f);
}

// Every source of a kind in the order of its connected elements: whole
// meshes for binding.
void ReadSourcesForBinding(SkinMergeHost& host, MergeSourceKind kind, const std::vector<uint32_t>& indices,
                           std::vector<MeshData>& meshes, std::vector<Matrix>& matrices,
                           std::vector<bool>& present) {
  meshes.assign(indices.size(), MeshData());
  matrices.assign(indices.size(), IdentityMatrix());
  present.assign(indices.size(), false);
  for (size_t j = 0; j < indices.size(); ++j)
    present[j] = host.ReadSource(kind, indices[j], MeshRead::kWhole, meshes[j], matrices[j]);
}

// This frame's points and matrices of a kind's sources, at the offsets of
// binding. A source whose point count changed since then reads into its
// neighbour's range; nothing is written past the end of the array.
void ReadMergeSources(SkinMergeHost& host, MergeSourceKind kind, const std::vector<uint32_t>& indices,
                      MergeSourceArrays arrays) {
  MeshData mesh;
  for (size_t j = 0; j < indices.size() && j < arrays.offsets.size(); ++j) {
    Matrix matrix = IdentityMatrix();
    if (!host.ReadSource(kind, indices[j], MeshRead::kPoints, mesh, matrix)) continue;
    arrays.matrices[j] = matrix;
    arrays.transformed[j] = !IsIdentity(matrix);
    const size_t offset = arrays.offsets[j];
    if (offset >= arrays.positions.size()) continue;
    const size_t count = std::min(mesh.points.size(), arrays.positions.size() - offset);
    std::copy(mesh.points.begin(), mesh.points.begin() + count, arrays.positions.begin() + offset);
  }
}

}  // namespace

void SkinMerge::Evaluate(const SkinMergeFrame& frame, const std::vector<double>& input, SkinMergeHost& host,
                         const MapPort& maps, std::vector<double>& output) {
  if (frame.current_time == frame.initialization_time) Bind(frame, input, host, maps);
  output = input;
  if (data_.merge_positions_.empty()) return;
  const size_t n = input.size() / 3;
  if (n != data_.point_count_) {
    if (!host.IsPlaying())
      LogWarning("The deformed mesh has " + std::to_string(n) + " points, but " + std::to_string(data_.point_count_) +
                 " were bound at the initialization time. The input passes through.");
    return;
  }
  Update(frame, host);
  const double envelope = frame.envelope;
  for (size_t k = 0; k < 3 * n; ++k)
    output[k] = (static_cast<double>(data_.merge_positions_[k]) - input[k]) * envelope + input[k];
}

void SkinMerge::Bind(const SkinMergeFrame& frame, const std::vector<double>& input, SkinMergeHost& host,
                     const MapPort& maps) {
  MergeConnections sim, anim;
  host.ReadConnections(MergeSourceKind::kSimulated, sim);
  host.ReadConnections(MergeSourceKind::kAnimated, anim);
  if (sim.mesh_indices.empty() || anim.mesh_indices.empty()) return;
  if (sim.matrix_indices.size() != sim.mesh_indices.size())
    LogWarning(
        "Inconsistency in the input connections to the simWorldMesh and simWorldMatrix plugs. This may cause "
        "unexpected deformer behavior.");
  if (anim.matrix_indices.size() != anim.mesh_indices.size())
    LogWarning(
        "Inconsistency in the input connections to the animWorldMesh and animWorldMatrix plugs. This may cause "
        "unexpected deformer behavior.");

  const uint32_t n = static_cast<uint32_t>(input.size() / 3);
  data_.point_count_ = n;
  data_.merge_positions_.assign(input.begin(), input.begin() + 3 * size_t(n));
  data_.world_matrix_ = frame.local_to_world;
  data_.world_matrix_inverse_ = InvertMatrix(frame.local_to_world);
  data_.bind_positions_ = data_.merge_positions_;

  host.ReadMergeWeights(n, data_.merge_weights_);
  data_.merge_weights_.resize(n, 1.0f);
  ClampUnit(data_.merge_weights_);
  maps.ReadFloats("blendList", "blend", frame.geometry_index, n, 0.0f, data_.blend_weights_);
  data_.blend_weights_.resize(n, 0.0f);
  ClampUnit(data_.blend_weights_);

  std::vector<MeshData> meshes;
  std::vector<Matrix> matrices;
  std::vector<bool> present;
  ReadSourcesForBinding(host, MergeSourceKind::kSimulated, sim.mesh_indices, meshes, matrices, present);
  BindMergeSources(data_, meshes, matrices, present, SimulatedArrays(data_));
  ReadSourcesForBinding(host, MergeSourceKind::kAnimated, anim.mesh_indices, meshes, matrices, present);
  BindMergeSources(data_, meshes, matrices, present, AnimatedArrays(data_));
}

void SkinMerge::Update(const SkinMergeFrame& frame, SkinMergeHost& host) {
  MergeConnections sim, anim;
  host.ReadConnections(MergeSourceKind::kSimulated, sim);
  host.ReadConnections(MergeSourceKind::kAnimated, anim);
  if (sim.mesh_indices.empty() || anim.mesh_indices.empty()) return;
  if (!host.IsPlaying()) {
    if (sim.matrix_indices.size() != sim.mesh_indices.size())
      LogWarning(
          "Number of simulation meshes different from number of simulation meshes matrices. This may cause "
          "unexpected deformer behavior.");
    if (anim.matrix_indices.size() != anim.mesh_indices.size())
      LogWarning(
          "Number of animation meshes different from number of animation meshes matrices. This may cause "
          "unexpected deformer behavior.");
  }
  data_.world_matrix_ = frame.local_to_world;
  data_.world_matrix_inverse_ = InvertMatrix(frame.local_to_world);
  ReadMergeSources(host, MergeSourceKind::kSimulated, sim.mesh_indices, SimulatedArrays(data_));
  ReadMergeSources(host, MergeSourceKind::kAnimated, anim.mesh_indices, AnimatedArrays(data_));
  BlendSkinMerge(data_);
}

}  // namespace myo_core
