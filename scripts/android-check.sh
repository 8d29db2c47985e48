#!/usr/bin/env bash
# What can be checked without an Android tree: clang for Android takes every source of the library,
# without GNU extensions, and Android.bp lists the sources that CMake lists.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh clang g++-aarch64-linux-gnu

sources_in() { grep -oE '\b(ccm|color|common|matrix)/[a-z0-9_]+\.cpp' "$1" | sort -u; }
mapfile -t sources < <(sources_in Android.bp)
compare_with() {
    diff - <(printf '%s\n' "${sources[@]}") && return
    echo "android-check: Android.bp lists other sources than $1 (> there alone, < missing)" >&2
    exit 1
}
sources_in CMakeLists.txt | compare_with CMakeLists.txt
printf '%s\n' {ccm,color,common,matrix}/*.cpp | sort | compare_with "the folders"

# No bionic headers are at hand: those of 64-bit Arm Linux declare the same C and C++ standard.
cross=/usr/aarch64-linux-gnu/include
version=$(aarch64-linux-gnu-g++ -dumpversion)
for source in "${sources[@]}"; do
    clang++ --target=aarch64-linux-android21 -fsyntax-only -std=c++20 -fno-exceptions -fno-rtti \
        -nostdinc++ -isystem "$cross/c++/$version" -isystem "$cross/c++/$version/aarch64-linux-gnu" \
        -isystem "$cross" -I. -Iinclude -Iplatform/include \
        -Wall -Wextra -Wgnu -pedantic-errors -Werror "$source"
done
echo "android-check: ${#sources[@]} sources accepted"
