#!/usr/bin/env bash
# The cost of checkpoints on a muscle of about 100k vertices (the tube of
# bench/make_tube_scene.sh, 40 frames): the same run without checkpoints and
# with one every 10 frames (the default interval of --resume), then a run
# stopped after its second checkpoint and resumed. Reports the time and
# bytes of one checkpoint, its share of the run, and the time to go on from
# one. Point caches, no viewer page, so that the simulation and the
# checkpoints are what is measured.
# Usage: bash bench/checkpoint_bench.sh [build directory, default build/release] [threads]
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build/release}
threads=${2:-$(nproc)}
myoforge="$build/app/myoforge"
[ -x "$myoforge" ] || { echo "checkpoint_bench.sh: $myoforge not found; run scripts/build.sh release first" >&2; exit 2; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

frames=40
bash bench/make_tube_scene.sh "$work" $frames
points=100002
run() { "$myoforge" run "$work/scene.json" -q -f pc2 --no-viewer --no-progress -t "$threads" "$@"; }

# A figure of summary.json: a key of the summary itself (indented by two
# spaces), or of its "checkpoints" (by four).
figure() { sed -n "s/^  \"$2\": \\([0-9.e+-]*\\).*/\\1/p" "$1/summary.json" | head -n 1; }
checkpoint_figure() { sed -n "s/^    \"$2\": \\([0-9.e+-]*\\).*/\\1/p" "$1/summary.json" | head -n 1; }

run -o "$work/plain"
run -o "$work/checked" --checkpoint-every 10
plain=$(figure "$work/plain" seconds)
checked=$(figure "$work/checked" seconds)
written=$(checkpoint_figure "$work/checked" written)
spent=$(checkpoint_figure "$work/checked" seconds)
bytes=$(checkpoint_figure "$work/checked" bytes)
cmp -s "$work/plain/muscle.pc2" "$work/checked/muscle.pc2" || { echo "checkpoint_bench.sh: checkpoints changed the results" >&2; exit 1; }

# Stopped once its checkpoint of frame 20 is written, then resumed.
"$myoforge" run "$work/scene.json" -q -f pc2 --no-viewer --no-progress -t "$threads" -o "$work/stopped" \
  --checkpoint-every 10 2>/dev/null &
pid=$!
for _ in $(seq 1 6000); do
  [ -f "$work/stopped/checkpoints/checkpoint.0020.myostate" ] && break
  sleep 0.05
done
kill -TERM $pid 2>/dev/null || true
wait $pid 2>/dev/null || true
run -o "$work/stopped" --resume
resumed_from=$(checkpoint_figure "$work/stopped" resumed_from_frame)
resume=$(checkpoint_figure "$work/stopped" resume_seconds)
cmp -s "$work/plain/muscle.pc2" "$work/stopped/muscle.pc2" || { echo "checkpoint_bench.sh: the resumed run differs" >&2; exit 1; }

awk -v points=$points -v frames=$frames -v threads="$threads" -v plain="$plain" -v checked="$checked" \
    -v written="$written" -v spent="$spent" -v bytes="$bytes" -v from="$resumed_from" -v resume="$resume" 'BEGIN {
  per = spent / written
  printf "muscle of %d points, %d frames, %d threads, point caches\n", points, frames, threads
  printf "run without checkpoints: %.2f s; with one every 10 frames (%d written): %.2f s\n", plain, written, checked
  printf "one checkpoint: %.1f ms, %.1f MB (%.0f bytes per point)\n", per * 1000, bytes / 1e6, bytes / points
  printf "share of the run with checkpoints every 10 frames: %.1f%% (%.1f ms per 10 frames of %.0f ms)\n",
         100 * spent / checked, per * 1000, 1000 * (checked - spent) / frames * 10
  printf "going on from the checkpoint of frame %d: %.1f ms to find, check and load it\n", from, resume * 1000
}'
