#!/usr/bin/env bash
# Compiles library and workbench for WebAssembly and runs the long mixed run under node: the digest
# must be the one that every other build gives. Usage: scripts/wasm.sh [TARGET, default all]
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh emscripten nodejs cmake ninja-build googletest libfmt-dev nlohmann-json3-dev \
    libeigen3-dev ccache dpkg-dev
export NODE_PATH=/usr/share/nodejs  # where Debian keeps the modules that its linker wants
export CMAKE_CXX_COMPILER_LAUNCHER=ccache

work=$PWD/build/wasm
mkdir -p "$work"
if [ ! -d "$work/yaml-cpp" ]; then
    # Sources, through lists of our own: the system's stay as they are.
    lists=$work/apt
    mkdir -p "$lists/lists/partial" "$lists/parts"
    { cat /etc/apt/sources.list /etc/apt/sources.list.d/*.list 2>/dev/null || true; } |
        sed -n 's/^deb /deb-src /p' >"$lists/parts/from.list"
    { cat /etc/apt/sources.list.d/*.sources 2>/dev/null || true; } |
        sed 's/^Types:.*/Types: deb-src/' >"$lists/parts/from.sources"
    options=(-o "Dir::Etc::sourcelist=/dev/null" -o "Dir::Etc::sourceparts=$lists/parts"
        -o "Dir::State::lists=$lists/lists" -o APT::Sandbox::User=root)
    apt-get "${options[@]}" update -qq
    (cd "$lists" && apt-get "${options[@]}" source -qq --download-only yaml-cpp)
    dpkg-source -x --no-check "$lists"/yaml-cpp_*.dsc "$work/yaml-cpp.part" >/dev/null
    mv "$work/yaml-cpp.part" "$work/yaml-cpp"
fi

# The headers of the host's libraries that have nothing but headers.
headers=$work/include
mkdir -p "$headers"
for name in fmt nlohmann eigen3/Eigen eigen3/unsupported; do ln -sfn "/usr/include/$name" "$headers/$(basename "$name")"; done

cmake -G Ninja -S wasm -B "$work/build" -DCMAKE_BUILD_TYPE=Release -DHOST_HEADERS="$headers" \
    -DYAML_CPP="$work/yaml-cpp" -DGOOGLETEST=/usr/src/googletest/googletest \
    -DCMAKE_TOOLCHAIN_FILE=/usr/share/emscripten/cmake/Modules/Platform/Emscripten.cmake >/dev/null
cmake --build "$work/build" --target "${1:-all}"
[ "${1:-all}" != all ] || node --no-experimental-fetch "$work/build/digest_test.js"
