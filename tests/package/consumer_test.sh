#!/bin/sh
# Builds and runs the consumer against an installed tree, by find_package and by pkg-config, and
# compares what it prints: consumer_test.sh PREFIX WORK_DIR CMAKE_ARGUMENT...
# Environment: CMAKE, PKG_CONFIG, CXX, CXXFLAGS, EMULATOR; CAMERA_STACK, the include folder of a
# stack with a state record of its own; EXPECTED, a file with what must be printed.
set -eu
prefix=$1 work=$2
shift 2
source=$(dirname "$0")/consumer
mkdir -p "$work"
rm -rf "$work/by_cmake"

# A cross toolchain searches its own root only.
"$CMAKE" -S "$source" -B "$work/by_cmake" "$@" -DCMAKE_PREFIX_PATH="$prefix" \
    ${EMULATOR:+-Dimgtune_DIR="$(dirname "$(find "$prefix" -name imgtuneConfig.cmake)")"} \
    -DCMAKE_CXX_COMPILER="$CXX" -DCMAKE_CXX_FLAGS="$CXXFLAGS" \
    ${CAMERA_STACK:+-DCAMERA_STACK="$CAMERA_STACK"}
"$CMAKE" --build "$work/by_cmake"
$EMULATOR "$work/by_cmake/consumer" >"$work/by_cmake.txt"

PKG_CONFIG_LIBDIR=$(dirname "$(find "$prefix" -name imgtune.pc)")
export PKG_CONFIG_LIBDIR
# Flags are lists of words.
# shellcheck disable=SC2046,SC2086
"$CXX" -std=c++14 $CXXFLAGS $("$PKG_CONFIG" --cflags imgtune) \
    ${CAMERA_STACK:+-I"$CAMERA_STACK"} "$source/consumer.cpp" -o "$work/by_pkg_config" \
    $("$PKG_CONFIG" --libs imgtune) -Wl,-rpath,"$("$PKG_CONFIG" --variable=libdir imgtune)"
$EMULATOR "$work/by_pkg_config" >"$work/by_pkg_config.txt"

cat "$work/by_cmake.txt"
diff "$work/by_cmake.txt" "$work/by_pkg_config.txt"
if [ -n "${EXPECTED:-}" ]; then diff "$EXPECTED" "$work/by_cmake.txt"; fi
