#pragma once
// The state one paint run keeps across the many short commands of an
// external brush: the deformer type and map in use, the live array and the
// display copy that stamps change, the influence on display and the brush.

#include <cstdint>
#include <string>
#include <vector>

namespace myo_core {

enum PaintMode : int32_t { kPaintReplace = 0, kPaintAdd = 1, kPaintScale = 2, kPaintSmooth = 3 };

// Bits of the host's modifier keys.
constexpr int32_t kModifierShift = 1;
constexpr int32_t kModifierCtrl = 4;

struct PaintContext {
  std::string deformer_type_;                  // node type of the deformer in use
  std::string weight_name_;                    // name of the map in use
  std::vector<float>* source_weights_ = nullptr;  // the live array of the map on display
  std::vector<float>* target_weights_ = nullptr;  // the display copy that stamps change
  int32_t current_influence_ = 0;
  uint32_t point_count_ = 0;
  uint32_t influence_offset_ = 0;              // current_influence_ * point_count_
  float ui_value_ = 1.0f;
  float ui_opacity_ = 1.0f;
  int32_t paint_mode_ = kPaintReplace;         // the tool's mode
  int32_t active_paint_mode_ = kPaintReplace;  // this stroke's, after the modifier keys
  bool invert_value_ = false;                  // Ctrl held when the stroke began
};

// The stroke's mode and inversion from the modifier keys held when it
// begins: Ctrl inverts the value, Shift alone smooths.
inline void ApplyModifierKeys(PaintContext& context, int32_t modifiers) {
  context.active_paint_mode_ = context.paint_mode_;
  context.invert_value_ = ((modifiers >> 2) & 1) != 0;
  if (!context.invert_value_ && (modifiers & kModifierShift) != 0) context.active_paint_mode_ = kPaintSmooth;
}

}  // namespace myo_core
