#!/usr/bin/env bash
# Installs the build dependencies, builds Curatool and runs it on the bundled sample.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
"$here/scripts/setup.sh"
CURATOOL_BUILD_TESTS=OFF "$here/scripts/build.sh"
bin="${CURATOOL_BUILD_DIR:-$here/build}/bin/curatool"
"$bin" --help || true
