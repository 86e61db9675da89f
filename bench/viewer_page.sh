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

bash bench/make_tube_scene.sh "$work" $frames
points=100002

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
