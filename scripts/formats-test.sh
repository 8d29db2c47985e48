#!/usr/bin/env bash
# Holds what other programs read (JSON Schema, SARIF, JUnit XML) against their published schemas.
set -euo pipefail
cd "$(dirname "$0")/.."
command -v npm >/dev/null || scripts/setup.sh nodejs npm
scripts/setup.sh libxml2-utils g++ cmake ninja-build libcli11-dev libyaml-cpp-dev libfmt-dev nlohmann-json3-dev \
    libeigen3-dev zlib1g-dev
{
    flock 9  # the page's test builds in the same folder
    cmake --preset release
    cmake --build --preset release --target imgtune
} 9>build/release.lock
export IMGTUNE=$PWD/build/release/cli/imgtune EXAMPLES=$PWD/examples
cd tests/formats
[ node_modules -nt package-lock.json ] || npm ci --no-audit --no-fund --loglevel=error
node --test .
