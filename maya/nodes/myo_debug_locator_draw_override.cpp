#include "maya/nodes/myo_debug_locator_draw_override.h"

#include <maya/M3dView.h>
#include <maya/MColor.h>
#include <maya/MPoint.h>
#include <maya/MVector.h>

#include <vector>

#include "core/debug/debug_discs.h"
#include "maya/nodes/myo_debug_locator.h"

namespace {

MColor ColorOf(const myo_core::DebugData& record) {
  return MColor(record.color_[0], record.color_[1], record.color_[2], record.color_[3]);
}

void DrawLines(const myo_core::DebugData& record, MHWRender::MUIDrawManager& draw_manager) {
  draw_manager.setLineWidth(record.width_);
  draw_manager.setColor(ColorOf(record));
  for (std::size_t k = 0; k + 6 <= record.lines_.size(); k += 6) {
    const float* p = record.lines_.data() + k;
    draw_manager.line(MPoint(p[0], p[1], p[2]), MPoint(p[3], p[4], p[5]));
  }
}

void DrawDiscs(const myo_core::DebugData& record, MHWRender::MUIDrawManager& draw_manager) {
  draw_manager.setLineWidth(record.width_);
  draw_manager.setColor(ColorOf(record));
  for (const myo_core::DebugDisc& disc : myo_core::DrawnDiscs(record.discs_))
    draw_manager.circle(MPoint(disc.centre.x, disc.centre.y, disc.centre.z),
                        MVector(disc.normal.x, disc.normal.y, disc.normal.z), myo_core::kDiscRadius, true);
}

}  // namespace

MHWRender::MPxDrawOverride* MyoDebugLocatorDrawOverride::Creator(const MObject& node) {
  return new MyoDebugLocatorDrawOverride(node);
}

MUserData* MyoDebugLocatorDrawOverride::prepareForDraw(const MDagPath& object_path, const MDagPath&,
                                                       const MHWRender::MFrameContext&, MUserData* old_data) {
  auto* data = dynamic_cast<MyoDebugLocatorData*>(old_data);
  if (data == nullptr) data = new MyoDebugLocatorData();
  MStatus status;
  const MObject node = object_path.node(&status);
  if (status) data->Read(node);
  return data;
}

void MyoDebugLocatorDrawOverride::addUIDrawables(const MDagPath&, MHWRender::MUIDrawManager& draw_manager,
                                                 const MHWRender::MFrameContext&, const MUserData* user_data) {
  const auto* data = dynamic_cast<const MyoDebugLocatorData*>(user_data);
  if (data == nullptr || data->records_ == nullptr) return;
  draw_manager.beginDrawable();
  draw_manager.setPaintStyle(MHWRender::MUIDrawManager::kFlat);
  M3dView view = M3dView::active3dView();
  for (const myo_core::DebugData* record : VisibleDebugRecords(*data, view)) {
    DrawLines(*record, draw_manager);
    DrawDiscs(*record, draw_manager);
  }
  draw_manager.endDrawable();
}
