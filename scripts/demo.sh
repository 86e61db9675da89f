#!/usr/bin/env bash
# Sets everything up and runs the main job: the bundled forearm example (a
# muscle between two animated bones, sliding on the upper arm bone, under a
# skin) through the standalone host. Results go to myoforge-out/forearm.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
scripts/build.sh release
build/release/app/myoforge run examples/forearm/forearm.json -o myoforge-out/forearm
echo "Frames: myoforge-out/forearm/biceps/ and myoforge-out/forearm/skin/ (one OBJ per frame);"
echo "figures per frame: myoforge-out/forearm/figures.csv; summary: myoforge-out/forearm/summary.json"
# The second example: a belly jiggling on a lunging torso that it collides with.
build/release/app/myoforge run examples/jiggle/jiggle.json -o myoforge-out/jiggle
echo "Frames: myoforge-out/jiggle/bellyJiggle/ (docs/shape-deformer.md tells what to look for)"
