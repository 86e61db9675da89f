#include "core/skin/skin_attributes.h"

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

AttributeTable BuildSkinTable() {
  AttributeTable t;
  AppendSolverHeader(t, 3, kMaterialLeather, DefaultSkinDensity());
  AppendScalesAndStiffness(t, kSpaceScaleMassesAndForces);
  t.push_back(Scalar("attenuationVelocityFactor", "avf", T::kFloat, 1, K, 0.0, 1.0));
  t.push_back(Enum("slidingConstraintsMode", "scm", {{"Fast", 0}, {"Quality", 1}}, 0, K));
  t.push_back(Scalar("prerollStartTime", "pst", T::kTime, 0, 0));
  t.push_back(Scalar("startTime", "st", T::kTime, 0, 0));
  t.push_back(Scalar("currentTime", "t", T::kTime, 0, O));
  t.push_back(Scalar("globalDamping", "gdmp", T::kFloat, 1, A, 0.0, 1.0));
  t.push_back(List("globalDampingList", "gdmpl", "globalDamping", 0));
  t.push_back(Scalar("maxSlidingDistanceMultiplier", "msdm", T::kFloat, 1, A, 0.0, 1.0));
  t.push_back(List("maxSlidingDistanceMultiplierList", "msdml", "maxSlidingDistanceMultiplier", 0));
  t.push_back(Scalar("maxSlidingDistance", "msld", T::kFloat, 0, 0, 0.0, {}, {}, 10.0));
  t.push_back(Typed("referenceMesh", "ref", T::kMesh, O));
  t.push_back(Typed("referenceMatrix", "refm", T::kFloatMatrix, kStorable | O));
  t.push_back(Scalar("softConstraints", "sfc", T::kFloat, 0, A | O));
  t.push_back(List("softConstraintsList", "sfcl", "softConstraints", 0));
  t.push_back(Scalar("hardConstraints", "hc", T::kFloat, 1, A | O));
  t.push_back(List("hardConstraintsList", "hcl", "hardConstraints", 0));
  t.push_back(Scalar("slideConstraints", "slc", T::kFloat, 0, A | O));
  t.push_back(List("slideConstraintsList", "slcl", "slideConstraints", 0));
  t.push_back(Scalar("compressionResistance", "cr", T::kFloat, 1, A, 0.0, 1.0));
  t.push_back(List("compressionResistanceList", "crl", "compressionResistance", 0));
  t.push_back(Scalar("stretchingResistance", "sr", T::kFloat, 1, A, 0.0, 1.0));
  t.push_back(List("stretchingResistanceList", "srl", "stretchingResistance", 0));
  t.push_back(Scalar("shapePreservation", "sp", T::kFloat, 0, A, 0.0, 1.0));
  t.push_back(List("shapePreservationList", "spl", "shapePreservation", 0));
  t.push_back(ResetOnDisconnect(Scalar("currentInfluence", "ci", T::kInt, 0, kHidden, -1.0)));
  t.push_back(Scalar("mass", "m", T::kFloat, 1, A, 0.000001, {}, 0.001, 10.0));
  t.push_back(List("massList", "ml", "mass", 0));
  t.push_back(ResetOnDisconnect(Typed("attenuationMatrix", "am", T::kFloatMatrix, kStorable)));
  t.push_back(Scalar("debug", "db", T::kBool, 0, O));
  t.push_back(Scalar("debugColorRed", "dbcr", T::kFloat, 0, 0));
  t.push_back(Scalar("debugColorGreen", "dbcg", T::kFloat, 0, 0));
  t.push_back(Scalar("debugColorBlue", "dbcb", T::kFloat, 0, 0));
  t.push_back(Color("debugColor", "dbc", {"debugColorRed", "debugColorGreen", "debugColorBlue"}, {1.0, 0.0, 0.0}, O));
  t.push_back(Scalar("debugWidth", "dw", T::kFloat, 3, O, 0.0, {}, {}, 10.0));
  t.push_back(Enum("debugFeature", "dbgf",
                   {{"Hard Constraints", 3}, {"Shape Preservation", 5}, {"Slide Constraints", 7},
                    {"Sliding Surface On Target", 10}, {"Soft Constraints", 11}},
                   3, O));
  return t;
}

}  // namespace

const AttributeTable& SkinAttributes() {
  static const AttributeTable table = BuildSkinTable();
  return table;
}

}  // namespace myo_core
