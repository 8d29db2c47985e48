#!/usr/bin/env bash
# Installs what is missing, builds with g++ and with clang++, and runs every test.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh g++ cmake ninja-build pkg-config libgtest-dev libbenchmark-dev libcli11-dev \
    libyaml-cpp-dev libfmt-dev nlohmann-json3-dev libeigen3-dev zlib1g-dev libraw-dev libtiff-dev libpng-dev locales binutils ccache python3-cram \
    mandoc android-liblog-dev
export CMAKE_CXX_COMPILER_LAUNCHER=ccache CCACHE_BASEDIR=$PWD
export LC_CTYPE=C.UTF-8  # as Python sets it for what it starts: ccache tells locales apart

mkdir -p build/log
: >build/log/results
# step NAME COMMAND...: runs one part of the tests; its output is shown when it fails. Tells how long it
# took and how much of the processors.
step() {
    local name=$1 log passed=ok took user system TIMEFORMAT='%0R %0U %0S'
    shift
    log=build/log/${name// /-}.txt
    echo begun >>build/log/results
    { time "$@" >"$log" 2>&1 || passed=FAIL; } 2>"$log.time"
    read -r took user system <"$log.time"
    echo "$passed" >>build/log/results
    printf '%-5s %-22s %4d s, %4d s of a core   %s\n' "$passed" "$name" "$took" $((user + system)) \
        "$(grep -oE '[0-9]+ tests? failed out of [0-9]+' "$log" | tail -n 1)"
    [ "$passed" = ok ] || { echo "see $log:"; grep -A 25 '^not ok' "$log" | head -n 80 || true; tail -n 60 "$log"; }
}

suite() {
    cmake --preset "$@" && cmake --build --preset "$1" && ctest --preset "$1" -j "$(nproc)"
}

row() {
    local script
    for script in "$@"; do step "$script" "scripts/$script.sh"; done
}

library_only=(-DIMGTUNE_BUILD_WORKBENCH=OFF -DIMGTUNE_BUILD_BENCH=OFF)

# What a compiler's optimisation could change: the library's values.
values() {
    local tests=(exports_test internal_test matrix_test digest_test) test
    cmake --preset "$1" "${library_only[@]}" -DIMGTUNE_UNITY=8 && cmake --build --preset "$1" --target "${tests[@]}" || return
    for test in "${tests[@]}"; do
        "$(find "build/$1/tests" -name "$test" -type f)" || return
    done
}

# Two rows side by side, as many steps wait for one core now and then. The workbench is built once for
# release and once under the sanitizers; the library by everything.
{
    step "release suite" suite release -DIMGTUNE_UNITY=8
    row aarch64 sanitize fuzz abi
} &
{
    step "install clang" scripts/setup.sh clang clang-format clang-tidy
    step "clang suite" suite clang "${library_only[@]}"
    step "debug values" values debug
    step "clang-debug values" values clang-debug
    step "format and lint" scripts/lint.sh
    row wasm python-test formats-test count-instructions android  # the last with the tests that aarch64 has built
} &
wait
row page-test  # alone: it measures times

passed=$(grep -c ok build/log/results || true) begun=$(grep -c begun build/log/results)
printf '%d passed, %d failed\n' "$passed" $((begun - passed))
[ "$passed" -eq "$begun" ]
