#!/usr/bin/env bash
# Formatting and clang-tidy over our sources. Usage: scripts/lint.sh [--fix]
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh clang clang-format clang-tidy cmake ninja-build libgtest-dev libbenchmark-dev \
    libcli11-dev libyaml-cpp-dev libfmt-dev nlohmann-json3-dev

mapfile -t sources < <(git ls-files '*.cpp' '*.h')
if [ "${1:-}" = --fix ]; then
    clang-format -i "${sources[@]}"
else
    clang-format --dry-run --Werror "${sources[@]}"
fi

cmake --preset clang -B build/lint >/dev/null
mapfile -t units < <(git ls-files 'common/*.cpp' 'ccm/*.cpp' 'color/*.cpp' 'matrix/*.cpp' \
    'platform/*.cpp' 'workbench/**/*.cpp' 'cli/*.cpp' | sort -u)
printf '%s\n' "${units[@]}" | xargs -P "$(nproc)" -n 4 clang-tidy --quiet -p build/lint
