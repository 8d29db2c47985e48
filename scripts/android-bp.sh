#!/usr/bin/env bash
# Compares Android.bp, and the sources in the folders, with cmake/library.cmake. After a change there:
# scripts/android-bp.sh --renew
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh cmake

now=build/android/Android.bp
mkdir -p build/android
cmake "-DOUTPUT=$PWD/$now" -P cmake/android_bp.cmake
if ! diff <(printf '%s\n' {ccm,color,common,matrix}/*.cpp | sort) \
    <(grep -oE '"[a-z0-9_/]+\.cpp"' "$now" | tr -d '"' | sort); then
    echo "android-bp: cmake/library.cmake lists other sources than the folders (< there alone, > gone)" >&2
    exit 1
fi
if [ "${1:-}" = --renew ]; then
    cp "$now" Android.bp
elif ! diff -u Android.bp "$now"; then
    echo "android-bp: Android.bp is stale (-) for cmake/library.cmake (+): scripts/android-bp.sh --renew" >&2
    exit 1
fi
