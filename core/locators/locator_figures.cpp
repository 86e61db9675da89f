#include "core/locators/locator_figures.h"

#include <algorithm>
#include <cmath>

namespace myo_core {

namespace {

Point3 Add(const Point3& a, const Point3& b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
Point3 Sub(const Point3& a, const Point3& b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
Point3 Mul(const Point3& a, double s) { return {a.x * s, a.y * s, a.z * s}; }
double Dot(const Point3& a, const Point3& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
Point3 Cross(const Point3& a, const Point3& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
double Length(const Point3& a) { return std::sqrt(Dot(a, a)); }
// A zero vector stays as it is.
Point3 Normal(const Point3& a) {
  const double length = Length(a);
  return length > 0.0 ? Mul(a, 1.0 / length) : a;
}

// Outlines of a selected figure are this much larger than its body, so that
// the two do not fight in depth.
constexpr double kOutlineGrowth = 1.1;

}  // namespace

void FigureBounds::Expand(const Point3& p) {
  if (empty) {
    min = max = p;
    empty = false;
    return;
  }
  min = {std::min(min.x, p.x), std::min(min.y, p.y), std::min(min.z, p.z)};
  max = {std::max(max.x, p.x), std::max(max.y, p.y), std::max(max.z, p.z)};
}

Rgba StatusColor(FigureStatus status) {
  switch (status) {
    case FigureStatus::kLead: return {0.0f, 1.0f, 0.0f, 1.0f};
    case FigureStatus::kActive: return {1.0f, 1.0f, 1.0f, 1.0f};
    case FigureStatus::kOther: break;
  }
  return {0.029f, 0.029f, 0.186f, 1.0f};
}

bool IsSelected(FigureStatus status) { return status == FigureStatus::kLead || status == FigureStatus::kActive; }

Rgba ActivationColor(float activation) {
  return {activation, (1.0f - activation) * 0.5f, 1.0f - activation, 1.0f};
}

LocatorFigure MarkerFigure(float scale, FigureStatus status) {
  const double s = scale;
  const Point3 p1{-0.575 * s, 0.0, 0.0}, p2{0.0, 1.05 * s, 0.0}, p3{0.575 * s, 0.0, 0.0};
  const Point3 q1{0.35 * s, 0.2 * s, 0.0}, q2{0.0, 0.85 * s, 0.0}, q3{-0.35 * s, 0.2 * s, 0.0};
  Rgba outer{0.08f, 1.0f, 0.96f, 1.0f}, base{0.498f, 0.498f, 0.498f, 1.0f}, inner{0.086f, 0.764f, 0.741f, 1.0f};
  if (IsSelected(status)) outer = base = inner = StatusColor(status);
  LocatorFigure figure;
  figure.lines = {{p1, p2, outer}, {p2, p3, outer}, {p3, p1, base}, {q1, q2, inner}, {q2, q3, inner}};
  return figure;
}

FigureBounds MarkerBounds(float scale) {
  FigureBounds bounds;
  bounds.Expand({-0.575 * scale, 1.05 * scale, 0.0});
  bounds.Expand({0.575 * scale, 0.0, 0.0});
  return bounds;
}

LocatorFigure DistanceFigure(const Point3& start, const Point3& end, float scale, float activation,
                             FigureStatus status) {
  const Point3 v = Sub(end, start);
  const Point3 n = Normal(v);
  const Point3 world_up{0.0, 1.0, 0.0};
  Point3 right{0.0, 0.0, 1.0};
  Point3 up{0.0, 1.0, 0.0};
  // Along the world's up axis the cross product vanishes: keep a fixed frame.
  if (std::fabs(Dot(n, world_up)) < 0.99999) {
    right = Normal(Cross(n, world_up));
    up = Cross(right, n);
  } else {
    up = {1.0, 0.0, 0.0};
  }
  const Point3 center = Add(start, Mul(v, 0.5));
  const double w = static_cast<double>(scale) * 0.1;
  const double h = Length(v) * 0.25;
  const Rgba status_color = StatusColor(status);

  LocatorFigure figure;
  figure.lines.push_back({start, end, status_color});
  if (IsSelected(status))
    figure.boxes.push_back(
        FigureBox{center, up, right, w * kOutlineGrowth, w * kOutlineGrowth, h * kOutlineGrowth, false, status_color});
  figure.boxes.push_back(FigureBox{center, up, right, w, w, h, true, ActivationColor(activation)});
  return figure;
}

LocatorFigure PositionFigure(const Point3& position, float scale, float activation, FigureStatus status) {
  const double w = static_cast<double>(scale) * 0.5;
  const Point3 up{0.0, 1.0, 0.0}, right{1.0, 0.0, 0.0};
  const double outline = w * kOutlineGrowth;
  LocatorFigure figure;
  if (IsSelected(status))
    figure.boxes.push_back(FigureBox{position, up, right, outline, outline, outline, false, StatusColor(status)});
  figure.boxes.push_back(FigureBox{position, up, right, w, w, w, true, ActivationColor(activation)});
  return figure;
}

LocatorFigure RotationFigure(const Point3& start, const Point3& mid, const Point3& end, float scale,
                             float activation, FigureStatus status, RememberedNormal& remembered) {
  Point3 a = Sub(start, mid);
  Point3 b = Sub(end, mid);
  const double radius = std::min(Length(a), Length(b)) * 0.5 * static_cast<double>(scale);
  a = Normal(a);
  b = Normal(b);
  Point3 m = Normal(Cross(a, b));
  if (Length(m) < 1e-6) {
    // Legs in one line span no plane: draw in the last one, unless that
    // plane's normal lies along a leg itself.
    const Point3 last{remembered.x, remembered.y, remembered.z};
    if (std::fabs(Dot(last, a)) > 0.999999 || std::fabs(Dot(last, b)) > 0.999999)
      remembered = {remembered.y, remembered.x, remembered.z};
    m = {remembered.x, remembered.y, remembered.z};
  } else {
    remembered = {static_cast<float>(m.x), static_cast<float>(m.y), static_cast<float>(m.z)};
  }
  const Rgba status_color = StatusColor(status);
  LocatorFigure figure;
  figure.lines.push_back({start, mid, status_color});
  figure.lines.push_back({end, mid, status_color});
  if (IsSelected(status)) figure.arcs.push_back(FigureArc{mid, a, b, m, radius * kOutlineGrowth, false, status_color});
  figure.arcs.push_back(FigureArc{mid, a, b, m, radius, true, ActivationColor(activation)});
  return figure;
}

std::array<Point3, 8> BoxCorners(const FigureBox& box) {
  const Point3 depth = Cross(box.right, box.up);
  std::array<Point3, 8> corners;
  for (int k = 0; k < 8; ++k) {
    const double sx = (k & 1) ? box.scale_x : -box.scale_x;
    const double sy = (k & 2) ? box.scale_y : -box.scale_y;
    const double sz = (k & 4) ? box.scale_z : -box.scale_z;
    corners[k] = Add(Add(Add(box.center, Mul(box.right, sx)), Mul(box.up, sy)), Mul(depth, sz));
  }
  return corners;
}

std::array<Point3, 4> WedgeStrip(const FigureArc& arc) {
  const Point3 a = Normal(arc.start), b = Normal(arc.end);
  const Point3 middle = ArcPoints(arc, 2)[1];
  return {Add(arc.center, Mul(a, arc.radius)), arc.center, middle, Add(arc.center, Mul(b, arc.radius))};
}

std::vector<Point3> ArcPoints(const FigureArc& arc, int segments) {
  segments = std::max(segments, 1);
  const Point3 a = Normal(arc.start), b = Normal(arc.end);
  const double cosine = std::min(1.0, std::max(-1.0, Dot(a, b)));
  const double angle = std::acos(cosine);
  // The direction in the arc's plane at a right angle to the start, towards
  // the end; for opposite legs it comes from the normal.
  Point3 side = Normal(Sub(b, Mul(a, cosine)));
  if (Length(side) < 1e-6) side = Normal(Cross(arc.normal, a));
  std::vector<Point3> points;
  for (int k = 0; k <= segments; ++k) {
    const double t = angle * k / segments;
    const Point3 direction = Add(Mul(a, std::cos(t)), Mul(side, std::sin(t)));
    points.push_back(Add(arc.center, Mul(direction, arc.radius)));
  }
  return points;
}

FigureBounds BoundsOf(const LocatorFigure& figure, bool with_outline) {
  FigureBounds bounds;
  for (const FigureLine& line : figure.lines) {
    bounds.Expand(line.from);
    bounds.Expand(line.to);
  }
  for (const FigureBox& box : figure.boxes) {
    if (!box.filled && !with_outline) continue;
    for (const Point3& corner : BoxCorners(box)) bounds.Expand(corner);
  }
  for (const FigureArc& arc : figure.arcs) {
    if (!arc.filled && !with_outline) continue;
    bounds.Expand(arc.center);
    for (const Point3& p : ArcPoints(arc, 2)) bounds.Expand(p);
  }
  return bounds;
}

float ChosenActivation(int draw_output, const std::vector<float>& activations) {
  if (draw_output < 0 || static_cast<size_t>(draw_output) >= activations.size()) return 0.0f;
  return activations[static_cast<size_t>(draw_output)];
}

}  // namespace myo_core
