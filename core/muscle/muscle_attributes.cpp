#include "core/muscle/muscle_attributes.h"

#include <algorithm>

#include "core/attributes/attribute_builders.h"
#include "core/attributes/simulation_attributes.h"
#include "core/tables/enum_tables.h"
#include "core/tables/material_type.h"

namespace myo_core {

namespace {

using namespace attribute_builders;
using T = AttributeType;
constexpr uint32_t K = kKeyable;
constexpr uint32_t A = kArray;
constexpr uint32_t O = kAffectsOutput;

AttributeTable BuildMuscleTable() {
  AttributeTable t;
  AppendSolverHeader(t, 10, kMaterialMuscle, DefaultMuscleDensity());
  t.push_back(Scalar("activation", "a", T::kFloat, 0, K, 0.0, 1.0));
  t.push_back(Scalar("restActivation", "ra", T::kFloat, 0, K, 0.0, 0.999));
  t.push_back(Scalar("volumePreservation", "vp", T::kFloat, 1, K, 0.0, 1.0));
  t.push_back(Scalar("volumeRatio", "vr", T::kFloat, 1, K, 0.0, {}, {}, 2.0));
  AppendScalesAndStiffness(t, kSpaceScaleForces);
  t.push_back(Scalar("maxSlidingDistanceMultiplier", "msdm", T::kFloat, 1, A | kReadable, 0.0, 1.0));
  t.push_back(List("maxSlidingDistanceMultiplierList", "msdml", "maxSlidingDistanceMultiplier", 0));
  t.push_back(Scalar("maxSlidingDistance", "msld", T::kFloat, 0, 0, 0.0, {}, {}, 10.0));
  t.push_back(Scalar("attenuationVelocityFactor", "avf", T::kFloat, 1, K, 0.0, 1.0));
  t.push_back(Enum("slidingConstraintsMode", "scm", {{"Fast", 0}, {"Quality", 1}}, 0, K));
  t.push_back(Typed("targetWorldMesh", "tgwm", T::kMesh, 0));
  t.push_back(Typed("targetWorldMatrix", "tgwx", T::kMatrix, 0));
  t.push_back(Scalar("attachmentToGeoConstraints", "agc", T::kFloat, 0, A | O, 0.0, 1.0));
  t.push_back(Scalar("slideOnGeometryConstraints", "sgc", T::kFloat, 0, A | O, 0.0, 1.0));
  t.push_back(Compound("targets", "tg",
                       {"targetWorldMesh", "targetWorldMatrix", "attachmentToGeoConstraints",
                        "slideOnGeometryConstraints"},
                       A | O));
  t.push_back(Scalar("hardAttachments", "ha", T::kBool, 1, K));
  t.push_back(Scalar("prerollStartTime", "pst", T::kTime, 0, 0));
  t.push_back(Scalar("startTime", "st", T::kTime, 0, 0));
  t.push_back(Scalar("currentTime", "t", T::kTime, 0, O));
  t.push_back(Scalar("globalDamping", "gdmp", T::kFloat, 1, A, 0.0, 1.0));
  t.push_back(List("globalDampingList", "gdmpl", "globalDamping", 0));
  t.push_back(Typed("attachmentMatrix", "attm", T::kMatrix, kStorable));
  t.push_back(Scalar("attachmentConstraints", "attc", T::kFloat, 0, A | O));
  t.push_back(Compound("attachmentConstraintsList", "attcl", {"attachmentMatrix", "attachmentConstraints"}, A | O));
  t.push_back(Scalar("tendons", "tn", T::kFloat, 0, A | O, 0.0, 1.0));
  t.push_back(List("tendonsList", "tnl", "tendons", O));
  t.push_back(Compound("fibers", "fb", {"fibersX", "fibersY", "fibersZ"}, A | O));
  t.push_back(Scalar("fibersX", "fbx", T::kFloat, 0, 0));
  t.push_back(Scalar("fibersY", "fby", T::kFloat, 1, 0));
  t.push_back(Scalar("fibersZ", "fbz", T::kFloat, 0, 0));
  t.push_back(List("fibersList", "fbl", "fibers", O));
  t.push_back(Scalar("compressionResistance", "cr", T::kFloat, 1, A, 0.0, 1.0));
  t.push_back(List("compressionResistanceList", "crl", "compressionResistance", 0));
  t.push_back(Scalar("stretchingResistance", "sr", T::kFloat, 1, A, 0.0, 1.0));
  t.push_back(List("stretchingResistanceList", "srl", "stretchingResistance", 0));
  t.push_back(Scalar("shapePreservation", "sp", T::kFloat, 0, A, 0.0, 1.0));
  t.push_back(List("shapePreservationList", "spl", "shapePreservation", 0));
  t.push_back(Scalar("mass", "m", T::kFloat, 1, A, 0.000001, {}, 0.001, 10.0));
  t.push_back(List("massList", "ml", "mass", 0));
  t.push_back(ResetOnDisconnect(Typed("attenuationMatrix", "am", T::kMatrix, kStorable)));
  t.push_back(ResetOnDisconnect(Scalar("currentInfluence", "ci", T::kInt, 0, kHidden, -1.0)));
  t.push_back(Typed("slideOnSegmentRootMatrix", "ssrm", T::kMatrix, kStorable));
  t.push_back(Typed("slideOnSegmentTipMatrix", "sstm", T::kMatrix, kStorable));
  t.push_back(Scalar("slideOnSegmentConstraints", "ssc", T::kFloat, 0, A | O, 0.0, 1.0));
  t.push_back(Compound("slideOnSegmentConstraintsList", "sscl",
                       {"slideOnSegmentRootMatrix", "slideOnSegmentTipMatrix", "slideOnSegmentConstraints"}, A | O));
  t.push_back(Scalar("debug", "db", T::kBool, 0, O));
  t.push_back(Scalar("debugColorRed", "dbcr", T::kFloat, 0, 0));
  t.push_back(Scalar("debugColorGreen", "dbcg", T::kFloat, 0, 0));
  t.push_back(Scalar("debugColorBlue", "dbcb", T::kFloat, 0, 0));
  t.push_back(Color("debugColor", "dbc", {"debugColorRed", "debugColorGreen", "debugColorBlue"}, {1.0, 0.0, 0.0}, O));
  t.push_back(Scalar("debugWidth", "dw", T::kFloat, 3, O, 0.0, {}, {}, 10.0));
  t.push_back(Enum("debugFeature", "dbgf",
                   {{"Attachments To Geometry", 1}, {"Attachments To Transform", 2}, {"Muscle Fibers", 4},
                    {"Shape Preservation", 5}, {"Slide On Segment", 9}, {"Slide On Geometry", 8}},
                   4, O));
  t.push_back(Scalar("debugFibersScale", "dfs", T::kFloat, 1, O, 0.001, {}, {}, 10.0));
  return t;
}

}  // namespace

const AttributeTable& MuscleAttributes() {
  static const AttributeTable table = BuildMuscleTable();
  return table;
}

const AttributeTable& RibbonMuscleAttributes() {
  static const AttributeTable table = [] {
    AttributeTable t = BuildMuscleTable();
    t.erase(std::remove_if(t.begin(), t.end(),
                           [](const AttributeInfo& info) {
                             return info.long_name == "volumePreservation" || info.long_name == "volumeRatio";
                           }),
            t.end());
    return t;
  }();
  return table;
}

}  // namespace myo_core
