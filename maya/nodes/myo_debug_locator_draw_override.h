#pragma once
// Viewport 2.0 draw override of "MyoDebugLocator": prepareForDraw points the
// draw data at the connected data node's maps; addUIDrawables draws, per
// visible record, its lines and its discs in its own colour and width.

#include <maya/MDagPath.h>
#include <maya/MFrameContext.h>
#include <maya/MObject.h>
#include <maya/MPxDrawOverride.h>
#include <maya/MUIDrawManager.h>
#include <maya/MUserData.h>

class MyoDebugLocatorDrawOverride : public MHWRender::MPxDrawOverride {
 public:
  static MHWRender::MPxDrawOverride* Creator(const MObject& node);
  explicit MyoDebugLocatorDrawOverride(const MObject& node) : MHWRender::MPxDrawOverride(node, nullptr, true) {}

  MHWRender::DrawAPI supportedDrawAPIs() const override { return MHWRender::kAllDevices; }
  bool isBounded(const MDagPath&, const MDagPath&) const override { return false; }
  bool hasUIDrawables() const override { return true; }
  MUserData* prepareForDraw(const MDagPath& object_path, const MDagPath& camera_path,
                            const MHWRender::MFrameContext& frame_context, MUserData* old_data) override;
  void addUIDrawables(const MDagPath& object_path, MHWRender::MUIDrawManager& draw_manager,
                      const MHWRender::MFrameContext& frame_context, const MUserData* data) override;
};
