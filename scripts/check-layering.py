#!/usr/bin/env python3
"""Fails when a library of src/ includes a header of a library it does not link.

Each folder with a CMakeLists.txt is one library (a sub-folder without one belongs to its parent);
its curatool_library() call names what it links (DEPS). A file may include headers of its own
library and of the libraries below it in that graph, never of one above or beside it. Includes are
written with their path below src/ ("gallery/CGalleryManifest.h"); a bare name is a fault too.
"""
import pathlib
import re
import sys

src = pathlib.Path(__file__).resolve().parent.parent / "src"
call = re.compile(r"curatool_library\(\s*([^\s)]+)((?:\s+(?!EXCLUDE\b|SUBDIRS\b)[^\s)]+)*)", re.S)

libraries = {}  # target name -> (folder, linked target names)
for cmake in src.rglob("CMakeLists.txt"):
    match = call.search(cmake.read_text())
    if match:
        words = match.group(2).split()
        libraries[match.group(1)] = (cmake.parent, [w for w in words if w != "DEPS"])
for name, (folder, deps) in libraries.items():
    libraries[name] = (folder, [d for d in deps if d in libraries])


def library_of(path):
    """The library owning a file: the nearest folder above it that is a library."""
    best = None
    for name, (folder, _) in libraries.items():
        if path.is_relative_to(folder) and (best is None or folder.is_relative_to(libraries[best][0])):
            best = name
    return best


def below(name, seen=None):
    seen = set() if seen is None else seen
    for dep in libraries[name][1]:
        if dep not in seen:
            seen.add(dep)
            below(dep, seen)
    return seen


include = re.compile(r'^\s*#\s*include\s+"([^"]+)"', re.M)
faults = []
for name in sorted(libraries):
    if name in below(name):
        faults.append(f"{name}: links itself through a cycle")
for path in sorted(src.rglob("*")):
    if path.suffix not in (".h", ".cpp"):
        continue
    mine = library_of(path)
    allowed = below(mine) | {mine}
    for target in include.findall(path.read_text(errors="replace")):
        header = src / target
        where = path.relative_to(src)
        if pathlib.PurePosixPath(target).name.startswith("ui_"):
            continue  # a form generated beside its own dialog
        if not header.exists():
            faults.append(f"{where}: includes {target}, which is not a path below src/")
            continue
        owner = library_of(header)
        if owner not in allowed:
            faults.append(f"{where}: includes {target} of {owner}, which {mine} does not link")

for fault in faults:
    print(fault)
print(f"layering: {len(faults)} fault(s) in {len(libraries)} libraries")
sys.exit(1 if faults else 0)
