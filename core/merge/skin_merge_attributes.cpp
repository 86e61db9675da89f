#include "core/merge/skin_merge_attributes.h"

#include "core/attributes/attribute_builders.h"

namespace myo_core {

const AttributeTable& SkinMergeAttributes() {
  using namespace attribute_builders;
  using T = AttributeType;
  constexpr uint32_t O = kAffectsOutput;
  static const AttributeTable table = [] {
    AttributeTable t;
    t.push_back(Scalar("initializationTime", "it", T::kTime, 0, O));
    t.push_back(ResetOnDisconnect(Typed("simWorldMesh", "swm", T::kMesh, O)));
    t.push_back(ResetOnDisconnect(Typed("simWorldMatrix", "swx", T::kFloatMatrix, kStorable | O)));
    t.push_back(Compound("simList", "sl", {"simWorldMesh", "simWorldMatrix"}, kArray));
    t.push_back(ResetOnDisconnect(Typed("animWorldMesh", "awm", T::kMesh, O)));
    t.push_back(ResetOnDisconnect(Typed("animWorldMatrix", "awx", T::kFloatMatrix, kStorable | O)));
    t.push_back(Compound("animList", "al", {"animWorldMesh", "animWorldMatrix"}, kArray));
    t.push_back(Scalar("blend", "b", T::kFloat, 0, kArray, {}, {}, 0.0, 1.0));
    t.push_back(List("blendList", "bl", "blend", 0));
    return t;
  }();
  return table;
}

const std::vector<std::string>& SkinMergePaintableMaps() {
  static const std::vector<std::string> maps = {"weights", "blend"};
  return maps;
}

}  // namespace myo_core
