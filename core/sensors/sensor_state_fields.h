#pragma once
// Field lists of what the sensors remember between evaluations, for saving
// and restoring a node's state (core/state/state_archive.h).

#include "core/sensors/sensor_evaluation.h"
#include "core/state/state_archive.h"

namespace myo_core {

template <class Archive>
void ScalarSensorStateFields(Archive& a, ArchiveRecord<Archive, ScalarSensorState>& s) {
  a.Value(s.previous_time_);
  a.Value(s.previous_value_);
  a.Value(s.previous_velocity_);
}

template <class Archive>
void PositionSensorStateFields(Archive& a, ArchiveRecord<Archive, PositionSensorState>& s) {
  a.Value(s.previous_time_);
  a.Value(s.previous_position_);
  a.Value(s.previous_velocity_);
}

template <class Archive>
void SensorOutputValuesFields(Archive& a, ArchiveRecord<Archive, SensorOutputValues>& s) {
  a.Value(s.value);
  a.Value(s.velocity);
  a.Value(s.acceleration);
}

}  // namespace myo_core
