#pragma once
// The figures the four locators draw, as plain geometry: lines, boxes and
// arcs with their colours, in drawing order. A host hands them to its
// viewport as they are; the legacy path draws boxes from their corners.
// Points are doubles, as the host's points are; colours are floats.

#include <array>
#include <vector>

namespace myo_core {

struct Point3 {
  double x = 0.0, y = 0.0, z = 0.0;
};

struct Rgba {
  float r = 0.0f, g = 0.0f, b = 0.0f, a = 1.0f;
};

// How a figure is shown: selected (lead or active) or not.
enum class FigureStatus { kLead, kActive, kOther };

struct FigureLine {
  Point3 from, to;
  Rgba color;
};

// A box round `center` whose half extents are `scale_x` along `right`,
// `scale_y` along `up` and `scale_z` along the third axis, right cross up.
struct FigureBox {
  Point3 center, up, right;
  double scale_x = 0.0, scale_y = 0.0, scale_z = 0.0;
  bool filled = false;
  Rgba color;
};

// An arc round `center` from direction `start` to direction `end`, in the
// plane of `normal`; filled it is a wedge.
struct FigureArc {
  Point3 center, start, end, normal;
  double radius = 0.0;
  bool filled = false;
  Rgba color;
};

// One locator's figure: lines first, then boxes, then arcs, each in order.
struct LocatorFigure {
  std::vector<FigureLine> lines;
  std::vector<FigureBox> boxes;
  std::vector<FigureArc> arcs;
};

// The axis-aligned box round a figure; empty while nothing expanded it.
struct FigureBounds {
  Point3 min, max;
  bool empty = true;
  void Expand(const Point3& p);
};

// Line width of every figure, in pixels.
constexpr float kFigureLineWidth = 2.0f;

// Green for the lead, white for the active, dark blue for anything else.
Rgba StatusColor(FigureStatus status);
bool IsSelected(FigureStatus status);
// Azure at 0 to red at 1, not clamped.
Rgba ActivationColor(float activation);

// The plain marker: an outer triangle and an inner chevron in the plane z = 0.
LocatorFigure MarkerFigure(float scale, FigureStatus status);
// The marker's fixed box: (-0.575 s, 0, 0) to (0.575 s, 1.05 s, 0).
FigureBounds MarkerBounds(float scale);

// A line from `start` to `end` and a box on its middle, as long as half the
// line and 0.2 `scale` wide.
LocatorFigure DistanceFigure(const Point3& start, const Point3& end, float scale, float activation,
                             FigureStatus status);

// A cube of half size 0.5 `scale` at `position`.
LocatorFigure PositionFigure(const Point3& position, float scale, float activation, FigureStatus status);

// The normal the rotation figure last drew its arc about, kept so that legs
// in one line keep the plane of the last frame where they were not.
struct RememberedNormal {
  float x = 1.0f, y = 0.0f, z = 0.0f;
};

// The legs from `mid` to `start` and to `end`, and an arc between them of
// radius half the shorter leg times `scale`. Updates `normal`.
LocatorFigure RotationFigure(const Point3& start, const Point3& mid, const Point3& end, float scale,
                             float activation, FigureStatus status, RememberedNormal& normal);

// The eight corners of a box: bit 0 of the index picks the side along
// right, bit 1 along up, bit 2 along the third axis.
std::array<Point3, 8> BoxCorners(const FigureBox& box);

// The legacy viewport's wedge of a filled arc: a triangle strip of the end
// of `start`, the centre, the middle of the arc and the end of `end`, the
// three outer points at the radius.
std::array<Point3, 4> WedgeStrip(const FigureArc& arc);

// `segments` + 1 points along an arc from its start to its end direction.
std::vector<Point3> ArcPoints(const FigureArc& arc, int segments);

// The box round the corner points of a figure: line ends, box corners, and
// an arc's centre with its end and middle points at its radius. The outline
// of a selected figure may be left out.
FigureBounds BoundsOf(const LocatorFigure& figure, bool with_outline);

// Which activation colours a figure: the input at `draw_output` among
// `activations`, and 0 for any other value of `draw_output`.
float ChosenActivation(int draw_output, const std::vector<float>& activations);

}  // namespace myo_core
