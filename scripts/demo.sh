#!/usr/bin/env bash
# Sets everything up and runs the main job on the bundled example muscle.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
scripts/build.sh release
build/release/demo/myo_demo examples/spindle_muscle.obj 48
