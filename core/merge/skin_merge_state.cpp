// The state a skin merge carries from one evaluation to the next: its whole
// binding (the sources and vertices each point reads, their matrices) and
// the merged points of the last evaluation.

#include "core/merge/skin_merge.h"
#include "core/state/state_archive.h"

namespace myo_core {

template <class Archive, class Self>
void SkinMerge::StateFields(Archive& a, Self& self) {
  auto& d = self.data_;
  a.Section("skin merge");
  a.Array(d.merge_weights_);
  a.Array(d.blend_weights_);
  a.Array(d.bind_positions_);
  a.Array(d.merge_positions_);
  a.Array(d.sim_positions_);
  a.Array(d.anim_positions_);
  a.Value(d.point_count_);
  a.Array(d.sim_sources_);
  a.Array(d.anim_sources_);
  a.Array(d.sim_vertices_);
  a.Array(d.anim_vertices_);
  a.Array(d.sim_offsets_);
  a.Array(d.anim_offsets_);
  a.Array(d.sim_transformed_);
  a.Array(d.anim_transformed_);
  a.Array(d.sim_matrices_);
  a.Array(d.anim_matrices_);
  a.Value(d.world_matrix_);
  a.Value(d.world_matrix_inverse_);
}

void SkinMerge::SaveState(StateWriter& writer) const { StateFields(writer, *this); }

void SkinMerge::LoadState(StateReader& reader) { StateFields(reader, *this); }

}  // namespace myo_core
