#pragma once
// Small graph and user-interface helpers every node shares: which elements
// of a list are connected, the input mesh of a deformer, visibility, a colour
// attribute, progress of a long build and the attribute warning dialog. They
// fail silently: a missing plug or connection leaves the output empty.

#include <maya/M3dView.h>
#include <maya/MComputation.h>
#include <maya/MDagPath.h>
#include <maya/MDataBlock.h>
#include <maya/MIntArray.h>
#include <maya/MObject.h>
#include <maya/MPlug.h>
#include <maya/MString.h>

#include <vector>

#include "core/ramp/ramp_entries.h"

namespace myo_maya {

// Logical indices of the elements of `array` that are connected.
void ConnectedIndices(const MObject& node, const MObject& array, MIntArray& out);
// Logical indices of the elements whose `child` is connected.
void ConnectedChildIndices(const MObject& node, const MObject& array, const MObject& child, MIntArray& out);
// Logical indices of the elements with all `children` connected; none for
// an empty list. The list is consumed.
void ConnectedChildrenIndices(const MObject& node, const MObject& array, std::vector<MObject>& children,
                              MIntArray& out);

// Whether a DAG node and all its parents are shown: level of detail
// visibility, an enabled draw override's visibility and display type, and
// hide on playback while playing or scrubbing.
bool IsNodeVisible(const MObject& node);

// Whether a mesh's path is drawn in a view: not invisible there, not an
// intermediate object, among the view's filtered objects (or below one) when
// the view filters, meshes shown in the view, and the node visible.
bool IsVisibleInView(const MDagPath& path, M3dView& view);

// The entries of a ramp attribute of a node; false when they cannot be read.
bool ReadRamp(const MObject& node, const MObject& ramp, myo_core::RampEntries& entries);
// Whether every position and value of a ramp attribute lies within 0 to 1;
// false when its entries cannot be read.
bool IsRampNormalized(const MObject& node, const MObject& ramp);

// The mesh of element `index` of the deformer's input geometry; a null
// object when there is none.
void GetInputMesh(MObject& mesh, MDataBlock& block, unsigned index);

// The three components of a colour attribute and an alpha of 1.
void ReadColorRGBA(float out[4], MDataBlock& block, const MObject& color);

// Progress of a long build, shown only when `show` is set: the status reads
// "[MyoForge]" followed by `name`.
void BeginProgress(MComputation& computation, bool show, int count, const MString& name);
void AdvanceProgress(MComputation& computation, bool show);
void EndProgress(MComputation& computation, bool show);

// Asks the user whether a new max sliding value stands. With `check_collider`
// any value above 1e-6 warns that no collider is there; with
// `check_max_sliding` a value above a tenth of `value` (when that is above
// 1e-6) warns that it is large. Response 1 turns the warning off (false);
// response 2 sets the plug back to 0. Without a warning: true.
bool ConfirmAttributeWarning(float value, bool check_collider, bool check_max_sliding, MPlug& plug);

}  // namespace myo_maya
