#include "maya/nodes/myo_locator_draw_overrides.h"

#include <maya/MFnDependencyNode.h>
#include <maya/MHWGeometryUtilities.h>
#include <maya/MPxLocatorNode.h>

#include "maya/plugin/figure_drawing.h"

template <class Data>
MBoundingBox MyoFigureDrawOverride<Data>::boundingBox(const MDagPath& object_path, const MDagPath&) const {
  MStatus status;
  MFnDependencyNode node(object_path.node(&status));
  if (!status) return MBoundingBox();
  const auto* locator = dynamic_cast<const MPxLocatorNode*>(node.userNode());
  return locator != nullptr ? locator->boundingBox() : MBoundingBox();
}

template <class Data>
MUserData* MyoFigureDrawOverride<Data>::prepareForDraw(const MDagPath& object_path, const MDagPath&,
                                                       const MHWRender::MFrameContext&, MUserData* old_data) {
  Data* data = dynamic_cast<Data*>(old_data);
  if (data == nullptr) data = new Data();
  MStatus status;
  const MObject node = object_path.node(&status);
  if (status) data->Read(node);
  data->display_status_ = static_cast<int32_t>(MHWRender::MGeometryUtilities::displayStatus(object_path));
  return data;
}

template <class Data>
void MyoFigureDrawOverride<Data>::addUIDrawables(const MDagPath&, MHWRender::MUIDrawManager& draw_manager,
                                                 const MHWRender::MFrameContext&, const MUserData* user_data) {
  const auto* data = dynamic_cast<const Data*>(user_data);
  if (data == nullptr) return;
  const auto status = static_cast<MHWRender::DisplayStatus>(data->display_status_);
  myo_maya::DrawFigure(data->Figure(myo_maya::ToFigureStatus(status), normal_), draw_manager);
}

template class MyoFigureDrawOverride<MyoLocatorData>;
template class MyoFigureDrawOverride<MyoLocatorDistanceData>;
template class MyoFigureDrawOverride<MyoLocatorPositionData>;
template class MyoFigureDrawOverride<MyoLocatorRotationData>;

MHWRender::MPxDrawOverride* MyoLocatorDrawOverride::Creator(const MObject& node) {
  return new MyoLocatorDrawOverride(node);
}

MHWRender::MPxDrawOverride* MyoLocatorDistanceDrawOverride::Creator(const MObject& node) {
  return new MyoLocatorDistanceDrawOverride(node);
}

MHWRender::MPxDrawOverride* MyoLocatorPositionDrawOverride::Creator(const MObject& node) {
  return new MyoLocatorPositionDrawOverride(node);
}

MHWRender::MPxDrawOverride* MyoLocatorRotationDrawOverride::Creator(const MObject& node) {
  return new MyoLocatorRotationDrawOverride(node);
}
