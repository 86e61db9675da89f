// The state an edge evaluator carries from one evaluation to the next: the
// cached topology and rest points, whether they are valid, and the last
// values of its output. The vertex chunks of the threads are cut again for
// the threads of the restoring process; the values do not depend on them.

#include "core/evaluator/edge_evaluator.h"
#include "core/state/state_archive.h"

namespace myo_core {

template <class Archive, class Self>
void EdgeEvaluator::StateFields(Archive& a, Self& self) {
  a.Section("edge evaluator");
  a.Value(self.vertex_count_);
  a.Array(self.neighbours_);
  a.Array(self.neighbour_offsets_);
  a.Array(self.neighbour_counts_);
  a.Array(self.rest_points_);
  a.Value(self.valid_);
  a.Array(self.compression_);
  a.Text(self.error_);
}

void EdgeEvaluator::SaveState(StateWriter& writer) const { StateFields(writer, *this); }

void EdgeEvaluator::LoadState(StateReader& reader) {
  StateFields(reader, *this);
  if (!reader.ok()) return;
  const std::size_t n = vertex_count_ < 0 ? 0 : static_cast<std::size_t>(vertex_count_);
  bool fits = vertex_count_ >= 0 && neighbour_offsets_.size() == n && neighbour_counts_.size() == n &&
              rest_points_.size() == 3 * n && (!valid_ || compression_.size() == n);
  for (std::size_t i = 0; fits && i < n; ++i)
    fits = neighbour_offsets_[i] >= 0 && neighbour_counts_[i] >= 0 &&
           static_cast<std::size_t>(neighbour_offsets_[i]) + static_cast<std::size_t>(neighbour_counts_[i]) <=
               neighbours_.size();
  for (int32_t j : neighbours_) fits = fits && j >= 0 && static_cast<std::size_t>(j) < n;
  if (!fits) {
    reader.Fail("the edge evaluator's topology does not fit its " + std::to_string(vertex_count_) + " vertices");
    return;
  }
  PartitionVertices();
}

}  // namespace myo_core
