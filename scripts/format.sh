#!/usr/bin/env bash
# Formats the C++ sources with the project's .clang-format. With --check it changes nothing and
# fails, listing the files, when one is not formatted.
set -euo pipefail
cd "$(dirname "$0")/.."
mapfile -t files < <(git ls-files -- 'src/*.cpp' 'src/*.h' 'tests/*.cpp' 'tests/*.h' \
                                     'bench/*.cpp' 'bench/*.h' 'fuzz/*.cpp' 'fuzz/*.h')
if [[ "${1:-}" == "--check" ]]; then
    unformatted=()
    for file in "${files[@]}"; do
        clang-format --style=file "$file" | cmp -s - "$file" || unformatted+=("$file")
    done
    if ((${#unformatted[@]})); then
        printf 'not formatted: %s\n' "${unformatted[@]}"
        echo "format: ${#unformatted[@]} file(s); run scripts/format.sh"
        exit 1
    fi
    echo "format: ${#files[@]} files formatted"
else
    clang-format --style=file -i "${files[@]}"
fi
