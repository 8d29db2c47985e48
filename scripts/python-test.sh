#!/usr/bin/env bash
# Builds the Python module for the system's python3 and runs its tests and examples, holds its stubs
# against it, and installs it with pip. With --sanitize: the tests alone, under AddressSanitizer and
# UndefinedBehaviorSanitizer.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh g++ cmake ninja-build libcli11-dev libyaml-cpp-dev libfmt-dev nlohmann-json3-dev \
    libeigen3-dev zlib1g-dev libraw-dev libtiff-dev libpng-dev pybind11-dev python3-pybind11 python3-dev python3-numpy python3-pytest \
    python3-pandas python3-matplotlib python3-distributed python3-pip python3-setuptools \
    python3-wheel mypy

preset=release build=build/release options=()
if [ "${1:-}" = --sanitize ]; then
    preset=debug build=build/python-sanitized
    options=(-DCMAKE_CXX_FLAGS=-O1 "-DIMGTUNE_SANITIZE=address,undefined" -DIMGTUNE_BUILD_TESTS=OFF
        -DIMGTUNE_BUILD_BENCH=OFF -DIMGTUNE_UNITY=8)
fi
mkdir -p build
{
    flock 9  # the page's test builds in the same folder
    cmake --preset "$preset" -B "$build" -DIMGTUNE_BUILD_PYTHON=ON "${options[@]}"
    cmake --build "$build" --target imgtune_python imgtune
} 9>build/release.lock
export PYTHONPATH=$PWD/$build/python PYTHONDONTWRITEBYTECODE=1 MPLBACKEND=Agg
export IMGTUNE_EXAMPLES=$PWD/examples IMGTUNE_TOOL=$PWD/$build/cli/imgtune
pytest=(/usr/bin/python3 -m pytest -q -p no:cacheprovider python/tests)
if [ "${1:-}" = --sanitize ]; then
    # Python itself is not instrumented: the runtimes come first, and its own leaks stay its own.
    # What is freed is kept for a while, so that memory grows.
    preload="$(g++ -print-file-name=libasan.so) $(g++ -print-file-name=libstdc++.so)"
    LD_PRELOAD=$preload ASAN_OPTIONS=detect_leaks=0 "${pytest[@]}" -k 'not leave_no_memory'
    exit
fi

"${pytest[@]}"
/usr/bin/python3 - <<'PY'
import doctest, sys
import imgtune, imgtune._core, numpy
names = {"imgtune": imgtune, "numpy": numpy}
runs = [doctest.testmod(m, extraglobs=names) for m in (imgtune, imgtune._core)]
sys.exit(any(run.failed or not run.attempted for run in runs))
PY
/usr/bin/python3 -m mypy.stubtest imgtune._core imgtune.library --mypy-config-file pyproject.toml \
    --allowlist <(echo 'imgtune\._core\.(State|Tuning)')  # their metaclass is pybind11's

installed=$PWD/build/python-installed
rm -rf "$installed"
CXX=g++ /usr/bin/python3 -m pip install -q --no-build-isolation --no-deps --no-index --target "$installed" .
(cd / && PYTHONPATH=$installed /usr/bin/python3 "$IMGTUNE_EXAMPLES/python_walk.py" /dev/null)
