#!/usr/bin/env bash
# Puts one small fault after the other into a copy of the sources and tells which of them no test
# notices. Takes some minutes. Usage: scripts/mutate.sh [PATTERN]   (only files that match, as
# 'color/*')
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh g++ cmake ninja-build libgtest-dev libcli11-dev libyaml-cpp-dev libfmt-dev \
    nlohmann-json3-dev libeigen3-dev python3-cram ccache zsh fish
export CMAKE_CXX_COMPILER_LAUNCHER=ccache
pattern=${1:-*} tree=build/mutate/tree

rm -rf "$tree"
mkdir -p "$tree"
git ls-files -z | xargs -0 cp --parents -t "$tree"
cmake --preset debug -S "$tree" -B build/mutate/build -DIMGTUNE_BUILD_BENCH=OFF \
    -DCMAKE_CXX_FLAGS=-Wno-error >/dev/null
build() { cmake --build build/mutate/build >build/mutate/build.txt 2>&1; }
build || { tail -n 40 build/mutate/build.txt; exit 1; }

# pass FOLDER...: every test program below these folders of the tests passes.
pass() {
    local program
    for program in $(cd build/mutate/build/tests && find "$@" -name '*_test' -type f -perm -u+x | sort); do
        timeout 100 "build/mutate/build/tests/$program" --gtest_brief=1 >/dev/null 2>&1 || return 1
    done
}
caught_by_library() { ! pass library matrix platform proof; }
caught_by_workbench() {
    ! pass workbench || ! timeout 100 "$tree/tests/cli/run.sh" build/mutate/build/cli/imgtune >/dev/null 2>&1
}
caught_by_library || caught_by_workbench && { echo "a test fails without any fault" >&2; exit 1; }

declare -A faults=([library]=0 [workbench]=0) caught=([library]=0 [workbench]=0)
while IFS=$'\t' read -r file old new; do
    # shellcheck disable=SC2254  # a pattern
    case $file in '#'*) continue ;; $pattern) ;; *) continue ;; esac
    text=$(cat "$tree/$file" && printf x)
    if [ "$(grep -cF -- "$old" "$tree/$file")" != 1 ]; then
        echo "$file: not once there, renew tests/mutants.txt: $old" >&2
        exit 1
    fi
    printf %s "${text%x}" | OLD=$old NEW=$new python3 -c 'import os, sys
sys.stdout.write(sys.stdin.read().replace(os.environ["OLD"], os.environ["NEW"]))' >"$tree/$file.new"
    mv "$tree/$file.new" "$tree/$file"
    part=library
    case $file in workbench/* | cli/*) part=workbench ;; esac
    if ! build; then
        echo "does not build: $file: $old -> $new"
    else
        faults[$part]=$((faults[$part] + 1))
        if "caught_by_$part"; then
            caught[$part]=$((caught[$part] + 1))
        else
            echo "not caught: $file: $old -> $new"
        fi
    fi
    printf %s "${text%x}" >"$tree/$file"
done <tests/mutants.txt
for part in library workbench; do
    echo "$part: ${caught[$part]} of ${faults[$part]} faults caught"
done
