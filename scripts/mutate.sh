#!/usr/bin/env bash
# Do the tests notice a fault? Makes each change of tests/mutants.txt in a copy of the tree, builds
# it and runs the tests; a change that no test notices is listed. Usage: scripts/mutate.sh [PATTERN]
# (PATTERN: only changes in files whose path contains it).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh g++ cmake ninja-build pkg-config libgtest-dev libcli11-dev libyaml-cpp-dev \
    libfmt-dev nlohmann-json3-dev libeigen3-dev locales ccache perl python3-cram

export CMAKE_CXX_COMPILER_LAUNCHER=ccache
tree=build/mutate/tree
mkdir -p "$tree"
git ls-files -z | xargs -0 cp --parents --update -t "$tree"
cmake -S "$tree" -B build/mutate/build -G Ninja -DCMAKE_BUILD_TYPE=Debug \
    -DIMGTUNE_BUILD_BENCH=OFF >/dev/null
noticed() {  # true when the tree as it is does not pass
    ! ninja -C build/mutate/build >build/mutate/build.log 2>&1 ||
        ! ctest --test-dir build/mutate/build -j "$(nproc)" --stop-on-failure -E '^package|Threads' \
            >build/mutate/ctest.log 2>&1
}
if noticed; then
    echo "mutate: the tree fails without any change, see build/mutate/" >&2
    exit 2
fi

declare -A tried missed
while IFS=$'\t' read -r file old new; do
    [[ $file == '#'* || -z $file || $file != *"${1:-}"* ]] && continue
    part=library
    [[ $file == workbench/* || $file == cli/* ]] && part=workbench
    if [ "$(grep -cF -- "$old" "$tree/$file")" -ne 1 ]; then
        echo "mutate: not exactly once in $file: $old" >&2
        exit 2
    fi
    OLD=$old NEW=$new perl -pi -e 's/\Q$ENV{OLD}\E/$ENV{NEW}/' "$tree/$file"
    tried[$part]=$((${tried[$part]:-0} + 1))
    if ! noticed; then
        missed[$part]=$((${missed[$part]:-0} + 1))
        printf 'not noticed: %s: %s -> %s\n' "$file" "$old" "$new"
    fi
    cp "$file" "$tree/$file"
done <tests/mutants.txt
for part in library workbench; do
    [ -z "${tried[$part]:-}" ] ||
        echo "$part: $((tried[$part] - ${missed[$part]:-0})) of ${tried[$part]} noticed"
done
