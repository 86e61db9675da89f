#pragma once
// The discs of a debug record (7 floats each: position, normal, value) as
// the two viewports draw them: only discs whose value is not below 0.01,
// lifted 0.01 along the normal, of radius 0.2. The legacy viewport draws
// each as a fan in the disc's own frame, turned from the z axis onto the
// normal.

#include <array>
#include <cstddef>
#include <vector>

#include "core/math/vec3.h"

namespace myo_core {

constexpr std::size_t kDiscFloats = 7;
constexpr float kSmallestDrawnDisc = 0.01f;
constexpr float kDiscLift = 0.01f;
constexpr float kDiscRadius = 0.2f;
constexpr int kDiscRimPoints = 17;

struct DebugDisc {
  Vec3 centre;  // position lifted along the normal
  Vec3 normal;
  float value;
};

// Whether a disc of this value is drawn: 0.01 and above; never a value that
// is not a number.
inline bool IsDiscDrawn(float value) { return value >= kSmallestDrawnDisc; }

// The drawn discs of `discs`, in order; a trailing partial disc is ignored.
std::vector<DebugDisc> DrawnDiscs(const std::vector<float>& discs);

// The legacy fan in the disc's frame: the centre (0, 0, 0.01), then 17 rim
// points at angles i times 0.3926991 for i from 0 to 16, radius 0.2, z 0.01.
std::array<Vec3, kDiscRimPoints + 1> DiscFan();

// The rotation that takes the z axis onto `normal`: an axis and an angle in
// degrees (acos of the clamped dot product times 57.295776). A normal along
// z turns about the x axis.
struct DiscRotation {
  Vec3 axis;
  float degrees;
};
DiscRotation RotationOntoNormal(Vec3 normal);

}  // namespace myo_core
