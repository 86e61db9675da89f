#pragma once
// Deleting a deformer takes along the helper nodes that only it feeds (the
// weights display node, the data node and its debug locator) and heals the
// graph around the display node, so that the displayed mesh keeps its
// upstream geometry.

#include <maya/MDGModifier.h>
#include <maya/MMessage.h>
#include <maya/MObject.h>

#include <string>
#include <vector>

namespace myo_maya {

// The helper types a deformer's deletion cleans up.
const std::vector<std::string>& DeformerHelperTypes();

// The about-to-delete callback: `client_data` points to the list of helper
// type names (a const std::vector<std::string>).
void OnNodeAboutToDelete(MObject& node, MDGModifier& modifier, void* client_data);

// Registers OnNodeAboutToDelete with the shared helper types on `node`; the
// caller removes the callback when the node dies. 0 when it cannot.
MCallbackId AddHelperCleanupCallback(MObject& node);

}  // namespace myo_maya
