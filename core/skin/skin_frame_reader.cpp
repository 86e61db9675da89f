#include "core/skin/skin_frame_reader.h"

#include "core/attributes/frame_readers.h"

namespace myo_core {

void ReadSkinFrameValues(const AttributeSource& s, SkinFrameValues& frame) {
  ReadSolverFrameValues(s, frame);
  ReadSlidingFrameValues(s, frame);
  frame.reference_matrix = s.MatrixValue("referenceMatrix");
}

}  // namespace myo_core
