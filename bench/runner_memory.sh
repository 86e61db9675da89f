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

rings=400 segments=250
awk -v rings=$rings -v segments=$segments 'BEGIN {
  pi = 3.14159265358979
  for (r = 0; r < rings; r++) {
    t = r / (rings - 1); x = 40 * t; radius = 0.5 + 3 * sin(pi * t)
    for (s = 0; s < segments; s++) { a = 2 * pi * s / segments; printf "v %.6f %.6f %.6f\n", x, radius * cos(a), radius * sin(a) }
  }
  printf "v -0.4 0 0\nv 40.4 0 0\n"
  for (r = 0; r < rings - 1; r++) for (s = 0; s < segments; s++) {
    a = r * segments + s + 1; b = r * segments + (s + 1) % segments + 1
    printf "f %d %d %d %d\n", a, b, b + segments, a + segments
  }
  first = rings * segments + 1; last = first + 1; top = (rings - 1) * segments
  for (s = 0; s < segments; s++) {
    printf "f %d %d %d\n", first, (s + 1) % segments + 1, s + 1
    printf "f %d %d %d\n", last, top + s + 1, top + (s + 1) % segments + 1
  }
}' > "$work/muscle.obj"
points=$((rings * segments + 2))
awk -v rings=$rings -v segments=$segments -v end=0 'BEGIN {
  for (i = 0; i < rings * segments; i++) print (int(i / segments) < 8 ? 1 : 0); print 1; print 0 }' > "$work/origin.txt"
awk -v rings=$rings -v segments=$segments 'BEGIN {
  for (i = 0; i < rings * segments; i++) print (int(i / segments) >= rings - 8 ? 1 : 0); print 0; print 1 }' > "$work/insertion.txt"

cat > "$work/scene.json" <<JSON
{
  "timeline": {"start": 1, "end": 24, "fps": 24},
  "transforms": [
    {"name": "origin", "keys": [{"frame": 1}]},
    {"name": "insertion", "keys": [{"frame": 1, "translate": [40, 0, 0]},
                                   {"frame": 24, "translate": [38, 4, 0], "rotate": [0, 0, 20]}]}
  ],
  "meshes": [{"name": "muscleMesh", "file": "muscle.obj"}],
  "nodes": [{
    "name": "muscle", "type": "MyoMuscle", "input": "muscleMesh",
    "attributes": {"iterations": 10, "activation": {"keys": [[1, 0], [24, 1]]}},
    "connections": {"attachmentConstraintsList[0].attachmentMatrix": "origin",
                    "attachmentConstraintsList[1].attachmentMatrix": "insertion"},
    "maps": [{"name": "attachmentConstraints", "set": 0, "file": "origin.txt"},
             {"name": "attachmentConstraints", "set": 1, "file": "insertion.txt"},
             {"name": "shapePreservation", "value": 0.5}]
  }]
}
JSON

"$myoforge" run "$work/scene.json" -q -f pc2 -o "$work/out"
awk -v points=$points '
  /"peak_memory_mb"/ { gsub(/[,]/, ""); memory = $2 }
  /"seconds"/ { gsub(/[,]/, ""); seconds = $2 }
  /"mean_evaluate_ms"/ { gsub(/[,]/, ""); step = $2 }
  END { printf "points %d, 24 frames: peak memory %.1f MB (target 300), run %.1f s, mean evaluation %.1f ms\n", points, memory, seconds, step }
' "$work/out/summary.json"
