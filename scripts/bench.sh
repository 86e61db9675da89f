#!/usr/bin/env bash
# Builds the release configuration and runs the benchmarks. Extra arguments
# go to the benchmark binary (for example --benchmark_filter=MuscleStep).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
scripts/build.sh release
build/release/bench/myo_bench --benchmark_counters_tabular=true "$@"
