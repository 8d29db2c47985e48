#!/usr/bin/env bash
# Builds the Python module for the system's python3 and runs its tests and examples.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh g++ cmake ninja-build libcli11-dev libyaml-cpp-dev libfmt-dev nlohmann-json3-dev \
    libeigen3-dev pybind11-dev python3-pybind11 python3-dev python3-numpy python3-pytest \
    python3-pandas python3-matplotlib python3-distributed

cmake --preset release -DIMGTUNE_BUILD_PYTHON=ON
cmake --build --preset release --target imgtune_python imgtune
export PYTHONPATH=$PWD/build/release/python PYTHONDONTWRITEBYTECODE=1 MPLBACKEND=Agg
export IMGTUNE_EXAMPLES=$PWD/examples IMGTUNE_TOOL=$PWD/build/release/cli/imgtune
/usr/bin/python3 -m pytest -q -p no:cacheprovider python/tests
/usr/bin/python3 - <<'PY'
import doctest, sys
import imgtune, imgtune._core
runs = [doctest.testmod(m, extraglobs={"imgtune": imgtune}) for m in (imgtune, imgtune._core)]
sys.exit(any(run.failed for run in runs))
PY
