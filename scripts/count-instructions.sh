#!/usr/bin/env bash
# Counts the instructions of a call of every scene, on x86-64 (callgrind) and on 64-bit Arm
# (one-instruction blocks under qemu-user), and compares them with bench/instructions.txt, one scene a
# line with both counts: more than 4 per cent above the record is a failure.
# Usage: scripts/count-instructions.sh [--renew]
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh g++ g++-aarch64-linux-gnu qemu-user cmake ninja-build valgrind libbenchmark-dev

build() {  # build PRESET FOLDER
    cmake --preset "$1" -DIMGTUNE_BUILD_WORKBENCH=OFF -DIMGTUNE_BUILD_TESTS=OFF \
        -DIMGTUNE_BUILD_BENCH=ON -B "$2" >/dev/null
    cmake --build "$2" --target run_scene >/dev/null
}
build release build/count
build aarch64 build/count-aarch64

x86_64() {
    valgrind --tool=callgrind --callgrind-out-file=/dev/null build/count/bench/run_scene "$1" "$2" \
        2>&1 | awk '/Collected/ { print $NF }'
}
count() {  # the start-up is in both runs and falls out
    echo "$1 $(( ($(x86_64 "$1" 1100) - $(x86_64 "$1" 100)) / 1000 ))"
}
export -f count x86_64
scenes=$(build/count/bench/run_scene)
on_x86_64=$(xargs -P "$(nproc)" -I{} bash -c 'count {}' <<<"$scenes")
# A line of the log is a block that is entered, with the function's name last.
on_aarch64=$(qemu-aarch64 -singlestep -d exec,nochain -D /dev/stdout \
    build/count-aarch64/bench/run_scene --all | awk '
    $NF == "counting_begins" { n = 0 }
    $NF == "counting_ends" { print int(n / 50); n = 0 }
    /^Trace/ { ++n }' | paste -d' ' <(cat <<<"$scenes") -)
counts=$(join <(sort <<<"$on_x86_64") <(sort <<<"$on_aarch64"))

if [ "${1:-}" = --renew ]; then
    printf '%s\n' "$counts" >bench/instructions.txt
    exit 0
fi
printf '%s\n' "$counts" | join -a 1 - bench/instructions.txt | awk '
    function line(machine, now, recorded) {
        change = recorded ? 100 * (now - recorded) / recorded : 100
        verdict = change > 4 ? "  TOO MANY" : ""
        printf "%-34s %-8s %6d  recorded %6d  %+5.1f %%%s\n", $1, machine, now, recorded, change, verdict
        if (change > 4) bad = 1
    }
    { line("x86-64", $2, $4); line("aarch64", $3, $5); ++scenes }
    END { if (scenes == 0 || bad) exit 1 }'
