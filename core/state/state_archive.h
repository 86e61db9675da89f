#pragma once
// The field list of a record is written once, as a function template over
// the archive, and serves both directions:
//
//   template <class Archive>
//   void Fields(Archive& archive, ArchiveRecord<Archive, Sensor>& sensor) {
//     archive.Value(sensor.previous_time_);
//     archive.Array(sensor.history_);
//   }
//
// With a StateWriter the record is const and its fields are appended; with
// a StateReader it is mutable and its fields are read back in the same
// order. A field missing from a list is missing from both, so a round trip
// cannot hide a save that the load reads differently.

#include <cstddef>
#include <type_traits>

#include "core/state/state_reader.h"
#include "core/state/state_writer.h"

namespace myo_core {

template <class Archive, class T>
using ArchiveRecord = std::conditional_t<Archive::kLoading, T, const T>;

// An object that saves and restores itself (SaveState, LoadState), such as
// a class with private state.
template <class Archive, class T>
void ObjectState(Archive& archive, T& object) {
  if constexpr (Archive::kLoading) {
    object.LoadState(archive);
  } else {
    object.SaveState(archive);
  }
}

// A fixed array of plain values, element by element.
template <class Archive, class T, std::size_t N>
void FixedArray(Archive& archive, T (&values)[N]) {
  for (T& value : values) archive.Value(value);
}

}  // namespace myo_core
