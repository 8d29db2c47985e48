#!/usr/bin/env bash
# Builds the page and uses it as people do: all of it in Chromium, a short list in Firefox and WebKit, too.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh chromium firefox-esr webkit2gtk-driver xvfb g++ cmake ninja-build libcli11-dev libyaml-cpp-dev libfmt-dev \
    nlohmann-json3-dev libeigen3-dev zlib1g-dev libraw-dev libtiff-dev libpng-dev
scripts/page.sh
{
    flock 9  # the Python module is built in the same folder
    cmake --preset release
    cmake --build --preset release --target imgtune
} 9>build/release.lock
export PAGE=$PWD/build/imgtune.html IMGTUNE=$PWD/build/release/cli/imgtune EXAMPLES=$PWD/examples
cd web
# One after the other: they measure times, and a browser takes both cores.
node --test tests/engines.test.mjs
node --test tests/page.test.mjs
