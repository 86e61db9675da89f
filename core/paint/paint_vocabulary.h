#pragma once
// The words of the paint context: which maps a deformer type offers to an
// external brush, which of them hold one block per influence, and the map a
// name stands for.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace myo_core {

// The deformer types a paint context can be set to, in name order. The
// shape and merge deformers are keys with no maps: they can be selected but
// are painted with the host's own tool.
const std::vector<std::string>& PaintDeformerTypes();

// The names of the maps `deformer_type` offers, in name order, or null when
// the type is not a key.
const std::vector<std::string>* PaintableAttributeNames(const std::string& deformer_type);

// The names of its multi-influence maps, or null when the type has none.
const std::vector<std::string>* MultiInfluenceAttributeNames(const std::string& deformer_type);

// The WeightsType value whose name is exactly `name`.
std::optional<int32_t> WeightsTypeByName(const std::string& name);

}  // namespace myo_core
