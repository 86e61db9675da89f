// The locators' figures as geometry: the frame of the distance box along
// any direction and at scale 0, the arc's plane when the legs line up, and
// the bounds with and without the outline of a selected figure.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "core/locators/locator_figures.h"

namespace {

using myo_core::FigureBounds;
using myo_core::FigureBox;
using myo_core::FigureStatus;
using myo_core::LocatorFigure;
using myo_core::Point3;
using myo_core::RememberedNormal;

double Dot(const Point3& a, const Point3& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

void ExpectPoint(const Point3& p, double x, double y, double z) {
  EXPECT_NEAR(p.x, x, 1e-12);
  EXPECT_NEAR(p.y, y, 1e-12);
  EXPECT_NEAR(p.z, z, 1e-12);
}

// The extent of a box's corners along `axis`.
double ExtentAlong(const FigureBox& box, const Point3& axis) {
  double lo = 1e300, hi = -1e300;
  for (const Point3& c : BoxCorners(box)) {
    lo = std::min(lo, Dot(c, axis));
    hi = std::max(hi, Dot(c, axis));
  }
  return hi - lo;
}

TEST(LocatorFigureTest, DistanceBoxLiesOnTheLineInEveryDirectionAndShrinksToAPoint) {
  const Point3 start{1.0, -2.0, 0.5};
  for (const Point3& d : {Point3{0, 2, 0}, Point3{0, -3, 0}, Point3{4, 0, 0}, Point3{1, 2, -2}, Point3{0, 0, -1}}) {
    const Point3 end{start.x + d.x, start.y + d.y, start.z + d.z};
    const LocatorFigure figure = DistanceFigure(start, end, 2.0f, 0.0f, FigureStatus::kOther);
    ASSERT_EQ(figure.boxes.size(), 1u);  // no outline when not selected
    const FigureBox& box = figure.boxes[0];
    ExpectPoint(box.center, start.x + d.x / 2, start.y + d.y / 2, start.z + d.z / 2);
    // A frame of unit axes at right angles to each other and to the line.
    const double length = std::sqrt(Dot(d, d));
    const Point3 n{d.x / length, d.y / length, d.z / length};
    EXPECT_NEAR(Dot(box.up, box.up), 1.0, 1e-9);
    EXPECT_NEAR(Dot(box.right, box.right), 1.0, 1e-9);
    EXPECT_NEAR(Dot(box.up, box.right), 0.0, 1e-9);
    EXPECT_NEAR(Dot(box.up, n), 0.0, 1e-9);
    EXPECT_NEAR(Dot(box.right, n), 0.0, 1e-9);
    EXPECT_NEAR(ExtentAlong(box, n), length / 2, 1e-9);  // half the line long
  }
  // Straight up, the frame is the fixed one: up along x, right along z.
  const FigureBox up = DistanceFigure({0, 0, 0}, {0, 2, 0}, 1.0f, 0.0f, FigureStatus::kOther).boxes[0];
  ExpectPoint(up.up, 1, 0, 0);
  ExpectPoint(up.right, 0, 0, 1);
  // Start on end, and scale 0, shrink the boxes to a point without NaN.
  for (const FigureBox& box : DistanceFigure({1, 1, 1}, {1, 1, 1}, 1.0f, 0.5f, FigureStatus::kLead).boxes)
    for (const Point3& c : BoxCorners(box)) ExpectPoint(c, 1, 1, 1);
  for (const FigureBox& box : PositionFigure({3, 4, 5}, 0.0f, 0.0f, FigureStatus::kLead).boxes)
    for (const Point3& c : BoxCorners(box)) ExpectPoint(c, 3, 4, 5);
}

TEST(RotationFigureTest, CollinearLegsKeepThePlaneOfTheLastGoodFrame) {
  RememberedNormal normal;
  // A good frame in the x-z plane.
  const LocatorFigure bent = RotationFigure({2, 0, 0}, {0, 0, 0}, {0, 0, 3}, 1.0f, 0.0f, FigureStatus::kOther, normal);
  ASSERT_EQ(bent.arcs.size(), 1u);
  ExpectPoint(bent.arcs[0].normal, 0, -1, 0);
  EXPECT_NEAR(bent.arcs[0].radius, 1.0, 1e-12);  // half the shorter leg
  // Straightened and folded legs: the arc stays in that plane.
  for (const Point3& end : {Point3{-4, 0, 0}, Point3{5, 0, 0}}) {
    const LocatorFigure line = RotationFigure({2, 0, 0}, {0, 0, 0}, end, 1.0f, 0.0f, FigureStatus::kOther, normal);
    ExpectPoint(line.arcs[0].normal, 0, -1, 0);
  }
  // Legs along the remembered normal itself: it turns to another axis, and
  // stays there.
  const LocatorFigure along =
      RotationFigure({0, 3, 0}, {0, 0, 0}, {0, -1, 0}, 1.0f, 0.0f, FigureStatus::kOther, normal);
  ExpectPoint(along.arcs[0].normal, -1, 0, 0);
  EXPECT_EQ(normal.x, -1.0f);
  EXPECT_EQ(normal.y, 0.0f);
}

TEST(LocatorFigureTest, BoundsCoverTheBodyAndLeaveTheOutlineOutWhenAsked) {
  const LocatorFigure figure = PositionFigure({1, 2, 3}, 2.0f, 0.0f, FigureStatus::kLead);
  const FigureBounds body = BoundsOf(figure, false), all = BoundsOf(figure, true);
  ExpectPoint(body.min, 0, 1, 2);
  ExpectPoint(body.max, 2, 3, 4);
  EXPECT_NEAR(all.max.x, 2.1, 1e-12);
  const FigureBounds marker = myo_core::MarkerBounds(2.0f);
  ExpectPoint(marker.min, -1.15, 0, 0);
  ExpectPoint(marker.max, 1.15, 2.1, 0);
  // A right-angled wedge reaches its radius on both legs and between them.
  RememberedNormal normal;
  const LocatorFigure right_angle =
      RotationFigure({2, 0, 0}, {0, 0, 0}, {0, 2, 0}, 1.0f, 0.0f, FigureStatus::kOther, normal);
  const FigureBounds wedge = BoundsOf(right_angle, false);
  ExpectPoint(wedge.min, 0, 0, 0);
  ExpectPoint(wedge.max, 2, 2, 0);
}

}  // namespace
