#!/usr/bin/env bash
# Builds and runs every test: the release build, then the whole suite again
# under AddressSanitizer and UndefinedBehaviorSanitizer. Chromium is
# installed for the test that opens viewer.html in a browser. Ends with the
# counts of both configurations on one line, "N passed, N failed", and
# exits non-zero when a test failed in either.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh chromium slurm-wlm munge
logs=$(mktemp -d)
trap 'rm -rf "$logs"' EXIT
status=0

# ctest's own summary, "NN% tests passed, F tests failed out of T", and its
# list of skipped tests give the counts of one configuration.
count() {
  local log=$1 total failed skipped
  total=$(sed -n 's/.*tests failed out of \([0-9]*\).*/\1/p' "$log" | tail -n 1)
  failed=$(sed -n 's/.* \([0-9]*\) tests failed out of .*/\1/p' "$log" | tail -n 1)
  skipped=$(grep -c '(Skipped)' "$log" || true)
  total=${total:-0} failed=${failed:-0}
  # A configuration whose tests did not run at all counts as one failure.
  if [ "$total" -eq 0 ]; then echo "0 1 0"; return; fi
  echo "$((total - failed - skipped)) $failed $skipped"
}

scripts/build.sh release
ctest --test-dir build/release --output-on-failure -j "$(nproc)" 2>&1 | tee "$logs/release.log" || status=1
scripts/build.sh sanitize
ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 \
  ctest --test-dir build/sanitize --output-on-failure -j "$(nproc)" 2>&1 | tee "$logs/sanitize.log" || status=1

read -r release_passed release_failed release_skipped < <(count "$logs/release.log")
read -r sanitize_passed sanitize_failed sanitize_skipped < <(count "$logs/sanitize.log")
echo
echo "release: $release_passed passed, $release_failed failed, $release_skipped skipped"
echo "sanitize: $sanitize_passed passed, $sanitize_failed failed, $sanitize_skipped skipped"
failed=$((release_failed + sanitize_failed))
[ "$failed" -eq 0 ] || status=1
echo "$((release_passed + sanitize_passed)) passed, $failed failed"
exit $status
