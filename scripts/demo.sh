#!/usr/bin/env bash
# Installs the build dependencies, builds Curatool (the program only, no tests) and installs the
# bundled sample gallery (samples/collection with its data in samples/source) from the command
# line into a fresh temporary folder, then shows what arrived there. Nothing outside that folder
# is written: HOME, the settings and the shared galleries folder all live below it.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
build=${CURATOOL_BUILD_DIR:-$here/build}

"$here/scripts/setup.sh"
cmake -S "$here" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$build" --target curatool -j"$(nproc)"
bin="$build/bin/curatool"

tmp=$(mktemp -d "${TMPDIR:-/tmp}/curatool-demo.XXXXXX")
mkdir -p "$tmp/root" "$tmp/home/.config" "$tmp/tmp"
gallery="$tmp/gallery"

echo
echo "== curatool --installall -configuration samples/collection -source samples/source -destination $gallery -verbose"
# A console mode: it runs without any display, as it would over SSH.
status=0
(cd "$here" && env -u DISPLAY -u WAYLAND_DISPLAY -u QT_QPA_PLATFORM \
    CURATOOL_ROOT="$tmp/root" HOME="$tmp/home" XDG_CONFIG_HOME="$tmp/home/.config" TMPDIR="$tmp/tmp" \
    "$bin" --installall -configuration samples/collection -source samples/source \
    -destination "$gallery" -verbose) 2>&1 | tee "$tmp/install.log" || status=$?
if [ "$status" -ne 0 ]; then
  echo "curatool failed with exit code $status (files are in $tmp)" >&2
  exit "$status"
fi
# The exit code tells only the preparation; a file that failed inside the run shows as "Failed".
if grep -q '^Failed' "$tmp/install.log"; then
  echo "some files failed to install (log: $tmp/install.log)" >&2
  exit 1
fi

echo
echo "== Installed files (bytes, path below $gallery)"
(cd "$gallery" && find . -type f -printf '%s\t%P\n' | sort -k2)
echo "total: $(find "$gallery" -type f | wc -l) files, $(du -sb "$gallery" | cut -f1) bytes"

python3 - "$here/samples/collection/configuration.xml" "$here/samples/source/gallery_categories.xml" \
  "$gallery/Uninstall/updateinfo.xml" "$gallery/imsmanifest.xml" <<'EOF'
"""Prints the installed categories and the merged manifest's tree with its titles per language."""
import sys
import xml.etree.ElementTree as ET

configuration, offered, updateinfo, manifest = sys.argv[1:]
short_ids = {c.get('GUID'): c.get('ShortID') for c in ET.parse(configuration).iter('Category')}
titles = {}
for category in ET.parse(offered).getroot().find('categories'):
    titles[category.get('id')] = ', '.join(
        '%s: %s' % (t.get('language'), t.text) for t in category.find('title'))

print('\n== Installed categories (Uninstall/updateinfo.xml)')
try:
    installed = list(ET.parse(updateinfo).getroot())
except (OSError, ET.ParseError) as error:
    sys.exit('no record of installed categories: %s' % error)
for category in installed:
    cid = category.get('id')
    print('  %-8s version %-6s %s  (%s)' % (short_ids.get(cid, '?'), category.get('version'), cid,
                                             titles.get(cid, '')))

CP = '{http://www.imsglobal.org/xsd/imscp_v1p1}'
LOM = '{http://ltsc.ieee.org/xsd/LOM}'
# An empty text is stored as the single character U+FFFE, which an XML parser refuses: drop it.
with open(manifest, 'rb') as f:
    root = ET.fromstring(f.read().replace('\ufffe'.encode('utf-8'), b''))
hrefs = {r.get('identifier'): r.get('href') for r in root.iter(CP + 'resource')}


def item_titles(item):
    general = item.find(CP + 'metadata/' + LOM + 'lom/' + LOM + 'general/' + LOM + 'title')
    strings = [] if general is None else general.findall(LOM + 'string')
    return ' | '.join('%s: %s' % (s.get('language'), (s.text or '').strip()) for s in strings)


def show(item, depth):
    ref = item.get('identifierref')
    line = '  ' * depth + ('- ' if ref else '+ ') + item_titles(item)
    print(line + ('   [%s]' % hrefs.get(ref, '?') if ref else ''))
    for child in item.findall(CP + 'item'):
        show(child, depth + 1)


print('\n== Merged imsmanifest.xml: categories (+) and items (-) with their titles')
for organization in root.iter(CP + 'organization'):
    print('  ' + (organization.findtext(CP + 'title') or '').strip())
    for item in organization.findall(CP + 'item'):
        show(item, 2)
missing = set(short_ids) - {c.get('id') for c in installed}
if missing:
    sys.exit('not installed: ' + ', '.join(sorted(short_ids[m] for m in missing)))
EOF

echo
echo "The demo's files stay in $tmp (gallery: $gallery). Remove them with: rm -rf '$tmp'"
