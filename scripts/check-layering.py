#!/usr/bin/env python3
"""Fails when a folder of src/ includes a header of a folder it does not link.

Each folder is one library whose CMakeLists.txt names what it links (DEPS); a file may include
headers of its own folder and of the folders below it in that graph, never of one above or beside
it. An include is found by its path below src/ ("gallery/CGalleryManifest.h") or by its bare name.
"""
import pathlib
import re
import sys

src = pathlib.Path(__file__).resolve().parent.parent / "src"
folders = sorted(p.name for p in src.iterdir() if (p / "CMakeLists.txt").exists())

links = {}
for folder in folders:
    text = (src / folder / "CMakeLists.txt").read_text()
    match = re.search(r"curatool_library\(\s*\S+\s+DEPS\s+([^)]*?)(?:\s+EXCLUDE\b[^)]*)?\)", text)
    links[folder] = [d for d in (match.group(1).split() if match else []) if d in folders]


def below(folder, seen=None):
    seen = set() if seen is None else seen
    for dep in links[folder]:
        if dep not in seen:
            seen.add(dep)
            below(dep, seen)
    return seen


owner = {}
for folder in folders:
    for header in (src / folder).rglob("*.h"):
        owner.setdefault(header.name, set()).add(folder)
        owner.setdefault(header.relative_to(src).as_posix(), set()).add(folder)

include = re.compile(r'^\s*#\s*include\s+"([^"]+)"', re.M)
faults = []
for folder in folders:
    allowed = below(folder) | {folder}
    if folder in below(folder):
        faults.append(f"{folder}: links itself through a cycle")
    for path in sorted((src / folder).rglob("*")):
        if path.suffix not in (".h", ".cpp"):
            continue
        for name in include.findall(path.read_text(errors="replace")):
            owners = owner.get(name) or owner.get(pathlib.PurePosixPath(name).name)
            if owners and not owners & allowed:
                faults.append(f"{path.relative_to(src)}: includes {name} of {'/'.join(sorted(owners))}")

for fault in faults:
    print(fault)
print(f"layering: {len(faults)} fault(s) in {len(folders)} folders")
sys.exit(1 if faults else 0)
