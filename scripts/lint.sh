#!/usr/bin/env bash
# Formatting of all our sources, and clang-tidy over what differs from the last commit; over all of
# them with --all; over the library in CI. Usage: scripts/lint.sh [--fix | --all]
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh clang clang-format clang-tidy cmake ninja-build libgtest-dev libbenchmark-dev \
    libcli11-dev libyaml-cpp-dev libfmt-dev nlohmann-json3-dev libeigen3-dev

mapfile -t sources < <(git ls-files '*.cpp' '*.h')
if [ "${1:-}" = --fix ]; then
    clang-format -i "${sources[@]}"
else
    clang-format --dry-run --Werror "${sources[@]}"
fi

library=('common/*.cpp' 'ccm/*.cpp' 'color/*.cpp' 'matrix/*.cpp' 'platform/*.cpp'
    ':!platform/import')
mapfile -t units < <(git ls-files "${library[@]}" 'workbench/**/*.cpp' 'cli/*.cpp' | sort -u)
if [ "${CI:-}" = true ]; then
    mapfile -t units < <(git ls-files "${library[@]}")
elif [ "${1:-}" != --all ]; then
    mapfile -t units < <(comm -12 <(printf '%s\n' "${units[@]}") \
        <({ git diff --name-only HEAD; git ls-files --others --exclude-standard; } | sort -u))
fi
[ ${#units[@]} -eq 0 ] && { echo "lint: no changed source for clang-tidy"; exit 0; }
cmake --preset clang -B build/lint >/dev/null
printf '%s\n' "${units[@]}" | xargs -P "$(nproc)" -n 4 clang-tidy --quiet -p build/lint
