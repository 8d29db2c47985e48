#!/usr/bin/env bash
# Fuzzes every target. Usage: scripts/fuzz.sh [SECONDS PER TARGET, 7] [TARGET...]
# Inputs that were found interesting stay in build/fuzz/corpus, failures in build/fuzz/failures.
# Texts are kept short in runs of less than a minute: their readers' time goes with the length.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh clang libclang-rt-14-dev cmake ninja-build libcli11-dev libyaml-cpp-dev libfmt-dev \
    nlohmann-json3-dev libeigen3-dev zlib1g-dev libraw-dev libtiff-dev libpng-dev

seconds=${1:-7}
targets=("${@:2}")
if [ ${#targets[@]} -eq 0 ]; then
    targets=(smooth_ccm smooth_color blocks readers logcat_reader picture_reader http_request)
fi
cmake --preset asan
cmake --build --preset asan --target "${targets[@]/#/fuzz_}"

mkdir -p build/fuzz/failures
longest_text=$((seconds < 60 ? 512 : 4096))
# Freed memory is kept for a while and with a short stack: enough to see that it was used again.
export ASAN_OPTIONS=malloc_context_size=1:quarantine_size_mb=1
status=0
for target in "${targets[@]}"; do
    found=build/fuzz/corpus/$target
    log=build/fuzz/$target.log
    mkdir -p "$found"
    # The outer limit ends a program that hangs in its own report.
    if timeout -s KILL $((seconds + 60)) "build/asan/fuzz/fuzz_$target" \
        "-max_total_time=$seconds" -timeout=10 -rss_limit_mb=1024 -len_control=10 -entropic=0 \
        "-max_len=$([[ $target = *reader* ]] && echo $longest_text || echo 800)" \
        "-artifact_prefix=build/fuzz/failures/$target-" "$found" "fuzz/corpus/$target" \
        >"$log" 2>&1; then
        printf '%-18s %s\n' "$target" "$(tail -n 1 "$log")"
    else
        status=1
        printf '%-18s FAILED, see %s\n' "$target" "$log"
        grep -E 'does not hold|runtime error|ERROR|SUMMARY|Test unit written' "$log" || true
    fi
done
exit $status
