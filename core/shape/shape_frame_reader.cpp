#include "core/shape/shape_frame_reader.h"

#include "core/attributes/frame_readers.h"

namespace myo_core {

void ReadShapeFrameValues(const AttributeSource& s, ShapeFrameValues& frame) {
  ReadSolverFrameValues(s, frame);
  frame.attraction_multiplier = FloatAttribute(s, "attractionMultiplier");
  frame.attraction_remap_mode = IntAttribute(s, "attractionRemapMode");
  frame.animatable_rest_mesh = BoolAttribute(s, "animatableRestMesh");
  frame.initialize_to_anim_mesh = BoolAttribute(s, "initializeToAnimMesh");
  frame.max_collision_sliding_distance = FloatAttribute(s, "maxCollisionSlidingDistance");
  frame.keep_collision_orientation = BoolAttribute(s, "keepCollisionOrientation");
  frame.compute_collisions = BoolAttribute(s, "computeCollisions");
  frame.collision_mesh_matrix = s.MatrixValue("collisionMeshMatrix");
  frame.collision_rest_mesh_matrix = s.MatrixValue("collisionRestMeshMatrix");
  frame.muscles_file = s.Text("musclesFile");
  frame.activation_smoothing = IntAttribute(s, "activationSmoothing");
  frame.activation_mode = IntAttribute(s, "activationMode");
  frame.bidirectional_activation = BoolAttribute(s, "bidirectionalActivation");
  frame.draw_activation = BoolAttribute(s, "drawActivation");
  frame.write_out_activation = BoolAttribute(s, "writeOutActivation");
  frame.activation_remap = s.Ramp("activationRemap");
  frame.debug_muscle_fibers_scale = FloatAttribute(s, "debugMuscleFibersScale");
}

}  // namespace myo_core
