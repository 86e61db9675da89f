#include "core/paint/paint_vocabulary.h"

#include <map>

#include "core/tables/enum_tables.h"

namespace myo_core {

namespace {

const std::vector<std::string> kMuscleMaps = {
    "Attachments To Geometry", "Attachments To Transform", "Compression Resistance",
    "Fibers",                  "Global Damping",           "Masses",
    "Shape Preservation",      "Slide On Geometry",        "Slide On Segment",
    "Sliding Distance Multiplier", "Stretching Resistance", "Tendons"};

const std::vector<std::string> kSkinMaps = {
    "Compression Resistance", "Global Damping",   "Hard Constraints",
    "Masses",                 "Shape Preservation", "Slide Constraints",
    "Sliding Distance Multiplier", "Soft Constraints", "Stretching Resistance"};

const std::vector<std::string> kMuscleMultiInfluenceMaps = {"Attachments To Geometry", "Attachments To Transform",
                                                            "Slide On Geometry", "Slide On Segment"};

const std::map<std::string, std::vector<std::string>>& AttributeTable() {
  static const std::map<std::string, std::vector<std::string>> table = {
      {"MyoMuscle", kMuscleMaps}, {"MyoRibbonMuscle", kMuscleMaps}, {"MyoSimshape", {}},
      {"MyoSkin", kSkinMaps},     {"MyoSkinMerge", {}}};
  return table;
}

const std::map<std::string, std::vector<std::string>>& MultiInfluenceTable() {
  static const std::map<std::string, std::vector<std::string>> table = {
      {"MyoMuscle", kMuscleMultiInfluenceMaps}, {"MyoRibbonMuscle", kMuscleMultiInfluenceMaps}};
  return table;
}

}  // namespace

const std::vector<std::string>& PaintDeformerTypes() {
  static const std::vector<std::string> keys = [] {
    std::vector<std::string> names;
    for (const auto& [type, maps] : AttributeTable()) names.push_back(type);
    return names;
  }();
  return keys;
}

const std::vector<std::string>* PaintableAttributeNames(const std::string& deformer_type) {
  const auto found = AttributeTable().find(deformer_type);
  return found == AttributeTable().end() ? nullptr : &found->second;
}

const std::vector<std::string>* MultiInfluenceAttributeNames(const std::string& deformer_type) {
  const auto found = MultiInfluenceTable().find(deformer_type);
  return found == MultiInfluenceTable().end() ? nullptr : &found->second;
}

std::optional<int32_t> WeightsTypeByName(const std::string& name) {
  for (const auto& [type, text] : WeightsType())
    if (text == name) return type;
  return std::nullopt;
}

}  // namespace myo_core
