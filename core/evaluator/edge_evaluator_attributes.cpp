#include "core/evaluator/edge_evaluator_attributes.h"

#include "core/attributes/attribute_builders.h"

namespace myo_core {

const AttributeTable& EdgeEvaluatorAttributes() {
  using namespace attribute_builders;
  using T = AttributeType;
  static const AttributeTable table = [] {
    AttributeTable t;
    // Read only when something else causes an evaluation.
    t.push_back(Scalar("initializationTime", "it", T::kTime, 0, 0));
    t.push_back(Typed("restMesh", "rmesh", T::kMesh, kReadable | kAffectsOutput));
    t.push_back(Typed("deformMesh", "dmesh", T::kMesh, kReadable | kAffectsOutput));
    t.push_back(Typed("compressionRemap", "cr", T::kRamp, kAffectsOutput));
    t.push_back(Scalar("compression", "c", T::kFloat, 0, kArray | kNotWritable));
    return t;
  }();
  return table;
}

}  // namespace myo_core
