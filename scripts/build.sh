#!/usr/bin/env bash
# Configures and builds into ./build (or $CURATOOL_BUILD_DIR), warnings as errors.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
build=${CURATOOL_BUILD_DIR:-$here/build}
launcher=()
if command -v ccache >/dev/null; then
  # Paths relative to the checkout, so that several checkouts share one cache.
  export CCACHE_BASEDIR=${CCACHE_BASEDIR:-$(dirname "$here")} CCACHE_NOHASHDIR=1
  launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache -DCMAKE_C_COMPILER_LAUNCHER=ccache)
fi
cmake -S "$here" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCURATOOL_WERROR=ON "${launcher[@]}" "$@" >/dev/null
cmake --build "$build" -j"$(nproc)"
