#include "core/muscle/muscle_frame_reader.h"

#include "core/attributes/frame_readers.h"

namespace myo_core {

void ReadMuscleFrameValues(const AttributeSource& s, bool with_volume, MuscleFrameValues& frame) {
  ReadSolverFrameValues(s, frame);
  ReadSlidingFrameValues(s, frame);
  frame.activation = FloatAttribute(s, "activation");
  frame.rest_activation = FloatAttribute(s, "restActivation");
  if (with_volume) {
    frame.volume_preservation = FloatAttribute(s, "volumePreservation");
    frame.volume_ratio = FloatAttribute(s, "volumeRatio");
  }
  frame.hard_attachments = BoolAttribute(s, "hardAttachments");
  frame.debug_fibers_scale = FloatAttribute(s, "debugFibersScale");
  frame.current_influence = IntAttribute(s, "currentInfluence");
}

}  // namespace myo_core
