#include "core/shape/shape_attributes.h"

#include "core/attributes/attribute_builders.h"
#include "core/attributes/simulation_attributes.h"
#include "core/tables/enum_tables.h"
#include "core/tables/material_type.h"

namespace myo_core {

namespace {

using namespace attribute_builders;
using T = AttributeType;
constexpr uint32_t K = kKeyable;
constexpr uint32_t A = kArray | kReadable;
constexpr uint32_t O = kAffectsOutput;

// The maps of activation: where it comes from, how it is remapped and where
// it goes.
void AppendActivation(AttributeTable& t) {
  t.push_back(Typed("musclesFile", "mf", T::kString, kUsedAsFilename | kStorable));
  t.push_back(Scalar("activationSmoothing", "as", T::kInt, 1, 0, 1.0, 20.0, {}, 10.0));
  t.push_back(ResetOnDisconnect(Typed("deformMesh", "dmesh", T::kMesh, kArrayDataBuilder)));
  t.push_back(Enum("activationMode", "actm", EnumFieldsOf(ActivationMode()), 2, 0));
  AttributeInfo activation = Scalar("activation", "act", T::kFloat, 0, A, 0.0, 1.0);
  activation.disconnect_behavior = 0;  // delete
  t.push_back(activation);
  t.push_back(List("activationList", "actl", "activation", 0));
  t.push_back(Typed("activationRemap", "actrmp", T::kRamp, 0));
  t.push_back(Scalar("outActivation", "oact", T::kFloat, 0, A | kNotWritable, 0.0, 1.0));
  t.push_back(List("outActivationList", "oactl", "outActivation", kNotWritable));
}

AttributeTable BuildShapeTable() {
  AttributeTable t;
  AppendSolverHeader(t, 3, kMaterialLeather, DefaultSkinDensity());
  AppendScalesAndStiffness(t, kSpaceScaleMassesAndForces);
  for (AttributeInfo& info : t)
    if (info.long_name == "globalDampingMultiplier") {
      info.max = 1.0;  // a hard maximum here, where the skin has a soft one
      info.soft_max.reset();
    }
  t.push_back(Scalar("attenuationVelocityFactor", "avf", T::kFloat, 1, K, 0.0, 1.0));
  t.push_back(Scalar("attractionMultiplier", "atm", T::kFloat, 1, K, 0.0, {}, {}, 2.0));
  t.push_back(Enum("attractionRemapMode", "arm", EnumFieldsOf(RemapMode()), 3, K));
  t.push_back(Scalar("prerollStartTime", "pst", T::kTime, 0, 0));
  t.push_back(Scalar("startTime", "st", T::kTime, 0, 0));
  t.push_back(Scalar("currentTime", "t", T::kTime, 0, O));
  t.push_back(Scalar("globalDamping", "gdmp", T::kFloat, 1, A, 0.0, 1.0));
  t.push_back(List("globalDampingList", "gdmpl", "globalDamping", 0));
  AppendActivation(t);
  t.push_back(ResetOnDisconnect(Typed("animMesh", "amesh", T::kMesh, O)));
  t.push_back(ResetOnDisconnect(Typed("restMesh", "rmesh", T::kMesh, 0)));
  t.push_back(Scalar("animatableRestMesh", "armesh", T::kBool, 0, 0));
  t.push_back(Scalar("attractForce", "af", T::kFloat, 1, A));
  t.push_back(List("attractForceList", "afl", "attractForce", 0));
  t.push_back(Scalar("maxCollisionSlidingDistance", "mcsld", T::kFloat, 0, 0, 0.0, {}, {}, 10.0));
  t.push_back(ResetOnDisconnect(Typed("collisionMesh", "cmesh", T::kMesh, kStorable | O)));
  t.push_back(ResetOnDisconnect(Typed("collisionMeshMatrix", "colmm", T::kFloatMatrix, kStorable | O)));
  t.push_back(ResetOnDisconnect(Typed("collisionRestMesh", "crmesh", T::kMesh, kStorable | O)));
  t.push_back(ResetOnDisconnect(Typed("collisionRestMeshMatrix", "colrmm", T::kFloatMatrix, kStorable | O)));
  t.push_back(Scalar("keepCollisionOrientation", "kco", T::kBool, 1, 0));
  t.push_back(Scalar("slideCollisionConstraints", "scc", T::kFloat, 0, A));
  t.push_back(List("slideCollisionConstraintsList", "sccl", "slideCollisionConstraints", 0));
  t.push_back(Scalar("collisionThresholdMultiplier", "ctm", T::kFloat, 1, A));
  t.push_back(List("collisionThresholdMultiplierList", "ctml", "collisionThresholdMultiplier", 0));
  t.push_back(Scalar("computeCollisions", "col", T::kBool, 1, 0));
  t.push_back(Scalar("bidirectionalActivation", "bact", T::kBool, 0, 0));
  t.push_back(Scalar("drawActivation", "da", T::kBool, 0, O));
  t.push_back(Scalar("writeOutActivation", "woact", T::kBool, 0, 0));
  t.push_back(Typed("originalShadingGroup", "osg", T::kString, kHidden));
  t.push_back(Scalar("compressionResistance", "cr", T::kFloat, 0, A, 0.0, 1.0));
  t.push_back(List("compressionResistanceList", "crl", "compressionResistance", 0));
  t.push_back(Scalar("stretchingResistance", "sr", T::kFloat, 1, A, 0.0, 1.0));
  t.push_back(List("stretchingResistanceList", "srl", "stretchingResistance", 0));
  t.push_back(Scalar("shapePreservation", "sp", T::kFloat, 0, A, 0.0, 1.0));
  t.push_back(List("shapePreservationList", "spl", "shapePreservation", 0));
  t.push_back(Scalar("initializeToAnimMesh", "itam", T::kBool, 0, 0));
  t.push_back(Scalar("mass", "m", T::kFloat, 1, A, 0.000001, {}, 0.001, 10.0));
  t.push_back(List("massList", "ml", "mass", 0));
  t.push_back(ResetOnDisconnect(Typed("attenuationMatrix", "am", T::kFloatMatrix, kStorable)));
  t.push_back(Scalar("debug", "dbg", T::kBool, 0, O));
  t.push_back(Scalar("debugColorRed", "dbcr", T::kFloat, 0, 0));
  t.push_back(Scalar("debugColorGreen", "dbcg", T::kFloat, 0, 0));
  t.push_back(Scalar("debugColorBlue", "dbcb", T::kFloat, 0, 0));
  t.push_back(Color("debugColor", "dbc", {"debugColorRed", "debugColorGreen", "debugColorBlue"}, {1.0, 0.0, 0.0}, O));
  t.push_back(Scalar("debugWidth", "dw", T::kFloat, 3, O, 0.0, {}, {}, 10.0));
  t.push_back(Scalar("debugMuscleFibersScale", "dmfs", T::kFloat, 1, O, 0.001, {}, {}, 10.0));
  t.push_back(Enum("debugFeature", "dbgf",
                   {{"Muscle Fibers", 4}, {"Shape Preservation", 5}, {"Slide Collision Constraints", 6},
                    {"Slide Surface On Collider", 10}},
                   6, O));
  return t;
}

}  // namespace

const AttributeTable& ShapeAttributes() {
  static const AttributeTable table = BuildShapeTable();
  return table;
}

const std::vector<std::string>& ShapePaintableMaps() {
  static const std::vector<std::string> maps = {
      "attractForce", "collisionThresholdMultiplier", "compressionResistance", "globalDamping",
      "mass",         "shapePreservation",            "slideCollisionConstraints", "stretchingResistance"};
  return maps;
}

std::string MakePaintableScript(const std::string& node_type, const std::vector<std::string>& maps) {
  std::string script;
  for (const std::string& map : maps)
    script += "makePaintable -attrType multiFloat -sm deformer " + node_type + " " + map + ";\n";
  return script;
}

}  // namespace myo_core
