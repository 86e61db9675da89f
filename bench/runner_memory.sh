#!/usr/bin/env bash
# Peak memory and time of a myoforge run on a muscle of about 100k vertices:
# a capped tube of 400 rings of 250 points, attached at both ends to two
# transforms, one of which turns, over 24 frames. Target: at most 300 MB.
# Usage: bash bench/runner_memory.sh [build directory, default build/release]
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build/release}
myoforge="$build/app/myoforge"
[ -x "$myoforge" ] || { echo "runner_memory.sh: $myoforge not found; run scripts/build.sh release first" >&2; exit 2; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

bash bench/make_tube_scene.sh "$work" 24
points=100002

"$myoforge" run "$work/scene.json" -q -f pc2 -o "$work/out"
awk -v points=$points '
  /"peak_memory_mb"/ { gsub(/[,]/, ""); memory = $2 }
  /"seconds"/ { gsub(/[,]/, ""); seconds = $2 }
  /"mean_evaluate_ms"/ { gsub(/[,]/, ""); step = $2 }
  END { printf "points %d, 24 frames: peak memory %.1f MB (target 300), run %.1f s, mean evaluation %.1f ms\n", points, memory, seconds, step }
' "$work/out/summary.json"
