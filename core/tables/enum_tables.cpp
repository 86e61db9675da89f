#include "core/tables/enum_tables.h"

#include <cmath>

namespace myo_core {

const std::map<int, std::string>& RemapMode() {
  static const std::map<int, std::string> table = {
      {0, "Linear"}, {1, "Logarithmic"}, {2, "Square Root"}, {3, "Cube Root"}};
  return table;
}

double EMinusOne() {
  static const double value = std::exp(1.0) - 1.0;
  return value;
}

const std::map<int, std::string>& ActivationMode() {
  static const std::map<int, std::string> table = {
      {0, "Muscle Patches"}, {1, "Plug Values"}, {2, "No Activation"}};
  return table;
}

const std::map<int, std::string>& PointMassMode() {
  static const std::map<int, std::string> table = {
      {kPointMassByDensity, "By Density"}, {kPointMassByUniformValue, "By Uniform Value"}};
  return table;
}

const std::map<int, std::string>& SpaceScaleMode() {
  static const std::map<int, std::string> table = {
      {kSpaceScaleMasses, "Masses"},
      {kSpaceScaleForces, "Forces"},
      {kSpaceScaleMassesAndForces, "Masses + Forces"}};
  return table;
}

const std::map<int, std::string>& NormalizationMode() {
  static const std::map<int, std::string> table = {
      {0, "Uniform"}, {1, "Priority"}, {2, "Reversed Priority"}};
  return table;
}

const std::map<int, std::string>& ConstraintPriorityOrder() {
  static const std::map<int, std::string> table = {
      {0, "Soft - Hard - Slide"}, {1, "Soft - Slide - Hard"}, {2, "Hard - Soft - Slide"},
      {3, "Hard - Slide - Soft"}, {4, "Slide - Soft - Hard"}, {5, "Slide - Hard - Soft"}};
  return table;
}

const std::map<int, std::array<int32_t, 3>>& ConstraintPriorityOrderLists() {
  static const std::map<int, std::array<int32_t, 3>> table = {
      {0, {2, 0, 1}}, {1, {0, 2, 1}}, {2, {2, 1, 0}},
      {3, {1, 2, 0}}, {4, {0, 1, 2}}, {5, {1, 0, 2}}};
  return table;
}

const std::map<int, std::string>& WeightsType() {
  static const std::map<int, std::string> table = {
      {0, "Hard Constraints"},
      {1, "Soft Constraints"},
      {2, "Slide Constraints"},
      {3, "Attachments To Transform"},
      {4, "Tendons"},
      {5, "Fibers"},
      {6, "Compression Resistance"},
      {7, "Stretching Resistance"},
      {8, "Global Damping"},
      {9, "Sliding Distance Multiplier"},
      {10, "Masses"},
      {11, "Slide On Segment"},
      {12, "Attachments To Geometry"},
      {13, "Slide On Geometry"},
      {14, "Shape Preservation"}};
  return table;
}

}  // namespace myo_core
