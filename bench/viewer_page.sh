#!/usr/bin/env bash
# Size of viewer.html for a muscle of about 100k vertices over 100 frames
# (the tube of bench/runner_memory.sh), the run's peak memory and time with
# the page, and, where Chromium is installed, the time the page takes to
# load and pass its self-check.
# Usage: bash bench/viewer_page.sh [build directory, default build/release] [frames, default 100]
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build/release}
frames=${2:-100}
myoforge="$build/app/myoforge"
[ -x "$myoforge" ] || { echo "viewer_page.sh: $myoforge not found; run scripts/build.sh release myoforge first" >&2; exit 2; }
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

"$myoforge" run "$work/scene.json" -q -f pc2 -o "$work/out"
seconds=$(sed -n 's/^  "seconds": \([0-9.]*\).*/\1/p' "$work/out/summary.json")
peak_mb=$(sed -n 's/^  "peak_memory_mb": \([0-9.]*\).*/\1/p' "$work/out/summary.json")
bytes=$(stat -c %s "$work/out/viewer.html")
echo "points: $points, frames: $frames"
echo "viewer.html: $bytes bytes ($((bytes / 1048576)) MB), $((bytes / frames / points)) bytes per point and frame"
echo "run with the page: $seconds s, peak memory $peak_mb MB"
browser=$(command -v chromium || true)
if [ -n "$browser" ]; then
  start=$(date +%s%N)
  timeout 600 "$browser" --headless --no-sandbox --use-angle=swiftshader --enable-unsafe-swiftshader \
    --disable-background-networking --disable-component-update --no-first-run --user-data-dir="$work/profile" \
    --window-size=800,600 --virtual-time-budget=60000 --dump-dom "file://$work/out/viewer.html#check" 2>/dev/null |
    grep -o 'viewer-check: [^<]*' | head -n 1
  echo "Chromium loaded and checked the page in $((($(date +%s%N) - start) / 1000000)) ms"
fi
