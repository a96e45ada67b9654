#!/usr/bin/env bash
# Renders each dialog of the program into a PNG file, over the sample collection and a copy of
# the sample source, in a scratch home of its own (nothing outside it is written).
#
#   scripts/screenshots.sh [output folder]     (default: docs/screenshots)
#
# Uses the offscreen platform, so it needs no display; QT_QPA_PLATFORM=xcb under xvfb-run works
# as well and draws the same windows.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
build=${CURATOOL_BUILD_DIR:-$here/build}
out=$(mkdir -p "${1:-$here/docs/screenshots}" && cd "${1:-$here/docs/screenshots}" && pwd)

cmake --build "$build" --target curatool_screenshots >/dev/null

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
mkdir -p "$scratch/home" "$scratch/config" "$scratch/tmp" "$scratch/root"
HOME=$scratch/home XDG_CONFIG_HOME=$scratch/config TMPDIR=$scratch/tmp CURATOOL_ROOT=$scratch/root \
  QT_QPA_PLATFORM=${QT_QPA_PLATFORM:-offscreen} \
  "$build/tests/curatool_screenshots" "$out" "$here/samples"
echo "screenshots written to $out"
