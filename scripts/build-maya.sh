#!/usr/bin/env bash
# Builds the Maya plug-in into build/maya: MAYA_LOCATION (default
# $HOME/maya-devkit) must hold include/maya. The module folder to add to
# MAYA_MODULE_PATH is build/maya/module/MyoForge.
set -euo pipefail

root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
maya_location="${MAYA_LOCATION:-$HOME/maya-devkit}"

if [ ! -d "$maya_location/include/maya" ]; then
  echo "build-maya: no Maya headers at $maya_location/include/maya; set MAYA_LOCATION to a Maya installation or devkit." >&2
  exit 1
fi

cmake -S "$root" -B "$root/build/maya" -G Ninja -DCMAKE_BUILD_TYPE=Release \
  -DMAYA_LOCATION="$maya_location" -DMYO_BUILD_TESTS=OFF -DMYO_BUILD_BENCHMARKS=OFF
cmake --build "$root/build/maya" --target myo_maya_plugin
echo "Module folder: $root/build/maya/module/MyoForge"
