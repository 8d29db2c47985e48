#!/bin/sh
# Installs the workbench beside the library, builds a program on it and compares what it prints with
# the command line: workbench_test.sh BUILD_DIR EXAMPLES WORK_DIR IMGTUNE CMAKE_ARGUMENT...
# Environment: CMAKE, CXX, CXXFLAGS, PREFIX.
set -eu
build=$1 examples=$2 work=$3 imgtune=$4
shift 4
"$CMAKE" --install "$build" --prefix "$PREFIX" --component workbench >/dev/null
rm -rf "$work"
"$CMAKE" -S "$(dirname "$0")/workbench_consumer" -B "$work" "$@" -DCMAKE_PREFIX_PATH="$PREFIX" \
    -DCMAKE_CXX_COMPILER="$CXX" -DCMAKE_CXX_FLAGS="$CXXFLAGS"
"$CMAKE" --build "$work"
tuning=$examples/imx477-polynomial.yaml log=$examples/imx477-walk.csv
printed=$("$work/consumer" "$tuning" "$log")
expected=$("$imgtune" replay "$tuning" "$log" --fields 'c?' | sed -n 2p | cut -d, -f2- | tr , ' ')
echo "$printed"
[ "$printed" = " $expected" ]
