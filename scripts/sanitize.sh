#!/usr/bin/env bash
# Runs the whole suite under AddressSanitizer and UndefinedBehaviorSanitizer, and the threaded tests
# under ThreadSanitizer. Any report fails.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh clang libclang-rt-14-dev cmake ninja-build pkg-config libgtest-dev libcli11-dev \
    libyaml-cpp-dev libfmt-dev nlohmann-json3-dev libeigen3-dev zlib1g-dev libraw-dev libtiff-dev libpng-dev locales

cmake --preset asan -DIMGTUNE_UNITY=8
cmake --build --preset asan
# The forms of a log, and the search for a smoothing, are many runs of what other tests run, too.
ctest --preset asan -j "$(nproc)" -E 'cli.(logcat_forms|smooth)$'

cmake --preset tsan -DIMGTUNE_UNITY=8
cmake --build --preset tsan --target threads_test platform_test
ctest --preset tsan -R 'Thread'
