#pragma once
// The link between a deformer's solver and the debug view: the deformer's
// message feeds a "MyoDataNode", which keeps, under the deformer's uuid, a
// pointer to the solver's debug record and the path of the mesh the
// deformer writes to. A missing plug, node or connection ends the link
// without a word: nothing is drawn then.

#include <maya/MObject.h>

#include "core/debug/debug_data.h"

namespace myo_maya {

// From a deformer's deform, on the path that has just built its solver:
// finds the mesh fed by the first output geometry and the data node among
// the destinations of the deformer's message, enters the record and the
// mesh's path under the deformer's uuid (replacing an earlier entry) and
// prunes the data node.
void RegisterDebugData(const MObject& deformer, myo_core::DebugData* record);

// Before a deformer goes: erases its entry from the data node its message
// feeds, and prunes that node.
void UnregisterDebugData(const MObject& deformer);

}  // namespace myo_maya
