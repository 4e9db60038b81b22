#!/bin/bash
# Installs the build into a folder of its own, moves that folder, and does with it what its user
# would: finds it with CMake and with pkg-config, builds the examples both ways and runs them.
#   install_test.sh FOLDER, with the settings that CMakeLists.txt gives in the environment
set -euo pipefail

tree=$1
rm -rf "$tree"
mkdir -p "$tree"

fail() {
  echo "install: $*" >&2
  exit 1
}

"$CMAKE" --install "$BUILD" --prefix "$tree/first" >"$tree/install.log"
mv "$tree/first" "$tree/moved"
prefix=$tree/moved

# The headers of the contract and no others, each of which compiles alone under an older standard.
headers=$(cd "$prefix/$INCLUDEDIR/wavefilters" && find . -type f | LC_ALL=C sort | paste -sd ' ')
[[ $headers == './frame/guid.h ./frame/interfaces.h ./frame/lifetime.h ./frame/ref.h ./frame/unknown.h' ]] ||
  fail "other headers than expected: $headers"
for header in $headers; do
  "$CXX" -std=c++17 -Wall -Wextra -Wconversion -Wshadow -Werror -fsyntax-only -x c++ \
    -I "$prefix/$INCLUDEDIR/wavefilters" "$prefix/$INCLUDEDIR/wavefilters/$header" 2>"$tree/header.log" ||
    fail "$header: $(<"$tree/header.log")"
done

# expect_cosine COMMAND...: the command prints a line about the signal, then eleven samples of
# 0.5 cos(2 pi 1000 Hz t), one every 0.1 ms.
expect_cosine() {
  LD_LIBRARY_PATH=$prefix/$LIBDIR "$@" >"$tree/printed" || fail "$* ended with status $?"
  [[ $(head -n 1 "$tree/printed") == '11 samples, one every 0.1 ms' ]] || fail "$*: $(<"$tree/printed")"
  awk 'NR > 1 {
         difference = $1 - 0.5 * cos(2 * 3.14159265358979 * (NR - 2) / 10)
         if (difference > 1e-6 || difference < -1e-6) exit 1
         ++samples
       }
       END { if (samples != 11) exit 1 }' "$tree/printed" || fail "$*: $(<"$tree/printed")"
}

"$CMAKE" -S "$SOURCE/examples" -B "$tree/cmake" -G "$GENERATOR" "-DCMAKE_PREFIX_PATH=$prefix" \
  "-DCMAKE_C_COMPILER=$CC" "-DCMAKE_CXX_COMPILER=$CXX" \
  "-DCMAKE_C_FLAGS=-Werror $SANITIZE" "-DCMAKE_CXX_FLAGS=-Werror $SANITIZE" >"$tree/cmake.log" 2>&1 &&
  "$CMAKE" --build "$tree/cmake" >>"$tree/cmake.log" 2>&1 || fail "$(<"$tree/cmake.log")"
grep -q "^WaveFilters_DIR:PATH=$prefix/" "$tree/cmake/CMakeCache.txt" || fail 'CMake found another tree'
expect_cosine "$tree/cmake/example_host_cpp"
expect_cosine "$tree/cmake/example_host_c" "$LIBRARY_FOR_C"

export PKG_CONFIG_PATH=$prefix/$LIBDIR/pkgconfig
# Words are meant to be split here: these are lists of options.
# shellcheck disable=SC2046,SC2086
"$CXX" -std=c++17 -Wall -Wextra -Werror $SANITIZE "$SOURCE/examples/example_host.cpp" \
  $(pkg-config --cflags --libs 'wavefilters >= 1.0') -o "$tree/pkg_config_cpp"
# shellcheck disable=SC2086
"$CC" -std=c11 -Wall -Wextra -Wconversion -pedantic -Werror $SANITIZE "$SOURCE/examples/example_host.c" \
  -ldl -o "$tree/pkg_config_c"
expect_cosine "$tree/pkg_config_cpp"
expect_cosine "$tree/pkg_config_c" "$LIBRARY_FOR_C"

if [[ -n $PROGRAM ]]; then
  "$prefix/$PROGRAM" list >"$tree/list" || fail "the installed wavechain ended with status $?"
  [[ $(grep -c FIRNotch "$tree/list") == 1 ]] || fail "the installed wavechain lists: $(<"$tree/list")"
  # What goes with it, where shells and man look for it.
  for text in man/man1/wavechain.1 bash-completion/completions/wavechain zsh/site-functions/_wavechain \
    fish/vendor_completions.d/wavechain.fish; do
    grep -q FIRNotch "$prefix/share/$text" || fail "$text is missing or empty"
  done
fi
