#!/usr/bin/env bash
# Brings translations/*.ts up to date with every user-visible text of the sources and forms (new
# texts arrive unfinished, vanished ones are dropped), then says what still needs a translator.
# Edit the .ts files with Qt Linguist (`linguist translations/CuratoolId_de.ts`) or by hand; the
# build turns them into the catalogues.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
build=${CURATOOL_BUILD_DIR:-$here/build}
cmake -S "$here" -B "$build" >/dev/null
cmake --build "$build" --target curatool_lupdate
for ts in "$here"/translations/*.ts; do
  open=$(grep -c 'type="unfinished"' "$ts" || true)
  echo "$(basename "$ts"): $open text(s) without a finished translation"
done
