#!/usr/bin/env bash
# Opens viewer.html of a run of the bundled forearm example in headless
# Chromium and asks the page to check itself ("#check"): it must load with no
# error, draw something that is not the bare background, and draw another
# picture when the slider steps to another frame. Chromium's console output
# of the page must be free of errors too. Skipped (exit 77) where Chromium is
# not installed. No network: the page is a local file that loads nothing.
# Usage: viewer_page_test.sh MYOFORGE SCENE
set -uo pipefail
myoforge=$1
scene=$2
browser=$(command -v chromium || command -v chromium-browser || true)
if [ -z "$browser" ]; then
  echo "viewer_page_test: SKIPPED: Chromium is not installed (apt-get install chromium; scripts/test.sh installs it)"
  exit 77
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

if ! timeout 300 "$myoforge" run "$scene" -o "$work/out" --no-progress -q; then
  echo "viewer_page_test: FAILED: myoforge run $scene failed"; exit 1
fi
page="$work/out/viewer.html"
[ -s "$page" ] || { echo "viewer_page_test: FAILED: $page was not written"; exit 1; }

# One headless Chromium, bounded in time; software WebGL; no background
# traffic of the browser's own.
timeout 120 "$browser" --headless --no-sandbox --use-angle=swiftshader --enable-unsafe-swiftshader \
  --disable-background-networking --disable-component-update --disable-sync --no-first-run \
  --user-data-dir="$work/profile" --window-size=800,600 --virtual-time-budget=20000 \
  --enable-logging=stderr --v=0 --dump-dom "file://$page#check" >"$work/dom.html" 2>"$work/browser.log"
status=$?
result=$(grep -o 'viewer-check: [^<]*' "$work/dom.html" | head -n 1)
console=$(grep 'CONSOLE' "$work/browser.log" | grep -F "file://" || true)
if [ $status -ne 0 ] || [ -z "$result" ]; then
  echo "viewer_page_test: FAILED: the page did not report (chromium exit status $status)"
  tail -n 20 "$work/browser.log"
  exit 1
fi
echo "$result"
if [ -n "$console" ]; then
  echo "viewer_page_test: FAILED: the page wrote to the console:"
  echo "$console"
  exit 1
fi
case "$result" in
  "viewer-check: ok"*) exit 0 ;;
  *) echo "viewer_page_test: FAILED"; exit 1 ;;
esac
