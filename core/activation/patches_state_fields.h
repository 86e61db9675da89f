#pragma once
// Field list of a shape solver's activation record, for saving and
// restoring its state (core/state/state_archive.h): the patches file as
// loaded, its smoothing lists, the shapes and the activations that carry
// from one frame to the next.

#include "core/activation/muscle_patches_data.h"
#include "core/state/state_archive.h"

namespace myo_core {

template <class Archive>
void MusclePatchesDataFields(Archive& a, ArchiveRecord<Archive, MusclePatchesData>& d) {
  a.Section("activation");
  a.Text(d.muscles_file_);
  a.Value(d.patches_loaded_);
  a.Value(d.smoothing_rings_);
  a.Array(d.patch_ids_);
  a.Array(d.patch_fibers_);
  a.Array(d.smoothing_counts_);
  a.Array(d.smoothing_patch_ids_);
  a.Array(d.rest_positions_);
  a.Array(d.deform_positions_);
  a.Array(d.activations_);
  a.Array(d.vertex_fibers_);
  a.Array(d.fiber_bary_u_);
  a.Array(d.fiber_bary_v_);
  a.Array(d.fiber_triangles_);
  a.Value(d.shortest_edge_);
  a.Value(d.fibers_scale_);
}

}  // namespace myo_core
