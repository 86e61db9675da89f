#include "maya/plugin/sliding_distance_callback.h"

#include <maya/MGlobal.h>

#include "core/plugin/plugin_lifecycle.h"

namespace myo_maya {

bool IsSetWithUserInterface(MNodeMessage::AttributeMessage message, const MPlug& plug, const char* short_name) {
  if ((message & MNodeMessage::kAttributeSet) == 0) return false;
  MStatus status;
  const MGlobal::MMayaState state = MGlobal::mayaState(&status);
  if (!status || !myo_core::HasUserInterface(static_cast<int32_t>(state))) return false;
  return plug.partialName() == short_name;
}

}  // namespace myo_maya
