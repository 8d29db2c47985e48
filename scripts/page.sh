#!/usr/bin/env bash
# Builds the page, one file that runs the library in the browser, and says where it is.
set -euo pipefail
cd "$(dirname "$0")/.."
command -v npm >/dev/null || scripts/setup.sh nodejs npm
scripts/wasm.sh engine
cd web
[ node_modules -nt package-lock.json ] || npm ci --no-audit --no-fund --loglevel=error
npx --no-install tsc --noEmit
node build.mjs ../build/wasm/build ../build/imgtune.html
echo "the page: build/imgtune.html ($(wc -c <../build/imgtune.html) bytes)"
