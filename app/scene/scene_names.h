#pragma once
// Names of transforms, meshes and nodes. Node names become file and folder
// names of the outputs, so every name is one Maya accepts for a node:
// letters, digits and underscores, not starting with a digit; and no two
// names differ only in letter case, which would share their files on a file
// system that ignores case.

#include <cstddef>
#include <map>
#include <string>

#include "app/scene/scene_field.h"

namespace myo_app {

// Longer names would make output file names longer than file systems allow.
constexpr std::size_t kMaxNameLength = 200;

// Refuses a name that breaks the rule above, naming it.
void CheckName(const std::string& name, const Field& field);

// The names of a scene, for the letter-case rule.
class SceneNameSet {
 public:
  // Refuses `name` when it is taken or differs from a taken name only in
  // letter case; else takes it.
  void Add(const std::string& name, const Field& field);

 private:
  std::map<std::string, std::string> by_folded_;  // lower case to the name as given
};

}  // namespace myo_app
