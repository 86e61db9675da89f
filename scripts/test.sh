#!/usr/bin/env bash
# Builds and runs every test: the release build, then the whole suite again
# under AddressSanitizer and UndefinedBehaviorSanitizer.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
scripts/build.sh release
ctest --test-dir build/release --output-on-failure -j "$(nproc)"
scripts/build.sh sanitize
ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 \
  ctest --test-dir build/sanitize --output-on-failure -j "$(nproc)"
