#!/usr/bin/env bash
# Builds the library for Android on 64-bit Arm, optimised, for size and not optimised, checks the
# files, and runs the tests of the exports and the long mixed run on each of them under qemu-user,
# with pages of 4 and 16 KiB.
# The optimised file is left in build/android, stripped, with its symbols beside it.
#
# Debian's clang and lld stand in for the NDK's; libc++'s headers are of the same release, the C
# headers are those of 64-bit Arm Linux.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh clang-19 lld-19 cmake ninja-build g++-aarch64-linux-gnu qemu-user googletest
scripts/android-bp.sh

work=$PWD/build/android
scripts/setup.sh --unpack "$work/libc++" libc++-19-dev

sysroot=$work/sysroot/usr
libraries=$sysroot/lib/aarch64-linux-android/28
rm -rf "$sysroot"
mkdir -p "$sysroot/include" "$libraries"
ln -s /usr/aarch64-linux-gnu/include/* "$sysroot/include/"
ln -sfn "$work/libc++/usr/lib/llvm-19/include/c++" "$sysroot/include/c++"
for name in libc libm; do
    clang++-19 --target=aarch64-linux-android28 -ffreestanding -fPIC -shared -nostdlib -fuse-ld=lld \
        "-Wl,-soname,$name.so" "tests/android/$name.cpp" -o "$libraries/$name.so"
done
tests/package/headers_test.sh include clang++-19 --target=aarch64-linux-android28 \
    --sysroot="$work/sysroot" -Weverything -Wno-c++98-compat -Wno-c++98-compat-pedantic

# The device's C libraries as the tests find them: they hand on to those of 64-bit Arm Linux.
mkdir -p "$work/device"
aarch64-linux-gnu-g++ -std=c++20 -O1 -Wall -Wextra -Werror -fPIC -shared -Wl,-soname,libc.so \
    tests/android/loader.cpp -o "$work/device/libc.so"
aarch64-linux-gnu-gcc -shared -Wl,-soname,libm.so -Wl,--no-as-needed -lm -o "$work/device/libm.so"
cmake --preset aarch64 >/dev/null
cmake --build --preset aarch64 --target exports_test matrix_test digest_test

# run FOLDER TEST PAGE_SIZE [FILTER]: a test with the library of that folder, loaded as on Android.
run() {
    local log=$1/$2-$3.log program
    program=$(find build/aarch64/tests -name "$2" -type f)
    if ! qemu-aarch64 -p "$3" -L /usr/aarch64-linux-gnu -E "LD_PRELOAD=$work/device/libc.so" \
        -E "LD_LIBRARY_PATH=$1:$work/device:build/aarch64/platform" "$program" "--gtest_filter=${4:-*}" >"$log" 2>&1 ||
        ! grep -q '^loaded as on Android' "$log"; then
        cat "$log"
        echo "android: $2 fails on $1 with pages of $3 bytes" >&2
        return 1
    fi
}

# try BUILD: the quick tests with small pages, where only loading differs, and all of them with large
# ones; those that compare long runs with and without logging on the optimised build alone.
try() {
    local folder=$work/$1 quick='-*LoggingChanges*' most='*'
    [ "$1" = Release ] || most=$quick
    run "$folder/stripped" exports_test 4096 "$quick" &&
        run "$folder/stripped" exports_test 16384 "$most" &&
        run "$folder/stripped" matrix_test 16384 &&
        run "$folder/stripped" digest_test 16384 || return
    echo "android: $1, $(stat -c %s "$folder/stripped/$name") bytes: $(cat "$folder"/stripped/*-16384.log |
        grep -c '^\[       OK') tests pass"
}

name=libimgtune.ispfeature.so tries=()
for build in Release MinSizeRel Debug; do
    folder=$work/$build
    cmake --preset android -B "$folder" "-DCMAKE_BUILD_TYPE=$build" \
        "-DCMAKE_CXX_FLAGS_MINSIZEREL=-Oz -DNDEBUG" -DIMGTUNE_UNITY=8 >/dev/null
    cmake --build "$folder"
    mkdir -p "$folder/stripped"
    aarch64-linux-gnu-objcopy --only-keep-debug "$folder/$name" "$folder/stripped/$name.debug"
    aarch64-linux-gnu-objcopy --strip-all "$folder/$name" "$folder/stripped/$name"
    tests/android/file_test.sh "$folder/stripped/$name" "$folder/stripped/$name.debug"
    if [ "$build" = Release ]; then
        size=$(stat -c %s "$folder/stripped/$name")
        [ "$size" -le $((96 * 1024)) ] || { echo "android: $size bytes, at most 96 KiB" >&2; exit 1; }
        cp "$folder/stripped/$name" "$folder/stripped/$name.debug" "$work/"
    fi
    try "$build" &
    tries+=($!)
done
for each in "${tries[@]}"; do wait "$each"; done
