#pragma once
// Per-vertex maps between array attributes and float arrays. A list
// attribute holds one element per geometry index; its child `element` is an
// array of one value (or, for vector maps, one compound) per vertex. Every
// reader sizes its output and fills the range it owns with the default first;
// the default stays wherever no element can be read.

#include <maya/MDataBlock.h>
#include <maya/MObject.h>

#include <cstdint>
#include <vector>

namespace myo_maya {

// From plugs, outside evaluation. out: count values.
void ReadPlugFloats(const MObject& node, uint32_t index, uint32_t count, const MObject& list, const MObject& element,
                    float default_value, std::vector<float>& out);
// One influence's block of a multi-influence map: out sized to total,
// [offset, offset + count) from the elements. Nothing when total is below
// offset + count.
void ReadPlugFloatsAt(const MObject& node, uint32_t index, uint32_t offset, uint32_t count, uint32_t total,
                      const MObject& list, const MObject& element, float default_value, std::vector<float>& out);
// out: count times width values, child j of element i at i * width + j.
void ReadPlugVectors(const MObject& node, uint32_t index, uint32_t count, uint32_t width, const MObject& list,
                     const MObject& element, float default_value, std::vector<float>& out);

// From the data block, inside deform. Integer elements are converted, floats
// taken as they are, doubles narrowed; other types log a debug line and keep
// the defaults.
void ReadDataFloats(MDataBlock& block, uint32_t index, uint32_t count, const MObject& list, const MObject& element,
                    float default_value, std::vector<float>& out);
void ReadDataFloatsAt(MDataBlock& block, uint32_t index, uint32_t offset, uint32_t count, uint32_t total,
                      const MObject& list, const MObject& element, float default_value, std::vector<float>& out);
// The vector map of ReadPlugVectors from the data block; children read as floats.
void ReadDataVectors(MDataBlock& block, uint32_t index, uint32_t count, const std::vector<MObject>& children,
                     const MObject& list, const MObject& element, float default_value, std::vector<float>& out);

// The reverse of ReadDataFloats: element i of list[index].element gets
// values[i], written with the setter of the element attribute's numeric type
// (integers truncated).
void WritePlugFloats(const MObject& node, uint32_t index, const MObject& list,
                     const MObject& element, const std::vector<float>& values);
// Element i's child j gets values[i * children + j].
void WritePlugVectors(const MObject& node, uint32_t index, const MObject& list, const MObject& element,
                      const std::vector<MObject>& children, const std::vector<float>& values);

// Number of elements of list[index].element in the data block; 0 when the
// list has no such element.
uint32_t DataElementCount(MDataBlock& block, uint32_t index, const MObject& list, const MObject& element);
// The same through plugs.
uint32_t PlugElementCount(const MObject& node, uint32_t index, const MObject& list, const MObject& element);

}  // namespace myo_maya
