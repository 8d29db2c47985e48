#!/usr/bin/env bash
# Counts the instructions of a call of every scene (callgrind) and compares them with
# bench/instructions.txt: more than 4 per cent above the record is a failure.
# Usage: scripts/count-instructions.sh [--renew]
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh g++ cmake ninja-build valgrind libbenchmark-dev

cmake --preset release -DIMGTUNE_BUILD_WORKBENCH=OFF -DIMGTUNE_BUILD_TESTS=OFF -B build/count >/dev/null
cmake --build build/count --target run_scene >/dev/null
run=build/count/bench/run_scene

instructions() {
    valgrind --tool=callgrind --callgrind-out-file=/dev/null "$run" "$1" "$2" 2>&1 |
        awk '/Collected/ { print $NF }'
}
count() {  # the start-up is in both runs and falls out
    echo "$1 $(( ($(instructions "$1" 1100) - $(instructions "$1" 100)) / 1000 ))"
}
export -f count instructions
export run
counts=$("$run" | xargs -P "$(nproc)" -I{} bash -c 'count {}' | sort)

if [ "${1:-}" = --renew ]; then
    printf '%s\n' "$counts" >bench/instructions.txt
    exit 0
fi
printf '%s\n' "$counts" | join - bench/instructions.txt | awk '
    { change = 100 * ($2 - $3) / $3
      printf "%-32s %6d  recorded %6d  %+5.1f %%%s\n", $1, $2, $3, change, (change > 4 ? "  TOO MANY" : "")
      if (change > 4) bad = 1
      ++n }
    END { if (n == 0 || bad) exit 1 }'
