#!/usr/bin/env bash
# Writes the benchmarks' large muscle scene into a folder: a capped tube of
# 400 rings of 250 points (100,002 vertices) attached at both ends to two
# transforms, one of which turns while the muscle activates over the frames.
# Usage: bash bench/make_tube_scene.sh DIR FRAMES   (writes DIR/scene.json and its files)
set -euo pipefail
dir=$1
frames=$2
mkdir -p "$dir"

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
}' > "$dir/muscle.obj"
awk -v rings=$rings -v segments=$segments 'BEGIN {
  for (i = 0; i < rings * segments; i++) print (int(i / segments) < 8 ? 1 : 0); print 1; print 0 }' > "$dir/origin.txt"
awk -v rings=$rings -v segments=$segments 'BEGIN {
  for (i = 0; i < rings * segments; i++) print (int(i / segments) >= rings - 8 ? 1 : 0); print 0; print 1 }' > "$dir/insertion.txt"

cat > "$dir/scene.json" <<JSON
{
  "timeline": {"start": 1, "end": $frames, "fps": 24},
  "transforms": [
    {"name": "origin", "keys": [{"frame": 1}]},
    {"name": "insertion", "keys": [{"frame": 1, "translate": [40, 0, 0]},
                                   {"frame": $frames, "translate": [38, 4, 0], "rotate": [0, 0, 20]}]}
  ],
  "meshes": [{"name": "muscleMesh", "file": "muscle.obj"}],
  "nodes": [{
    "name": "muscle", "type": "MyoMuscle", "input": "muscleMesh",
    "attributes": {"iterations": 10, "activation": {"keys": [[1, 0], [$frames, 1]]}},
    "connections": {"attachmentConstraintsList[0].attachmentMatrix": "origin",
                    "attachmentConstraintsList[1].attachmentMatrix": "insertion"},
    "maps": [{"name": "attachmentConstraints", "set": 0, "file": "origin.txt"},
             {"name": "attachmentConstraints", "set": 1, "file": "insertion.txt"},
             {"name": "shapePreservation", "value": 0.5}]
  }]
}
JSON
