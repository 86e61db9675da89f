#!/usr/bin/env bash
# Sets everything up and runs the main job: the bundled forearm example (a
# muscle between two animated bones, sliding on the upper arm bone, under a
# skin) through the standalone host. Results go to myoforge-out/forearm.
# Only the myoforge command is built; scripts/test.sh and scripts/bench.sh
# build the tests and benchmarks.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
scripts/build.sh release myoforge
# The second example first: a belly jiggling on a lunging torso that it collides with.
build/release/app/myoforge run examples/jiggle/jiggle.json -o myoforge-out/jiggle -q
echo "Jiggle example: myoforge-out/jiggle/ (docs/shape-deformer.md tells what to look for)"
echo "Frames: myoforge-out/forearm/biceps/ and myoforge-out/forearm/skin/ (one OBJ per frame);"
echo "figures per frame: myoforge-out/forearm/figures.csv; summary: myoforge-out/forearm/summary.json"
# Ends with the run in short and where its viewer page is.
build/release/app/myoforge run examples/forearm/forearm.json -o myoforge-out/forearm
