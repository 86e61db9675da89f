#pragma once
// Viewport 2.0 draw overrides of the four locators. prepareForDraw reads the
// node's plugs into the locator's data object; addUIDrawables hands the
// figure the core builds from it to the draw manager.

#include <maya/MBoundingBox.h>
#include <maya/MDagPath.h>
#include <maya/MFrameContext.h>
#include <maya/MObject.h>
#include <maya/MPxDrawOverride.h>
#include <maya/MUIDrawManager.h>
#include <maya/MUserData.h>

#include "core/locators/locator_figures.h"
#include "maya/nodes/myo_locator_nodes.h"

template <class Data>
class MyoFigureDrawOverride : public MHWRender::MPxDrawOverride {
 public:
  MyoFigureDrawOverride(const MObject& node, bool is_always_dirty)
      : MHWRender::MPxDrawOverride(node, nullptr, is_always_dirty) {}

  MHWRender::DrawAPI supportedDrawAPIs() const override { return MHWRender::kAllDevices; }
  bool isBounded(const MDagPath&, const MDagPath&) const override { return true; }
  // The box of the node; empty without one.
  MBoundingBox boundingBox(const MDagPath& object_path, const MDagPath& camera_path) const override;
  bool hasUIDrawables() const override { return true; }
  MUserData* prepareForDraw(const MDagPath& object_path, const MDagPath& camera_path,
                            const MHWRender::MFrameContext& frame_context, MUserData* old_data) override;
  void addUIDrawables(const MDagPath& object_path, MHWRender::MUIDrawManager& draw_manager,
                      const MHWRender::MFrameContext& frame_context, const MUserData* data) override;

 private:
  myo_core::RememberedNormal normal_;  // of the rotation figure's arc
};

class MyoLocatorDrawOverride : public MyoFigureDrawOverride<MyoLocatorData> {
 public:
  static MHWRender::MPxDrawOverride* Creator(const MObject& node);
  explicit MyoLocatorDrawOverride(const MObject& node) : MyoFigureDrawOverride(node, false) {}
  // The marker's override gives an empty box.
  MBoundingBox boundingBox(const MDagPath&, const MDagPath&) const override { return MBoundingBox(); }
};

class MyoLocatorDistanceDrawOverride : public MyoFigureDrawOverride<MyoLocatorDistanceData> {
 public:
  static MHWRender::MPxDrawOverride* Creator(const MObject& node);
  explicit MyoLocatorDistanceDrawOverride(const MObject& node) : MyoFigureDrawOverride(node, true) {}
};

class MyoLocatorPositionDrawOverride : public MyoFigureDrawOverride<MyoLocatorPositionData> {
 public:
  static MHWRender::MPxDrawOverride* Creator(const MObject& node);
  explicit MyoLocatorPositionDrawOverride(const MObject& node) : MyoFigureDrawOverride(node, true) {}
};

class MyoLocatorRotationDrawOverride : public MyoFigureDrawOverride<MyoLocatorRotationData> {
 public:
  static MHWRender::MPxDrawOverride* Creator(const MObject& node);
  explicit MyoLocatorRotationDrawOverride(const MObject& node) : MyoFigureDrawOverride(node, true) {}
};
