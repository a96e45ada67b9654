#!/usr/bin/env bash
# Installs what Curatool needs to build, test, package and benchmark on Debian 12. Safe to run again:
# apt-get is called only when a package is missing.
set -euo pipefail

packages=(
  build-essential cmake pkg-config git
  qt6-base-dev qt6-tools-dev qt6-tools-dev-tools qt6-l10n-tools qt6-translations-l10n libqt6svg6
  libtinyxml2-dev zlib1g-dev uuid-dev
  libgtest-dev libgmock-dev libbenchmark-dev libpugixml-dev
  zip unzip libarchive-tools p7zip-full python3 tinyproxy curl
  clang clang-format libclang-rt-14-dev
  xvfb xauth xdotool x11-utils ccache
  dpkg-dev lintian
)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done

if [ ${#missing[@]} -gt 0 ]; then
  export DEBIAN_FRONTEND=noninteractive
  apt-get update -qq
  apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi
