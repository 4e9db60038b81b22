#!/bin/bash
# Two builds in different folders are the same, byte by byte: whoever has the sources can tell that
# a library is made of them.
#   same_bytes.sh BUILD [CMAKE_ARGUMENT...]
# BUILD has been built from the sources around this script with the arguments; they are built once
# more, from a copy elsewhere and without a compiler's cache.
set -euo pipefail
build=$(realpath "$1")
shift
sources=$(git -C "$(dirname "${BASH_SOURCE[0]}")" rev-parse --show-toplevel)
elsewhere=$(mktemp -d)
trap 'rm -rf "$elsewhere"' EXIT
unset CMAKE_C_COMPILER_LAUNCHER CMAKE_CXX_COMPILER_LAUNCHER

copy="$elsewhere/a folder of another name"
mkdir "$copy"
git -C "$sources" ls-files -z | tar -C "$sources" --null --files-from=- -c | tar -C "$copy" -x
cmake -S "$copy" -B "$elsewhere/built" -G Ninja -DWAVEFILTERS_TESTS=OFF "$@" >"$elsewhere/log" ||
  { cat "$elsewhere/log"; exit 1; }
cmake --build "$elsewhere/built" -j "${JOBS:-$(nproc)}" >"$elsewhere/log" ||
  { cat "$elsewhere/log"; exit 1; }
for file in libwavefilters.so.1.0.0 wavechain; do
  cmp "$build/$file" "$elsewhere/built/$file"
done
