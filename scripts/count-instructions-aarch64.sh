#!/usr/bin/env bash
# Counts the instructions of a call of every scene on 64-bit Arm, under qemu-user.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh g++-aarch64-linux-gnu qemu-user

mkdir -p build/count-aarch64
run=build/count-aarch64/run_scene
[ -n "$(find bench common ccm color -newer "$run" 2>/dev/null | head -n 1)" ] || [ ! -x "$run" ] &&
    aarch64-linux-gnu-g++ -std=c++20 -O3 -DNDEBUG -static -fno-exceptions -fno-rtti -fno-math-errno \
        -fno-trapping-math -ffp-contract=off -Iinclude -I. bench/run_scene.cpp \
        bench/scenes.cpp bench/quiet_platform.cpp common/*.cpp ccm/*.cpp color/*.cpp -o "$run"

instructions() {  # one line a translated block, one instruction a block
    qemu-aarch64 -singlestep -d exec,nochain -D /dev/stdout "$run" "$1" "$2" | grep -c '^Trace'
}
count() { printf '%-32s %6d\n' "$1" $(( ($(instructions "$1" 60) - $(instructions "$1" 10)) / 50 )); }
export -f count instructions
export run
qemu-aarch64 "$run" | xargs -P "$(nproc)" -I{} bash -c 'count {}' | sort
