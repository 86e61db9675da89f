#pragma once
// Fill a node's frame values from its attributes, by the long names of its
// attribute table: the attributes every simulation deformer shares. Each
// family reads its own on top (core/muscle/muscle_frame_reader.h, ...).
// Connections, meshes and the deformer's own inputs (envelope,
// local-to-world matrix, geometry index) come from the host.

#include "core/attributes/attribute_source.h"
#include "core/solver/frame_values.h"

namespace myo_core {

void ReadSolverFrameValues(const AttributeSource& source, SolverFrameValues& frame);
// "maxSlidingDistance" and "slidingConstraintsMode", of the muscle family
// and the skin.
void ReadSlidingFrameValues(const AttributeSource& source, SolverFrameValues& frame);

// The values of attributes as the frame structs hold them.
inline float FloatAttribute(const AttributeSource& s, const char* name) { return static_cast<float>(s.Number(name)); }
inline int32_t IntAttribute(const AttributeSource& s, const char* name) {
  return static_cast<int32_t>(s.Number(name));
}
inline bool BoolAttribute(const AttributeSource& s, const char* name) { return s.Number(name) != 0.0; }

}  // namespace myo_core
