#pragma once
// Reads a scene file (JSON) with the meshes and map files it names, and
// checks all of it against the node types' attribute tables before anything
// runs. The first fault found is reported as one line naming the file, the
// line or field, and what is wrong.

#include <string>

#include "app/scene/scene.h"

namespace myo_app {

// False with `error` set, and `scene` untouched, when the scene is not valid.
bool ReadScene(const std::string& path, Scene& scene, std::string& error);

}  // namespace myo_app
