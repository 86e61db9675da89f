// The legacy viewport's OpenGL calls are deprecated by the host, and still
// the only way to draw there.
#define _OPENMAYA_DEPRECATION_DISABLE_WARNING

#include "maya/plugin/figure_drawing.h"

#include <maya/MColor.h>
#include <maya/MGLFunctionTable.h>
#include <maya/MGLdefinitions.h>
#include <maya/MPlug.h>
#include <maya/MPoint.h>
#include <maya/MVector.h>

#include <array>

namespace myo_maya {

using myo_core::FigureStatus;
using myo_core::Point3;

namespace {

MPoint ToPoint(const Point3& p) { return MPoint(p.x, p.y, p.z); }
MVector ToVector(const Point3& p) { return MVector(p.x, p.y, p.z); }
MColor ToColor(const myo_core::Rgba& c) { return MColor(c.r, c.g, c.b, c.a); }

void Vertex(MGLFunctionTable& gl, const Point3& p) { gl.glVertex3d(p.x, p.y, p.z); }
void Color(MGLFunctionTable& gl, const myo_core::Rgba& c) { gl.glColor4f(c.r, c.g, c.b, c.a); }

// Corners by bits: 1 right, 2 up, 4 depth.
constexpr int kBoxEdges[12][2] = {{0, 1}, {2, 3}, {4, 5}, {6, 7}, {0, 2}, {1, 3},
                                  {4, 6}, {5, 7}, {0, 4}, {1, 5}, {2, 6}, {3, 7}};
constexpr int kBoxFaces[6][4] = {{0, 1, 2, 3}, {4, 5, 6, 7}, {0, 1, 4, 5},
                                 {2, 3, 6, 7}, {0, 2, 4, 6}, {1, 3, 5, 7}};

}  // namespace

FigureStatus ToFigureStatus(MHWRender::DisplayStatus status) {
  if (status == MHWRender::kLead) return FigureStatus::kLead;
  if (status == MHWRender::kActive) return FigureStatus::kActive;
  return FigureStatus::kOther;
}

FigureStatus ToFigureStatus(M3dView::DisplayStatus status) {
  if (status == M3dView::kLead) return FigureStatus::kLead;
  if (status == M3dView::kActive) return FigureStatus::kActive;
  return FigureStatus::kOther;
}

MBoundingBox ToBoundingBox(const myo_core::FigureBounds& bounds) {
  MBoundingBox box;
  if (bounds.empty) return box;
  box.expand(ToPoint(bounds.min));
  box.expand(ToPoint(bounds.max));
  return box;
}

void DrawFigure(const myo_core::LocatorFigure& figure, MHWRender::MUIDrawManager& draw_manager) {
  draw_manager.beginDrawable(MHWRender::MUIDrawManager::kAutomatic);
  draw_manager.setLineWidth(myo_core::kFigureLineWidth);
  draw_manager.setLineStyle(MHWRender::MUIDrawManager::kSolid);
  draw_manager.setPaintStyle(MHWRender::MUIDrawManager::kFlat);
  for (const myo_core::FigureLine& line : figure.lines) {
    draw_manager.setColor(ToColor(line.color));
    draw_manager.line(ToPoint(line.from), ToPoint(line.to));
  }
  for (const myo_core::FigureBox& box : figure.boxes) {
    draw_manager.setColor(ToColor(box.color));
    draw_manager.box(ToPoint(box.center), ToVector(box.up), ToVector(box.right), box.scale_x, box.scale_y,
                     box.scale_z, box.filled);
  }
  for (const myo_core::FigureArc& arc : figure.arcs) {
    draw_manager.setColor(ToColor(arc.color));
    draw_manager.arc(ToPoint(arc.center), ToVector(arc.start), ToVector(arc.end), ToVector(arc.normal), arc.radius,
                     arc.filled);
  }
  draw_manager.endDrawable();
}

void DrawFigureGL(const myo_core::LocatorFigure& figure, MGLFunctionTable& gl) {
  gl.glLineWidth(myo_core::kFigureLineWidth);
  gl.glBegin(MGL_LINES);
  for (const myo_core::FigureLine& line : figure.lines) {
    Color(gl, line.color);
    Vertex(gl, line.from);
    Vertex(gl, line.to);
  }
  gl.glEnd();
  for (const myo_core::FigureBox& box : figure.boxes) {
    const std::array<Point3, 8> corners = BoxCorners(box);
    Color(gl, box.color);
    if (!box.filled) {
      gl.glBegin(MGL_LINES);
      for (const auto& edge : kBoxEdges) {
        Vertex(gl, corners[edge[0]]);
        Vertex(gl, corners[edge[1]]);
      }
      gl.glEnd();
      continue;
    }
    for (const auto& face : kBoxFaces) {
      gl.glBegin(MGL_QUAD_STRIP);
      for (int corner : face) Vertex(gl, corners[corner]);
      gl.glEnd();
    }
  }
  for (const myo_core::FigureArc& arc : figure.arcs) {
    Color(gl, arc.color);
    if (arc.filled) {
      gl.glBegin(MGL_TRIANGLE_STRIP);
      for (const Point3& p : WedgeStrip(arc)) Vertex(gl, p);
      gl.glEnd();
      continue;
    }
    const std::vector<Point3> points = ArcPoints(arc, 16);
    gl.glBegin(MGL_LINES);
    for (size_t k = 1; k < points.size(); ++k) {
      Vertex(gl, points[k - 1]);
      Vertex(gl, points[k]);
    }
    gl.glEnd();
  }
}

void ReadPlug(const MObject& node, const MObject& attribute, float& value) {
  if (attribute.isNull()) return;
  MPlug plug(node, attribute);
  float read = 0.0f;
  if (!plug.isNull() && plug.getValue(read)) value = read;
}

void ReadPlug(const MObject& node, const MObject& attribute, int& value) {
  if (attribute.isNull()) return;
  MPlug plug(node, attribute);
  int read = 0;
  if (!plug.isNull() && plug.getValue(read)) value = read;
}

void ReadPlug(const MObject& node, const MObject& attribute, Point3& value) {
  if (attribute.isNull()) return;
  MPlug plug(node, attribute);
  if (plug.isNull() || plug.numChildren() != 3) return;
  float read[3] = {0.0f, 0.0f, 0.0f};
  for (unsigned k = 0; k < 3; ++k)
    if (!plug.child(k).getValue(read[k])) return;
  value = {read[0], read[1], read[2]};
}

}  // namespace myo_maya
