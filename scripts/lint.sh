#!/usr/bin/env bash
# Shell scripts and the formatting of all our sources, and clang-tidy over what differs from the last commit; over all of
# them with --all, and in CI. Usage: scripts/lint.sh [--fix | --all]
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh shellcheck clang clang-format clang-tidy cmake ninja-build libgtest-dev libbenchmark-dev \
    libcli11-dev libyaml-cpp-dev libfmt-dev nlohmann-json3-dev libeigen3-dev zlib1g-dev libraw-dev libtiff-dev libpng-dev

shellcheck --severity=warning scripts/*.sh tests/*/*.sh .ci/run
mapfile -t sources < <(git ls-files '*.cpp' '*.h')
if [ "${1:-}" = --fix ]; then
    clang-format -i "${sources[@]}"
else
    clang-format --dry-run --Werror "${sources[@]}"
fi

# Library, workbench and command line are read as a unit each: their files share most headers.
tidy() { clang-tidy --quiet --config-file=.clang-tidy "$@"; }
export -f tidy
platform=('platform/*.cpp' ':!platform/import')
if [ "${CI:-}" = true ] || [ "${1:-}" = --all ]; then
    cmake --preset clang-debug -B build/lint -DIMGTUNE_UNITY=0 >/dev/null
    # Of what a unit includes the analyser reads functions where it is called so.
    parts=(build/lint/workbench build/lint/cli build/lint/CMakeFiles)
    find "${parts[@]}" -name 'unity_0_*.cxx' -execdir cp {} UnifiedSource.cxx \;
    sed -i 's|/unity_0_cxx\.cxx|/UnifiedSource.cxx|g' build/lint/compile_commands.json
    {
        find "${parts[@]}" -name UnifiedSource.cxx
        git ls-files "${platform[@]}"
    } | xargs -P "$(nproc)" -I{} bash -c 'tidy -p build/lint {}'
    exit 0
fi
mapfile -t units < <(comm -12 \
    <(git ls-files {common,ccm,color,matrix,cli}/'*.cpp' 'workbench/**/*.cpp' "${platform[@]}" | sort -u) \
    <({ git diff --name-only HEAD; git ls-files --others --exclude-standard; } | sort -u))
[ ${#units[@]} -eq 0 ] && { echo "lint: no changed source for clang-tidy"; exit 0; }
cmake --preset clang-debug -B build/lint -DIMGTUNE_UNITY= >/dev/null
printf '%s\n' "${units[@]}" | xargs -P "$(nproc)" -I{} bash -c 'tidy -p build/lint {}'
