#include "core/help/attribute_help.h"

#include "core/plugin/registration_table.h"

namespace myo_core {

namespace {

using Id = HelpTextId;
using Types = std::vector<const char*>;

struct Binding {
  Types types;
  const char* attribute;
  Id text;
};

// In catalogue order of the texts. Built on first use so that no other
// static initialiser can see it half made.
const std::vector<Binding>& Bindings() {
  // Node types that share attributes.
  const Types kMuscles = {kMyoMuscleTypeName, kMyoRibbonMuscleTypeName};
  const Types kSolvers = {kMyoMuscleTypeName, kMyoRibbonMuscleTypeName, kMyoSkinTypeName, kMyoSimshapeTypeName};
  const Types kSlidingSolvers = {kMyoMuscleTypeName, kMyoRibbonMuscleTypeName, kMyoSkinTypeName};
  const Types kSensors = {kMyoSensorDistanceTypeName, kMyoSensorPositionTypeName, kMyoSensorRotationTypeName};
  const Types kTwoEndSensors = {kMyoSensorDistanceTypeName, kMyoSensorRotationTypeName};
  const Types kLocators = {kMyoLocatorTypeName, kMyoLocatorDistanceTypeName, kMyoLocatorPositionTypeName,
                           kMyoLocatorRotationTypeName};
  const Types kSimshape = {kMyoSimshapeTypeName};
  const Types kSkin = {kMyoSkinTypeName};
  const Types kTimedHelpers = {kMyoEdgeEvaluatorTypeName, kMyoSkinMergeTypeName};

  static const std::vector<Binding> bindings = {
      {kSensors, "outAcceleration", Id::kAccelerationOut},
      {kMuscles, "activation", Id::kActivation},
      {kSimshape, "activation", Id::kActivationAttribute},
      {kSimshape, "activationMode", Id::kActivationMode},
      {kSimshape, "activationRemap", Id::kActivationRemap},
      {{kMyoSensorRotationTypeName}, "outAngle", Id::kAngleOut},
      {kSimshape, "animatableRestMesh", Id::kAnimatableRestMesh},
      {kMuscles, "attachmentConstraints", Id::kAttachmentAttribute},
      {kMuscles, "attachmentMatrix", Id::kAttachmentMatrix},
      {kSolvers, "attenuationMatrix", Id::kAttenuationMatrix},
      {kSolvers, "attenuationVelocityFactor", Id::kAttenuationWeight},
      {kSimshape, "attractForce", Id::kAttractForceAttribute},
      {kSimshape, "attractionMultiplier", Id::kAttractionMultiplier},
      {kSimshape, "attractionRemapMode", Id::kAttractionRemapMode},
      {kSimshape, "bidirectionalActivation", Id::kBidirectionalActivation},
      {kSimshape, "collisionThresholdMultiplier", Id::kCollisionThresholdMultiplierAttribute},
      {kSolvers, "compressionMultiplier", Id::kCompressionMultiplier},
      {{kMyoEdgeEvaluatorTypeName}, "compressionRemap", Id::kCompressionRemap},
      {kSolvers, "compressionResistance", Id::kCompressionResistanceAttribute},
      {kSimshape, "computeCollisions", Id::kComputeCollisions},
      {{kMyoSensorDistanceTypeName}, "outDistance", Id::kDistanceOut},
      {kSolvers, "enable", Id::kEnable},
      {kTwoEndSensors, "endPosition", Id::kEndPosition},
      {kSolvers, "envelope", Id::kEnvelope},
      {kSolvers, "globalDamping", Id::kGlobalDampingAttribute},
      {kSolvers, "globalDampingMultiplier", Id::kGlobalDampingMultiplier},
      {kSolvers, "gravity", Id::kGravity},
      {kSolvers, "gravityDirection", Id::kGravityDirection},
      {kMuscles, "hardAttachments", Id::kHardAttachments},
      {kSkin, "hardConstraints", Id::kHardConstraintsAttribute},
      {kSolvers, "inertiaDamper", Id::kInertiaDamper},
      {kTimedHelpers, "initializationTime", Id::kInitializationTime},
      {kSimshape, "initializeToAnimMesh", Id::kInitializeToAnimMesh},
      {kSolvers, "iterations", Id::kIterations},
      {kSimshape, "keepCollisionOrientation", Id::kKeepCollisionOrientation},
      {kLocators, "scale", Id::kLocatorScale},
      {kSolvers, "mass", Id::kMassAttribute},
      {kSolvers, "globalMassMultiplier", Id::kMassMultiplier},
      {kSolvers, "material", Id::kMaterial},
      {kSimshape, "maxCollisionSlidingDistance", Id::kMaxCollisionSlidingDistance},
      {kSlidingSolvers, "maxSlidingDistance", Id::kMaxSlidingDistance},
      {kSlidingSolvers, "maxSlidingDistanceMultiplier", Id::kMaxSlidingDistanceMultiplierAttribute},
      {{kMyoSensorRotationTypeName}, "midPosition", Id::kMidPosition},
      {kSimshape, "musclesFile", Id::kMusclesFile},
      {kSimshape, "outActivation", Id::kOutActivationAttribute},
      {{kMyoEdgeEvaluatorTypeName}, "compression", Id::kOutCompressionAttribute},
      {{kMyoSensorPositionTypeName}, "position", Id::kPosition},
      {kSolvers, "prerollStartTime", Id::kPrerollStartTime},
      {kMuscles, "restActivation", Id::kRestActivation},
      {kSolvers, "restLengthMultiplier", Id::kRestLengthMultiplier},
      {kSimshape, "slideCollisionConstraints", Id::kSlideCollisionAttribute},
      {kSkin, "slideConstraints", Id::kSlideConstraintsAttribute},
      {kMuscles, "slideOnSegmentConstraints", Id::kSlideOnSegmentAttribute},
      {kMuscles, "slideOnSegmentRootMatrix", Id::kSlideOnSegmentRootMatrix},
      {kMuscles, "slideOnSegmentTipMatrix", Id::kSlideOnSegmentTipMatrix},
      {kSlidingSolvers, "slidingConstraintsMode", Id::kSlidingConstraintsMode},
      {kSimshape, "activationSmoothing", Id::kActivationSmoothing},
      {kSkin, "softConstraints", Id::kSoftConstraintsAttribute},
      {kSolvers, "spaceScale", Id::kSpaceScale},
      {kSolvers, "spaceScaleMode", Id::kSpaceScaleMode},
      {kTwoEndSensors, "startPosition", Id::kStartPosition},
      {kSolvers, "startTime", Id::kStartTime},
      {kSensors, "startTime", Id::kStartTime},
      {kSolvers, "stiffness", Id::kStiffness},
      {kSolvers, "stiffnessMultiplier", Id::kStiffnessMultiplier},
      {kSolvers, "stretchingMultiplier", Id::kStretchingMultiplier},
      {kSolvers, "stretchingResistance", Id::kStretchingResistanceAttribute},
      {kMuscles, "tendons", Id::kTendonsAttribute},
      {kSolvers, "timeScale", Id::kTimeScale},
      {kSensors, "timeScale", Id::kTimeScale},
      {kSolvers, "useCustomStiffness", Id::kUseCustomStiffness},
      {kSensors, "outVelocity", Id::kVelocityOut},
      {{kMyoMuscleTypeName}, "volumePreservation", Id::kVolumePreservation},
      {{kMyoMuscleTypeName}, "volumeRatio", Id::kVolumeRatio},
      {kSimshape, "writeOutActivation", Id::kWriteOutActivation},
  };
  return bindings;
}

}  // namespace

const std::vector<AttributeHelp>& AttributeHelpTable() {
  static const std::vector<AttributeHelp> table = [] {
    std::vector<AttributeHelp> rows;
    for (const Binding& binding : Bindings())
      for (const char* type : binding.types) rows.push_back({type, binding.attribute, binding.text});
    return rows;
  }();
  return table;
}

const char* FindAttributeHelp(const std::string& node_type, const std::string& attribute) {
  for (const AttributeHelp& row : AttributeHelpTable())
    if (row.node_type == node_type && row.attribute == attribute) return HelpText(row.text);
  return nullptr;
}

}  // namespace myo_core
