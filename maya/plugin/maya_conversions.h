#pragma once
// Conversions between Maya's value types and the core's plain ones.

#include <maya/MFloatMatrix.h>
#include <maya/MMatrix.h>
#include <maya/MString.h>

#include <string>

#include "core/math/matrix.h"

namespace myo_maya {

inline MString ToMString(const std::string& text) { return MString(text.c_str()); }
inline std::string ToStdString(const MString& text) { return std::string(text.asChar()); }

// Both store rows of row vectors, translation in the last row.
inline myo_core::Matrix ToCoreMatrix(const MMatrix& m) {
  myo_core::Matrix out;
  for (int r = 0; r < 4; ++r)
    for (int c = 0; c < 4; ++c) out[4 * r + c] = static_cast<float>(m(r, c));
  return out;
}

inline myo_core::Matrix ToCoreMatrix(const MFloatMatrix& m) {
  myo_core::Matrix out;
  for (int r = 0; r < 4; ++r)
    for (int c = 0; c < 4; ++c) out[4 * r + c] = m(r, c);
  return out;
}

}  // namespace myo_maya

#include <maya/MPlug.h>
#include <maya/MPointArray.h>

#include <vector>

namespace myo_maya {

// The points of a geometry iterator as the deformer logic takes them: 3N
// doubles.
inline std::vector<double> ToFlatPoints(const MPointArray& points) {
  std::vector<double> flat(3 * static_cast<size_t>(points.length()));
  for (unsigned i = 0; i < points.length(); ++i) {
    flat[3 * i] = points[i].x;
    flat[3 * i + 1] = points[i].y;
    flat[3 * i + 2] = points[i].z;
  }
  return flat;
}

// Writes 3N doubles back over the points they came from.
inline void FromFlatPoints(const std::vector<double>& flat, MPointArray& points) {
  for (unsigned i = 0; i < points.length() && 3 * i + 2 < flat.size(); ++i)
    points[i] = MPoint(flat[3 * i], flat[3 * i + 1], flat[3 * i + 2], 1.0);
}

// MPlug::child takes its attribute by non-const reference.
inline MPlug ChildPlug(const MPlug& plug, const MObject& attribute) {
  MObject child = attribute;
  return plug.child(child);
}

}  // namespace myo_maya
