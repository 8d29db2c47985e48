#!/bin/sh
# Builds and installs the library for a camera stack with a state record of its own, and runs the
# consumer against it: foreign_state_test.sh SOURCE_DIR WORK_DIR CMAKE_ARGUMENT...
# Environment: as consumer_test.sh takes it.
set -eu
source=$1 work=$2
shift 2
"$CMAKE" -S "$source" -B "$work/build" "$@" \
    -DCMAKE_CXX_COMPILER="$CXX" -DCMAKE_CXX_FLAGS="$CXXFLAGS" -DCMAKE_BUILD_TYPE=Debug \
    -DIMGTUNE_CAMERA_STATE_HEADER=isp/camera_info.h \
    -DIMGTUNE_CAMERA_STATE_INCLUDE_DIR="$CAMERA_STACK" \
    -DIMGTUNE_BUILD_WORKBENCH=OFF -DIMGTUNE_BUILD_TESTS=OFF -DIMGTUNE_BUILD_BENCH=OFF
"$CMAKE" --build "$work/build" --target ispfeature cutils log
rm -rf "$work/installed"
"$CMAKE" --install "$work/build" --prefix "$work/installed" --component library
exec "$(dirname "$0")/consumer_test.sh" "$work/installed" "$work" "$@"
