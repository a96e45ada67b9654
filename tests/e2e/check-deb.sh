#!/usr/bin/env bash
# The Debian package as a user gets it: built with CPack from this build, checked by lintian
# (no error allowed), unpacked with dpkg-deb into a scratch root, and the unpacked program run
# there: its usage text and a console install of the bundled sample. Nothing is installed on the
# system. Exit 77 (a skip for CTest) when the Debian tools are missing.
#   check-deb.sh <cpack> <build dir> <source dir>
set -euo pipefail
cpack=$1 build=$2 source=$3

for tool in dpkg-deb dpkg-shlibdeps lintian; do
  if ! command -v "$tool" >/dev/null; then
    echo "SKIPPED: $tool is not installed; bash scripts/setup.sh installs it"
    exit 77
  fi
done

work=$(mktemp -d "${TMPDIR:-/tmp}/curatool-deb.XXXXXX")
trap 'rm -rf "$work"' EXIT
fail() { echo "FAILED: $*" >&2; exit 1; }

"$cpack" --config "$build/CPackConfig.cmake" -B "$work/out" >"$work/cpack.log" 2>&1 ||
  { cat "$work/cpack.log"; fail "cpack could not build the package"; }
deb=$(ls "$work"/out/curatool_*.deb)
echo "built $(basename "$deb")"
dpkg-deb --field "$deb" Depends | grep -q 'libqt6widgets6' || fail "Depends lacks what dpkg-shlibdeps finds"

# Warnings are shown; an error fails the test. lintian refuses to run as root without this.
lintian --fail-on error --allow-root "$deb" || fail "lintian reports an error"

dpkg-deb -x "$deb" "$work/root"
for file in usr/lib/curatool/bin/curatool usr/lib/curatool/share/CuratoolId.xml \
    usr/lib/curatool/bin/Languages/de/CuratoolId.qm usr/share/applications/curatool.desktop \
    usr/share/mime/packages/curatool.xml usr/share/icons/hicolor/scalable/apps/curatool.svg \
    usr/share/man/man1/curatool.1.gz usr/share/doc/curatool/copyright; do
  [ -f "$work/root/$file" ] || fail "the package lacks /$file"
done
[ "$(readlink "$work/root/usr/bin/curatool")" = "../lib/curatool/bin/curatool" ] || fail "/usr/bin/curatool is no link to the program"

# The unpacked program in a world of its own: home, settings, temporary files and system root.
mkdir -p "$work/home/.config" "$work/tmp" "$work/system"
run() {
  env -u DISPLAY -u WAYLAND_DISPLAY -u QT_QPA_PLATFORM HOME="$work/home" XDG_CONFIG_HOME="$work/home/.config" \
    TMPDIR="$work/tmp" CURATOOL_ROOT="$work/system" "$work/root/usr/bin/curatool" "$@"
}
status=0
run --help >"$work/help.out" 2>"$work/help.err" || status=$?
[ "$status" -eq 154 ] || fail "curatool --help ended with $status: $(cat "$work/help.err")"
grep -q '^Usage:$' "$work/help.out" || fail "curatool --help printed no usage text"
[ ! -s "$work/help.err" ] || fail "curatool --help complained: $(cat "$work/help.err")"

status=0
run --installall -configuration "$source/samples/collection" -source "$source/samples/source" \
  -destination "$work/gallery" >"$work/install.out" 2>"$work/install.err" || status=$?
[ "$status" -eq 0 ] || fail "the sample install ended with $status: $(cat "$work/install.err")"
[ "$(tail -n 1 "$work/install.out")" = "Done." ] || fail "the sample install did not end with Done."
[ -f "$work/gallery/imsmanifest.xml" ] && [ -f "$work/gallery/Uninstall/updateinfo.xml" ] ||
  fail "the sample install left no manifest or record"
echo "package: lintian clean; --help and the sample install ran from the unpacked root"
