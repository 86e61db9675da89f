#pragma once
// The protocol of an external brush over a paint context, host-neutral: the
// set-up of a deformer and map, and per stroke initialise, stamps, flood and
// finalise, then undo and redo. The host finds the deformer and its weights
// display node for each command and hands them in; messages of the
// protocol's own failures are reported here.

#include <cstdint>
#include <string>
#include <vector>

#include "core/paint/paint_context.h"
#include "core/paint/paintable_deformer.h"

namespace myo_core {

// The display copy of the map being painted (the weights display node):
// stamps change it, the host re-colours the mesh when the trigger flips.
class WeightsDisplay {
 public:
  virtual ~WeightsDisplay() = default;
  virtual std::vector<float>& Weights() = 0;
  virtual void SetShowFibers(bool show) = 0;
  virtual void FlipTrigger() = 0;
};

// "-deformerType": false, with the error, for a type that paints nothing.
bool SetPaintDeformerType(PaintContext& context, const std::string& type_name);

// "-weight": shows the map called `name`: the live array is copied to the
// display, which shows black for fibers. False, with the error, for a name
// of no map.
bool SelectPaintWeights(PaintContext& context, PaintableDeformer& deformer, WeightsDisplay& display,
                        const std::string& name);

// "-currentInfluence": shows one influence's block of the map on display.
void SelectPaintInfluence(PaintContext& context, PaintableDeformer& deformer, WeightsDisplay& display,
                          int32_t influence);

// "-clear": forgets the influence and both arrays.
void ClearPaintContext(PaintContext& context);

// The start of a stroke: the live array is copied to the display and the
// stroke's mode is taken from the modifier keys. True when the map is the
// fibers, whose stamps take world-space directions.
bool BeginPaintStroke(PaintContext& context, PaintableDeformer& deformer, WeightsDisplay& display,
                      int32_t modifiers);

// What the brush's own arithmetic starts from at a vertex.
struct PaintBaseValue {
  bool present = false;   // false for a vertex outside the display copy
  bool fibers = false;    // the three numbers of the vertex's live fiber
  double fiber[3] = {0.0, 0.0, 0.0};
  float value = 0.0f;     // 1 in scale mode, else 0
};
PaintBaseValue GetPaintBaseValue(const PaintContext& context, int32_t display_weight, int32_t vertex);

// One stamp at `vertex` (of the influence on display) with `strength`; a
// fiber stamp takes `direction` and projects the painted fiber at once.
// Past the end of the arrays it does nothing.
void ApplyPaintStamp(PaintContext& context, PaintableDeformer& deformer, WeightsDisplay& display, uint32_t vertex,
                     double strength, const double direction[3]);

// The tool's mode over every vertex of the influence on display, into the
// display copy. False, with the error where one belongs, when the block is
// outside the arrays or the mode is unknown.
bool FloodPaint(PaintContext& context, PaintableDeformer& deformer, WeightsDisplay& display);

// The end of a stroke: the display copy becomes the live array, is
// consolidated where the map needs it and handed to `writer` to be recorded.
// False, with the error, when the display copy no longer fits the live array
// (the deformer was rebuilt during the stroke).
bool FinishPaintStroke(PaintContext& context, PaintableDeformer& deformer, MapWriter& writer);

// After a flood on a multi-influence map: the consolidated live array is
// shown.
void ShowConsolidatedWeights(PaintContext& context, PaintableDeformer& deformer, WeightsDisplay& display);

// After the host undid or redid the record of a stroke on map
// `stroke_weight`: the record goes back into the live arrays, and into the
// display while that map is still on it.
void ReloadPaintedWeights(PaintContext& context, PaintableDeformer& deformer, WeightsDisplay& display,
                          int32_t stroke_weight);

// The live value of `vertex` in the influence on display; false, with the
// error, outside the points or the array.
bool GetPaintWeight(const PaintContext& context, int32_t vertex, double& value);

}  // namespace myo_core
