#!/usr/bin/env bash
# Compares the exported interface with the record abi/imgtune.abi: a change that breaks callers
# fails. After an intended change: scripts/abi.sh --renew
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh g++ cmake ninja-build abigail-tools

export CCACHE_NOHASHDIR=1  # folders are not recorded: objects of another will do
cmake --preset debug -B build/abi -DIMGTUNE_BUILD_WORKBENCH=OFF -DIMGTUNE_BUILD_TESTS=OFF \
    -DIMGTUNE_BUILD_BENCH=OFF -DIMGTUNE_UNITY=8 >/dev/null
cmake --build build/abi --target ispfeature
now=build/abi/imgtune.abi
abidw --headers-dir include --drop-private-types --exported-interfaces-only --no-corpus-path --no-comp-dir-path --no-show-locs --no-elf-needed \
    --no-architecture --type-id-style hash build/abi/libimgtune.ispfeature.so | sed "s|path='$PWD/|path='|" >"$now"

if [ "${1:-}" = --renew ]; then
    mkdir -p abi
    cp "$now" abi/imgtune.abi
    echo "abi: renewed abi/imgtune.abi"
    exit 0
fi
# Additions break no caller, but belong into the record.
if ! abidiff --no-show-locs abi/imgtune.abi "$now"; then
    echo "abi: the interface differs from abi/imgtune.abi; if that is meant: scripts/abi.sh --renew" >&2
    exit 1
fi
echo "abi: unchanged"
