#pragma once
// The four locators, "MyoLocator", "MyoLocatorDistance", "MyoLocatorPosition"
// and "MyoLocatorRotation": nodes that only draw. Each has a data object that
// reads the node's plugs and builds its figure in the core; the legacy draw
// and the Viewport 2.0 override (myo_locator_draw_overrides.h) both draw that
// figure.

#include <maya/M3dView.h>
#include <maya/MBoundingBox.h>
#include <maya/MDagPath.h>
#include <maya/MPxLocatorNode.h>
#include <maya/MTypeId.h>
#include <maya/MUserData.h>

#include <cstdint>

#include "core/locators/locator_attributes.h"
#include "core/locators/locator_figures.h"
#include "maya/plugin/node_attributes.h"

// What a locator's figure is made from. Read() takes each value from its
// plug and leaves it as it was when the plug cannot be read.
class MyoLocatorData : public MUserData {
 public:
  void Read(const MObject& node);
  myo_core::LocatorFigure Figure(myo_core::FigureStatus status, myo_core::RememberedNormal& normal) const;

  float scale_ = 1.0f;
  int32_t display_status_ = 0;
};

class MyoLocatorDistanceData : public MUserData {
 public:
  void Read(const MObject& node);
  myo_core::LocatorFigure Figure(myo_core::FigureStatus status, myo_core::RememberedNormal& normal) const;

  float scale_ = 1.0f;
  myo_core::Point3 start_{-0.5, 0.0, 0.0};
  myo_core::Point3 end_{0.0, 0.0, 0.0};
  float activation_ = 0.0f;
  int32_t display_status_ = 0;
};

class MyoLocatorPositionData : public MUserData {
 public:
  void Read(const MObject& node);
  myo_core::LocatorFigure Figure(myo_core::FigureStatus status, myo_core::RememberedNormal& normal) const;

  float scale_ = 1.0f;
  float activation_ = 0.0f;
  myo_core::Point3 position_{0.0, 0.0, 0.0};
  int32_t display_status_ = 0;
};

class MyoLocatorRotationData : public MUserData {
 public:
  void Read(const MObject& node);
  myo_core::LocatorFigure Figure(myo_core::FigureStatus status, myo_core::RememberedNormal& normal) const;

  float scale_ = 1.0f;
  myo_core::Point3 start_{-0.5, 0.0, 0.0};
  myo_core::Point3 middle_{0.0, 0.0, 0.0};
  myo_core::Point3 end_{0.5, 0.0, 0.0};
  float activation_ = 0.0f;
  int32_t display_status_ = 0;
};

// A locator node over its data class: attributes from the core's table, the
// legacy draw and the bounding box of the figure without its outline.
template <class Data, myo_core::LocatorKind kKind>
class MyoFigureLocator : public MPxLocatorNode {
 public:
  using DataType = Data;

  static MStatus initialize();
  static myo_maya::NodeAttributes& attributes() { return attributes_; }

  void draw(M3dView& view, const MDagPath& path, M3dView::DisplayStyle style, M3dView::DisplayStatus status) override;
  bool isBounded() const override { return true; }
  MBoundingBox boundingBox() const override;

 private:
  static myo_maya::NodeAttributes attributes_;
  myo_core::RememberedNormal normal_;  // of the legacy draw's arc
};

class MyoLocator : public MyoFigureLocator<MyoLocatorData, myo_core::LocatorKind::kMarker> {
 public:
  static void* creator();
  static const MTypeId id;
  // The marker's box is fixed by its scale.
  MBoundingBox boundingBox() const override;
};

class MyoLocatorDistance : public MyoFigureLocator<MyoLocatorDistanceData, myo_core::LocatorKind::kDistance> {
 public:
  static void* creator();
  static const MTypeId id;
};

class MyoLocatorPosition : public MyoFigureLocator<MyoLocatorPositionData, myo_core::LocatorKind::kPosition> {
 public:
  static void* creator();
  static const MTypeId id;
};

class MyoLocatorRotation : public MyoFigureLocator<MyoLocatorRotationData, myo_core::LocatorKind::kRotation> {
 public:
  static void* creator();
  static const MTypeId id;
};
