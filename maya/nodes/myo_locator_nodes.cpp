// The legacy draw calls the host's deprecated OpenGL entry points, the only
// ones that viewport has.
#define _OPENMAYA_DEPRECATION_DISABLE_WARNING

#include "maya/nodes/myo_locator_nodes.h"

#include <maya/MHardwareRenderer.h>

#include <vector>

#include "core/log/logger.h"
#include "core/plugin/registration_table.h"
#include "maya/plugin/figure_drawing.h"

using myo_core::FigureStatus;
using myo_core::LocatorFigure;
using myo_core::LocatorKind;
using myo_core::RememberedNormal;
using myo_maya::NodeAttributes;
using myo_maya::ReadPlug;

template <class Data, LocatorKind kKind>
NodeAttributes MyoFigureLocator<Data, kKind>::attributes_;

const MTypeId MyoLocator::id(myo_core::kMyoLocatorId);
const MTypeId MyoLocatorDistance::id(myo_core::kMyoLocatorDistanceId);
const MTypeId MyoLocatorPosition::id(myo_core::kMyoLocatorPositionId);
const MTypeId MyoLocatorRotation::id(myo_core::kMyoLocatorRotationId);

namespace {

// The activation input that "drawOutput" names; 0 for any other value.
float ReadActivation(const MObject& node, const NodeAttributes& attributes, LocatorKind kind, float current) {
  const std::vector<std::string>& inputs = myo_core::LocatorActivationInputs(kind);
  int draw_output = 0;
  ReadPlug(node, attributes["drawOutput"], draw_output);
  if (draw_output < 0 || static_cast<size_t>(draw_output) >= inputs.size()) return 0.0f;
  float activation = current;
  ReadPlug(node, attributes[inputs[static_cast<size_t>(draw_output)]], activation);
  return activation;
}

}  // namespace

void MyoLocatorData::Read(const MObject& node) { ReadPlug(node, MyoLocator::attributes()["scale"], scale_); }

LocatorFigure MyoLocatorData::Figure(FigureStatus status, RememberedNormal&) const {
  return myo_core::MarkerFigure(scale_, status);
}

void MyoLocatorDistanceData::Read(const MObject& node) {
  const NodeAttributes& a = MyoLocatorDistance::attributes();
  ReadPlug(node, a["scale"], scale_);
  ReadPlug(node, a["startPosition"], start_);
  ReadPlug(node, a["endPosition"], end_);
  activation_ = ReadActivation(node, a, LocatorKind::kDistance, activation_);
}

LocatorFigure MyoLocatorDistanceData::Figure(FigureStatus status, RememberedNormal&) const {
  return myo_core::DistanceFigure(start_, end_, scale_, activation_, status);
}

void MyoLocatorPositionData::Read(const MObject& node) {
  const NodeAttributes& a = MyoLocatorPosition::attributes();
  ReadPlug(node, a["scale"], scale_);
  activation_ = ReadActivation(node, a, LocatorKind::kPosition, activation_);
  ReadPlug(node, a["position"], position_);
}

LocatorFigure MyoLocatorPositionData::Figure(FigureStatus status, RememberedNormal&) const {
  return myo_core::PositionFigure(position_, scale_, activation_, status);
}

void MyoLocatorRotationData::Read(const MObject& node) {
  const NodeAttributes& a = MyoLocatorRotation::attributes();
  ReadPlug(node, a["scale"], scale_);
  ReadPlug(node, a["startPosition"], start_);
  ReadPlug(node, a["midPosition"], middle_);
  ReadPlug(node, a["endPosition"], end_);
  activation_ = ReadActivation(node, a, LocatorKind::kRotation, activation_);
}

LocatorFigure MyoLocatorRotationData::Figure(FigureStatus status, RememberedNormal& normal) const {
  return myo_core::RotationFigure(start_, middle_, end_, scale_, activation_, status, normal);
}

template <class Data, LocatorKind kKind>
MStatus MyoFigureLocator<Data, kKind>::initialize() {
  // Locators only draw: no input affects anything.
  return attributes_.Create(
      myo_core::LocatorAttributes(kKind), [](const MObject& attribute) { return addAttribute(attribute); },
      [](const MObject&, const MObject&) { return MStatus(MS::kSuccess); }, MObject::kNullObj);
}

template <class Data, LocatorKind kKind>
void MyoFigureLocator<Data, kKind>::draw(M3dView& view, const MDagPath&, M3dView::DisplayStyle,
                                         M3dView::DisplayStatus status) {
  Data data;
  data.Read(thisMObject());
  const LocatorFigure figure = data.Figure(myo_maya::ToFigureStatus(status), normal_);
  view.beginGL();
  MHardwareRenderer* renderer = MHardwareRenderer::theRenderer();
  MGLFunctionTable* gl = renderer != nullptr ? renderer->glFunctionTable() : nullptr;
  if (gl != nullptr) myo_maya::DrawFigureGL(figure, *gl);
  view.endGL();
}

template <class Data, LocatorKind kKind>
MBoundingBox MyoFigureLocator<Data, kKind>::boundingBox() const {
  Data data;
  data.Read(thisMObject());
  RememberedNormal normal = normal_;  // a box leaves the drawn arc's plane alone
  return myo_maya::ToBoundingBox(BoundsOf(data.Figure(FigureStatus::kOther, normal), false));
}

template class MyoFigureLocator<MyoLocatorData, LocatorKind::kMarker>;
template class MyoFigureLocator<MyoLocatorDistanceData, LocatorKind::kDistance>;
template class MyoFigureLocator<MyoLocatorPositionData, LocatorKind::kPosition>;
template class MyoFigureLocator<MyoLocatorRotationData, LocatorKind::kRotation>;

void* MyoLocator::creator() { return new MyoLocator(); }

MBoundingBox MyoLocator::boundingBox() const {
  MyoLocatorData data;
  data.Read(thisMObject());
  return myo_maya::ToBoundingBox(myo_core::MarkerBounds(data.scale_));
}

void* MyoLocatorDistance::creator() { return new MyoLocatorDistance(); }
void* MyoLocatorPosition::creator() { return new MyoLocatorPosition(); }
void* MyoLocatorRotation::creator() { return new MyoLocatorRotation(); }
