// The hierarchy of a closest-point query as built, for a checkpoint: the
// mesh it was built on is not kept anywhere else.

#include "core/mesh/closest_point_query.h"
#include "core/state/state_archive.h"

namespace myo_core {

template <class Archive, class Self>
void ClosestPointQuery::StateFields(Archive& a, Self& self) {
  a.Section("closest point query");
  a.Value(self.root_);
  a.Array(self.nodes_);
  a.Array(self.slot_corners_);
  a.Array(self.slot_triangles_);
  a.Array(self.triangle_polygons_);
  a.Array(self.polygon_first_triangles_);
}

void ClosestPointQuery::SaveState(StateWriter& writer) const { StateFields(writer, *this); }

void ClosestPointQuery::LoadState(StateReader& reader) {
  StateFields(reader, *this);
  if (!reader.ok()) return;
  // Every child names a range of slots that exists or a node after its
  // parent (so that a walk down the hierarchy always ends).
  const int64_t nodes = static_cast<int64_t>(nodes_.size());
  const int64_t slots = static_cast<int64_t>(slot_triangles_.size());
  auto fits = [&](const Child& child, int64_t parent) {
    if (child.count == 0) return child.first > parent && child.first < nodes;
    return child.count > 0 && child.first >= 0 && static_cast<int64_t>(child.first) + child.count <= slots;
  };
  bool consistent = slot_corners_.size() == 9 * slot_triangles_.size() && (slots == 0 || fits(root_, -1));
  for (int64_t k = 0; k < nodes; ++k)
    consistent = consistent && fits(nodes_[k].child[0], k) && fits(nodes_[k].child[1], k);
  for (int32_t t : slot_triangles_)
    consistent = consistent && t >= 0 && static_cast<std::size_t>(t) < triangle_polygons_.size();
  for (int32_t p : triangle_polygons_)
    consistent = consistent && p >= 0 && static_cast<std::size_t>(p) < polygon_first_triangles_.size();
  if (!consistent) {
    reader.Fail("the closest-point hierarchy does not hold together");
    Clear();
  }
}

}  // namespace myo_core
