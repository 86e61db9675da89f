#pragma once
// Where the values of one evaluation come from. Maya answers from the data
// block, the standalone host from the scene's constant or keyframed values.
// Both hosts then fill a node's frame values through the same readers, so an
// attribute reaches the same field whichever host evaluates the node.

#include <string>

#include "core/math/matrix.h"
#include "core/ramp/ramp_entries.h"

namespace myo_core {

class AttributeSource {
 public:
  virtual ~AttributeSource() = default;

  // A bool, integer, enum, float or time (in seconds) attribute by long
  // name; the table's default when the host holds no value.
  virtual double Number(const std::string& long_name) const = 0;
  // A matrix attribute by long name; identity when nothing is connected.
  virtual Matrix MatrixValue(const std::string& long_name) const = 0;
  // A string attribute by long name; empty when the host holds none.
  virtual std::string Text(const std::string& long_name) const {
    (void)long_name;
    return std::string();
  }
  // The entries of a ramp attribute by long name; none when the host holds none.
  virtual RampEntries Ramp(const std::string& long_name) const {
    (void)long_name;
    return RampEntries();
  }
};

}  // namespace myo_core
