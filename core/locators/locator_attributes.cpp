#include "core/locators/locator_attributes.h"

#include "core/attributes/attribute_builders.h"
#include "core/plugin/registration_table.h"

namespace myo_core {

namespace {

using namespace attribute_builders;
using T = AttributeType;
constexpr const char* kLowerAxes[3] = {"x", "y", "z"};

void AppendScale(AttributeTable& t) { t.push_back(Scalar("scale", "scl", T::kFloat, 1, kKeyable, 0.0, {}, {}, 10.0)); }

void AppendActivations(AttributeTable& t, const char* first_long, const char* first_short) {
  if (first_long != nullptr) t.push_back(Scalar(first_long, first_short, T::kFloat, 0, 0));
  t.push_back(Scalar("activationVelocity", "avel", T::kFloat, 0, 0));
  t.push_back(Scalar("activationAcceleration", "aacc", T::kFloat, 0, 0));
}

AttributeTable BuildMarker() {
  AttributeTable t;
  AppendScale(t);
  return t;
}

AttributeTable BuildDistance() {
  AttributeTable t;
  AppendScale(t);
  AppendFloat3(t, "startPosition", "spos", kLowerAxes, {-0.5, 0.0, 0.0});
  AppendFloat3(t, "endPosition", "epos", kLowerAxes, {0.0, 0.0, 0.0});
  AppendActivations(t, "activationDistance", "adst");
  t.push_back(Enum("drawOutput", "dout", {{"distance", 0}, {"velocity", 1}, {"acceleration", 2}}, 0, kKeyable));
  return t;
}

AttributeTable BuildPosition() {
  AttributeTable t;
  AppendScale(t);
  AppendFloat3(t, "position", "pos", kLowerAxes, {0.0, 0.0, 0.0});
  AppendActivations(t, nullptr, nullptr);
  t.push_back(Enum("drawOutput", "dout", {{"velocity", 0}, {"acceleration", 1}}, 0, kKeyable));
  return t;
}

AttributeTable BuildRotation() {
  AttributeTable t;
  AppendScale(t);
  AppendFloat3(t, "startPosition", "spos", kLowerAxes, {-0.5, 0.0, 0.0});
  AppendFloat3(t, "midPosition", "mpos", kLowerAxes, {0.0, 0.0, 0.0});
  AppendFloat3(t, "endPosition", "epos", kLowerAxes, {0.5, 0.0, 0.0});
  AppendActivations(t, "activationAngle", "aang");
  t.push_back(Enum("drawOutput", "dout", {{"angle", 0}, {"velocity", 1}, {"acceleration", 2}}, 0, kKeyable));
  return t;
}

}  // namespace

const AttributeTable& LocatorAttributes(LocatorKind kind) {
  static const AttributeTable marker = BuildMarker(), distance = BuildDistance(), position = BuildPosition(),
                              rotation = BuildRotation();
  switch (kind) {
    case LocatorKind::kMarker: return marker;
    case LocatorKind::kDistance: return distance;
    case LocatorKind::kPosition: return position;
    case LocatorKind::kRotation: break;
  }
  return rotation;
}

const std::vector<std::string>& LocatorActivationInputs(LocatorKind kind) {
  static const std::vector<std::string> none,
      distance = {"activationDistance", "activationVelocity", "activationAcceleration"},
      position = {"activationVelocity", "activationAcceleration"},
      rotation = {"activationAngle", "activationVelocity", "activationAcceleration"};
  switch (kind) {
    case LocatorKind::kMarker: return none;
    case LocatorKind::kDistance: return distance;
    case LocatorKind::kPosition: return position;
    case LocatorKind::kRotation: break;
  }
  return rotation;
}

const char* LocatorTypeName(LocatorKind kind) {
  switch (kind) {
    case LocatorKind::kMarker: return kMyoLocatorTypeName;
    case LocatorKind::kDistance: return kMyoLocatorDistanceTypeName;
    case LocatorKind::kPosition: return kMyoLocatorPositionTypeName;
    case LocatorKind::kRotation: break;
  }
  return kMyoLocatorRotationTypeName;
}

}  // namespace myo_core
