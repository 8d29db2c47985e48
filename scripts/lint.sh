#!/usr/bin/env bash
# Formatting and clang-tidy over our sources. Usage: scripts/lint.sh [--fix]
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh clang-format clang-tidy cmake ninja-build

mapfile -t sources < <(git ls-files '*.cpp' '*.h')
if [ "${1:-}" = --fix ]; then
    clang-format -i "${sources[@]}"
else
    clang-format --dry-run --Werror "${sources[@]}"
fi

[ -f build/clang/compile_commands.json ] || cmake --preset clang >/dev/null
mapfile -t units < <(git ls-files 'common/*.cpp' 'ccm/*.cpp' 'color/*.cpp' 'matrix/*.cpp' \
    'platform/*.cpp' 'tools/*.cpp' 'tools/**/*.cpp' | sort -u)
printf '%s\n' "${units[@]}" | xargs -P "$(nproc)" -n 4 clang-tidy --quiet -p build/clang
