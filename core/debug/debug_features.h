#pragma once
// The values of "debugFeature": one numbering across the node types, each
// of which offers a subset.

#include <cstdint>

namespace myo_core {

enum DebugFeature : int32_t {
  kDebugAttachmentsToGeometry = 1,
  kDebugAttachmentsToTransform = 2,
  kDebugHardConstraints = 3,
  kDebugFibers = 4,
  kDebugShapePreservation = 5,
  kDebugSlideCollision = 6,
  kDebugSlideConstraints = 7,
  kDebugSlideOnGeometry = 8,
  kDebugSlideOnSegment = 9,
  kDebugSlidingSurface = 10,
  kDebugSoftConstraints = 11,
};

}  // namespace myo_core
