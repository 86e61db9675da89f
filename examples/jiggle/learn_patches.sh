#!/usr/bin/env bash
# Learns belly.mmp, the belly's muscle patches, from its three target poses
# (written by make_example.py). Run from anywhere after building myoforge;
# the result is committed. The clustering draws its seeds from the C
# library's generator, unseeded, so a fresh process gives the same file.
set -euo pipefail
here="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
myoforge="${MYOFORGE:-$here/../../build/release/app/myoforge}"
cd "$here"
"$myoforge" learn meshes/belly.obj meshes/belly_pose_bulge.obj meshes/belly_pose_drop.obj \
  meshes/belly_pose_slide.obj --patches 5 -o belly.mmp --colors belly_patches.obj -q
