#include "core/attributes/simulation_attributes.h"

#include "core/attributes/attribute_builders.h"
#include "core/tables/enum_tables.h"
#include "core/tables/material_type.h"

namespace myo_core {

using namespace attribute_builders;

namespace {

using T = AttributeType;
constexpr uint32_t K = kKeyable;

}  // namespace

void AppendSolverHeader(AttributeTable& t, int32_t iterations, int32_t material, float density) {
  t.push_back(Scalar("enable", "e", T::kBool, 1, K | kAffectsOutput));
  t.push_back(Scalar("iterations", "it", T::kInt, iterations, K, 1.0, {}, {}, 10.0));
  t.push_back(Enum("material", "mat", EnumFieldsOf(MaterialType()), material, K));
  t.push_back(Scalar("stiffnessMultiplier", "sm", T::kFloat, 1, K, 0.0, {}, {}, 2.0));
  t.push_back(Enum("pointMassMode", "pmm", EnumFieldsOf(PointMassMode()), kPointMassByUniformValue, K));
  t.push_back(Scalar("density", "d", T::kFloat, density, K, 0.000001, {}, 0.001, 1000000.0));
}

void AppendScalesAndStiffness(AttributeTable& t, int32_t space_scale_mode) {
  t.push_back(Scalar("timeScale", "ts", T::kFloat, 1, K, 0.001, {}, {}, 10.0));
  t.push_back(Scalar("spaceScale", "ss", T::kFloat, 1, K, 0.001, {}, {}, 100.0));
  t.push_back(Enum("spaceScaleMode", "ssm", EnumFieldsOf(SpaceScaleMode()), space_scale_mode, K));
  t.push_back(Scalar("gravity", "g", T::kFloat, 0, K, 0.0, {}, {}, 100.0));
  t.push_back(Compound("gravityDirection", "gd", {"gravityDirectionX", "gravityDirectionY", "gravityDirectionZ"}, 0));
  t.push_back(Scalar("gravityDirectionX", "gx", T::kFloat, 0, K));
  t.push_back(Scalar("gravityDirectionY", "gy", T::kFloat, -1, K));
  t.push_back(Scalar("gravityDirectionZ", "gz", T::kFloat, 0, K));
  t.push_back(Scalar("useCustomStiffness", "ucs", T::kBool, 0, K));
  t.push_back(Scalar("stiffness", "s", T::kFloat, 100000, K, 0.0, {}, {}, 1e12));
  t.push_back(Scalar("overrideShapePreservationStiffness", "osps", T::kBool, 0, K));
  t.push_back(Scalar("stiffnessShapePreservation", "ssp", T::kFloat, 1000, K, 0.0, {}, {}, 1e12));
  t.push_back(Scalar("globalMassMultiplier", "gmm", T::kFloat, 1, K, 0.000001, {}, 0.001, 10.0));
  t.push_back(Scalar("globalDampingMultiplier", "gdm", T::kFloat, 0.75, K, 0.0, {}, {}, 1.0));
  t.push_back(Scalar("inertiaDamper", "idmp", T::kFloat, 0, K, 0.0, 1.0));
  t.push_back(Scalar("restLengthMultiplier", "rlm", T::kFloat, 1, K, 0.0, {}, {}, 2.0));
  t.push_back(Scalar("compressionMultiplier", "cm", T::kFloat, 1, K, 0.0, {}, {}, 2.0));
  t.push_back(Scalar("stretchingMultiplier", "stretm", T::kFloat, 1, K, 0.0, {}, {}, 2.0));
}

}  // namespace myo_core
