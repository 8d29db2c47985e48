#!/usr/bin/env bash
# Formatting of all our sources, and clang-tidy over what differs from the last commit; over all of
# them with --all, and in CI. Usage: scripts/lint.sh [--fix | --all]
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh clang clang-format clang-tidy cmake ninja-build libgtest-dev libbenchmark-dev \
    libcli11-dev libyaml-cpp-dev libfmt-dev nlohmann-json3-dev libeigen3-dev zlib1g-dev

mapfile -t sources < <(git ls-files '*.cpp' '*.h')
if [ "${1:-}" = --fix ]; then
    clang-format -i "${sources[@]}"
else
    clang-format --dry-run --Werror "${sources[@]}"
fi

# Workbench and command line are read together, in two units: their files share most headers.
tidy() { clang-tidy --quiet --config-file=.clang-tidy "$@"; }
export -f tidy
library=('common/*.cpp' 'ccm/*.cpp' 'color/*.cpp' 'matrix/*.cpp' 'platform/*.cpp'
    ':!platform/import')
if [ "${CI:-}" = true ] || [ "${1:-}" = --all ]; then
    cmake --preset clang -B build/lint -DIMGTUNE_UNITY=0 >/dev/null
    # Of what a unit includes the analyser reads functions where it is called so.
    find build/lint/workbench build/lint/cli -name 'unity_0_*.cxx' -execdir cp {} UnifiedSource.cxx \;
    {
        find build/lint/workbench build/lint/cli -name UnifiedSource.cxx
        git ls-files "${library[@]}"
    } | xargs -P "$(nproc)" -I{} bash -c 'tidy -p build/lint {}'
    exit 0
fi
mapfile -t units < <(comm -12 \
    <(git ls-files "${library[@]}" 'workbench/**/*.cpp' 'cli/*.cpp' | sort -u) \
    <({ git diff --name-only HEAD; git ls-files --others --exclude-standard; } | sort -u))
[ ${#units[@]} -eq 0 ] && { echo "lint: no changed source for clang-tidy"; exit 0; }
cmake --preset clang -B build/lint -DIMGTUNE_UNITY= >/dev/null
printf '%s\n' "${units[@]}" | xargs -P "$(nproc)" -I{} bash -c 'tidy -p build/lint {}'
