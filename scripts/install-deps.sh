#!/usr/bin/env bash
# Installs the Debian packages MyoForge builds with, and any packages named
# as arguments (scripts/fuzz.sh adds its compiler), only those missing.
set -euo pipefail
packages=(build-essential cmake ninja-build libgtest-dev libgmock-dev libbenchmark-dev libomp-dev
          libtinyobjloader-dev nlohmann-json3-dev libcli11-dev libjs-three "$@")
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "Installing: ${missing[*]}"
  if [ "$(id -u)" -ne 0 ]; then sudo=sudo; else sudo=; fi
  $sudo apt-get update -q
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -q --no-install-recommends "${missing[@]}"
fi
