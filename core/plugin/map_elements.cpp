#include "core/plugin/map_elements.h"

#include <algorithm>

#include "core/log/logger.h"

namespace myo_core {

bool PrepareMapRange(uint32_t offset, uint32_t count, uint32_t total, float default_value, std::vector<float>& out) {
  if (static_cast<uint64_t>(total) < static_cast<uint64_t>(offset) + count) return false;
  out.resize(total);
  std::fill(out.begin() + offset, out.begin() + offset + count, default_value);
  return true;
}

bool ElementToFloat(NumericElementSource& source, float& value) {
  switch (source.Kind()) {
    case ElementNumberKind::kInteger: value = static_cast<float>(source.AsInteger()); return true;
    case ElementNumberKind::kFloat: value = source.AsFloat(); return true;
    case ElementNumberKind::kDouble: value = static_cast<float>(source.AsDouble()); return true;
    case ElementNumberKind::kUnsupported: break;
  }
  return false;
}

void ReadNumericElements(NumericElementSource& source, uint32_t offset, uint32_t count, uint32_t total,
                         float default_value, std::vector<float>& out) {
  if (!PrepareMapRange(offset, count, total, default_value, out)) return;
  for (uint32_t i = 0; i < count; ++i) {
    if (!source.JumpTo(i)) continue;
    float value = default_value;
    if (!ElementToFloat(source, value)) {
      ReportDebug(kUnsupportedElementTypeMessage, "");
      return;
    }
    out[offset + i] = value;
  }
}

void WriteNumericElements(NumericElementSink& sink, const std::vector<float>& values) {
  const ElementNumberKind kind = sink.Kind();
  if (kind == ElementNumberKind::kUnsupported) {
    ReportDebug(kUnsupportedElementTypeMessage, "");
    return;
  }
  for (uint32_t i = 0; i < values.size(); ++i) {
    switch (kind) {
      case ElementNumberKind::kInteger: sink.SetInteger(i, static_cast<int32_t>(values[i])); break;
      case ElementNumberKind::kFloat: sink.SetFloat(i, values[i]); break;
      case ElementNumberKind::kDouble: sink.SetDouble(i, static_cast<double>(values[i])); break;
      case ElementNumberKind::kUnsupported: break;
    }
  }
}

}  // namespace myo_core
