#!/usr/bin/env bash
# Installs the build dependencies, builds everything and runs the whole test suite.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
"$here/scripts/setup.sh"
"$here/scripts/build.sh"
cd "${CURATOOL_BUILD_DIR:-$here/build}"
ctest --output-on-failure -j"$(nproc)" --timeout 300
