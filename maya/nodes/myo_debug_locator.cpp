// The legacy draw calls the host's deprecated OpenGL entry points, the only
// ones that viewport has.
#define _OPENMAYA_DEPRECATION_DISABLE_WARNING

#include "maya/nodes/myo_debug_locator.h"

#include <maya/MFnDependencyNode.h>
#include <maya/MGLFunctionTable.h>
#include <maya/MGLdefinitions.h>
#include <maya/MHardwareRenderer.h>
#include <maya/MPlug.h>
#include <maya/MPlugArray.h>

#include "core/debug/debug_discs.h"
#include "core/debug/helper_node_attributes.h"
#include "core/plugin/registration_table.h"
#include "maya/plugin/node_helpers.h"

const MTypeId MyoDebugLocator::id(myo_core::kMyoDebugLocatorId);
myo_maya::NodeAttributes MyoDebugLocator::attributes_;

void MyoDebugLocatorData::Read(const MObject& locator) {
  // A reused object must not keep pointing into a node that went away.
  records_ = nullptr;
  paths_ = nullptr;
  MPlug data(locator, MyoDebugLocator::attributes()["data"]);
  MPlugArray sources;
  if (data.isNull() || !data.connectedTo(sources, true, false)) return;
  for (unsigned s = 0; s < sources.length(); ++s) {
    MFnDependencyNode fn(sources[s].node());
    if (fn.typeId() != MyoDataNode::id) continue;
    const auto* node = dynamic_cast<const MyoDataNode*>(fn.userNode());
    if (node == nullptr) continue;
    records_ = &node->registry().records();
    paths_ = &node->registry().paths();
  }
}

std::vector<const myo_core::DebugData*> VisibleDebugRecords(const MyoDebugLocatorData& data, M3dView& view) {
  std::vector<const myo_core::DebugData*> visible;
  if (data.records_ == nullptr || data.paths_ == nullptr) return visible;
  // Copies keep the walk safe from an entry made or erased meanwhile.
  const MyoDataNode::Registry::Records records = *data.records_;
  const MyoDataNode::Registry::Paths paths = *data.paths_;
  for (const auto& [key, record] : records) {
    if (record == nullptr || !record->enabled_) continue;
    const auto path = paths.find(key);
    if (path == paths.end()) continue;
    if (myo_maya::IsVisibleInView(path->second, view)) visible.push_back(record);
  }
  return visible;
}

void* MyoDebugLocator::creator() { return new MyoDebugLocator(); }

MStatus MyoDebugLocator::initialize() {
  return attributes_.Create(
      myo_core::DebugLocatorAttributes(), [](const MObject& attribute) { return addAttribute(attribute); },
      [](const MObject&, const MObject&) { return MStatus(MS::kSuccess); }, MObject::kNullObj);
}

namespace {

void DrawLinesGL(const myo_core::DebugData& record, MGLFunctionTable& gl) {
  gl.glLineWidth(record.width_);
  gl.glColor4f(record.color_[0], record.color_[1], record.color_[2], record.color_[3]);
  gl.glBegin(MGL_LINES);
  for (std::size_t k = 0; k + 6 <= record.lines_.size(); k += 6) {
    const float* p = record.lines_.data() + k;
    gl.glVertex3f(p[0], p[1], p[2]);
    gl.glVertex3f(p[3], p[4], p[5]);
  }
  gl.glEnd();
}

void DrawDiscsGL(const myo_core::DebugData& record, MGLFunctionTable& gl) {
  gl.glLineWidth(record.width_);
  gl.glColor4f(record.color_[0], record.color_[1], record.color_[2], record.color_[3]);
  const auto fan = myo_core::DiscFan();
  for (std::size_t k = 0; k + myo_core::kDiscFloats <= record.discs_.size(); k += myo_core::kDiscFloats) {
    const float* d = record.discs_.data() + k;
    if (!myo_core::IsDiscDrawn(d[6])) continue;
    const myo_core::DiscRotation rotation = myo_core::RotationOntoNormal({d[3], d[4], d[5]});
    gl.glPushMatrix();
    gl.glTranslatef(d[0], d[1], d[2]);
    gl.glRotatef(rotation.degrees, rotation.axis.x, rotation.axis.y, rotation.axis.z);
    gl.glBegin(MGL_TRIANGLE_FAN);
    for (const myo_core::Vec3& p : fan) gl.glVertex3f(p.x, p.y, p.z);
    gl.glEnd();
    gl.glPopMatrix();
  }
}

}  // namespace

void MyoDebugLocator::draw(M3dView& view, const MDagPath&, M3dView::DisplayStyle, M3dView::DisplayStatus) {
  MyoDebugLocatorData data;
  data.Read(thisMObject());
  MHardwareRenderer* renderer = MHardwareRenderer::theRenderer();
  MGLFunctionTable* gl = renderer != nullptr ? renderer->glFunctionTable() : nullptr;
  if (gl == nullptr) return;
  const std::vector<const myo_core::DebugData*> records = VisibleDebugRecords(data, view);
  view.beginGL();
  MGLfloat line_width = 1.0f;
  gl->glGetFloatv(MGL_LINE_WIDTH, &line_width);
  gl->glDisable(MGL_LIGHTING);
  for (const myo_core::DebugData* record : records) {
    gl->glEnable(MGL_BLEND);
    gl->glBlendFunc(MGL_SRC_ALPHA, MGL_ONE_MINUS_SRC_ALPHA);
    DrawLinesGL(*record, *gl);
    DrawDiscsGL(*record, *gl);
  }
  gl->glLineWidth(line_width);
  view.endGL();
}
