#!/usr/bin/env bash
# Puts one small fault after the other into copies of the sources and tells which of them no test
# notices. Takes some minutes. Usage: scripts/mutate.sh [PATTERN]   (only files that match, as
# 'color/*')
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh g++ cmake ninja-build libgtest-dev libcli11-dev libyaml-cpp-dev libfmt-dev \
    nlohmann-json3-dev libeigen3-dev python3-cram ccache zsh fish
export CMAKE_CXX_COMPILER_LAUNCHER=ccache
pattern=${1:-*} work=$PWD/build/mutate workers=$(nproc)

# Each worker has a tree and a build of its own, with the same paths within: ccache compiles once.
enter() { tree=$work/$1/tree build=$work/$1/build; }
prepare() {
    enter "$1"
    rm -rf "$tree"
    mkdir -p "$tree"
    git ls-files -z | xargs -0 cp --parents -t "$tree"
    # No debug information: it would take half of the time.
    CCACHE_BASEDIR=$work/$1 cmake --preset debug -S "$tree" -B "$build" -DIMGTUNE_BUILD_BENCH=OFF \
        -DCMAKE_CXX_FLAGS_DEBUG=-g0 >/dev/null
    build || { tail -n 40 "$build.txt" >&2; return 1; }
}
# build [PART]: what tests it, or everything.
build() {
    local targets=()
    [ "${1:-}" != library ] || targets=(--target tests/{library,matrix,platform,proof}/all)
    [ "${1:-}" != workbench ] || targets=(--target {tests/workbench,cli}/all)
    CCACHE_BASEDIR=${build%/*} cmake --build "$build" "${targets[@]}" >"$build.txt" 2>&1
}

# pass FOLDER...: every test program below these folders of the tests passes.
pass() {
    local program
    for program in $(cd "$build/tests" && find "$@" -name '*_test' -type f -perm -u+x | sort); do
        timeout 100 "$build/tests/$program" --gtest_brief=1 >/dev/null 2>&1 || return 1
    done
}
caught_by_library() { ! pass library matrix platform proof; }
caught_by_workbench() {
    ! pass workbench || ! timeout 100 "$tree/tests/cli/run.sh" "$build/cli/imgtune" >/dev/null 2>&1
}

# try FILE TEXT NEW: puts a fault in and says what became of it.
try() {
    local file=$1 old=$2 new=$3 part=library text
    text=$(cat "$tree/$file" && printf x)
    if [ "$(grep -cF -- "$old" "$tree/$file")" != 1 ]; then
        echo "broken: $file: not once there, renew tests/mutants.txt: $old"
        return
    fi
    printf %s "${text%x}" | OLD=$old NEW=$new python3 -c 'import os, sys
sys.stdout.write(sys.stdin.read().replace(os.environ["OLD"], os.environ["NEW"]))' >"$tree/$file.new"
    mv "$tree/$file.new" "$tree/$file"
    case $file in workbench/* | cli/*) part=workbench ;; esac
    if ! build "$part"; then
        echo "broken: does not build: $file: $old -> $new"
    elif "caught_by_$part"; then
        echo "$part caught"
    else
        echo "$part not caught: $file: $old -> $new"
    fi
    printf %s "${text%x}" >"$tree/$file"
}

# work NUMBER: every so many-th fault.
work() {
    enter "$1"
    local file old new count=0
    while IFS=$'\t' read -r file old new; do
        # shellcheck disable=SC2254  # a pattern
        case $file in '#'*) continue ;; $pattern) ;; *) continue ;; esac
        [ $((count++ % workers)) = "$1" ] || continue
        try "$file" "$old" "$new"
    done <tests/mutants.txt
}

for ((i = 0; i < workers; ++i)); do prepare "$i"; done
caught_by_library || caught_by_workbench && { echo "a test fails without any fault" >&2; exit 1; }
pids=()
for ((i = 0; i < workers; ++i)); do
    work "$i" | tee "$work/$i/results" | sed -n '/ caught$/!p' &
    pids+=($!)
done
for pid in "${pids[@]}"; do wait "$pid"; done
for part in library workbench; do
    echo "$part: $(cat "$work"/*/results | grep -c "^$part caught") of" \
        "$(cat "$work"/*/results | grep -c "^$part ") faults caught"
done
! cat "$work"/*/results | grep -q '^broken'
