#!/usr/bin/env bash
# Installs what is missing, builds with g++ and with clang++, and runs every test.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh g++ clang cmake ninja-build pkg-config libgtest-dev libbenchmark-dev libcli11-dev \
    libyaml-cpp-dev libfmt-dev nlohmann-json3-dev libeigen3-dev zlib1g-dev clang-format clang-tidy locales valgrind binutils ccache python3-cram
export CMAKE_CXX_COMPILER_LAUNCHER=ccache CCACHE_BASEDIR=$PWD

mkdir -p build/log
: >build/log/results
# step NAME COMMAND...: runs one part of the tests; its output is shown when it fails.
step() {
    local name=$1 start=$SECONDS log
    shift
    log=build/log/${name// /-}.txt
    echo begun >>build/log/results
    if "$@" >"$log" 2>&1; then
        echo ok >>build/log/results
        printf 'ok    %-34s %4d s   %s\n' "$name" $((SECONDS - start)) \
            "$(grep -oE '[0-9]+ tests? failed out of [0-9]+' "$log" | tail -n 1)"
    else
        echo FAIL >>build/log/results
        printf 'FAIL  %-34s %4d s   see %s\n' "$name" $((SECONDS - start)) "$log"
        tail -n 60 "$log"
    fi
}

suite() {
    cmake --preset "$@" && cmake --build --preset "$1" && ctest --preset "$1" -j "$(nproc)"
}

row() {
    local script
    for script in "$@"; do step "$script" "scripts/$script.sh"; done
}

# Two rows side by side, as many steps wait for one core now and then; what shares a build folder is in
# one row. The workbench is built once for release and once under the sanitizers; the library by
# everything.
{
    step "release suite" suite release -DIMGTUNE_UNITY=8
    row sanitize fuzz abi count-instructions
} &
for preset in clang debug clang-debug; do
    step "$preset suite" suite "$preset" -DIMGTUNE_BUILD_WORKBENCH=OFF -DIMGTUNE_BUILD_BENCH=OFF
done
step "format and lint" scripts/lint.sh
row aarch64 android wasm
wait
row page-test &
row python-test
wait

passed=$(grep -c ok build/log/results || true) begun=$(grep -c begun build/log/results)
printf '%d passed, %d failed\n' "$passed" $((begun - passed))
[ "$passed" -eq "$begun" ]
