#!/usr/bin/env bash
# Configures and builds one configuration: release (default), debug or
# sanitize; everything, or only the targets named after it
# (scripts/build.sh release myoforge).
set -euo pipefail
cd "$(dirname "$0")/.."
config=${1:-release}
shift || true
case "$config" in
  release)  args=(-DCMAKE_BUILD_TYPE=Release) ;;
  debug)    args=(-DCMAKE_BUILD_TYPE=Debug) ;;
  sanitize) args=(-DCMAKE_BUILD_TYPE=RelWithDebInfo -DMYO_SANITIZE=ON -DMYO_BUILD_BENCHMARKS=OFF) ;;
  *) echo "build.sh: unknown configuration '$config' (release, debug or sanitize)" >&2; exit 2 ;;
esac
targets=()
for target in "$@"; do targets+=(--target "$target"); done
cmake -S . -B "build/$config" -G Ninja "${args[@]}" >/dev/null
cmake --build "build/$config" -j "$(nproc)" "${targets[@]}"
