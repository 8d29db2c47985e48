#!/bin/sh
# The version, which stands in CMakeLists.txt alone.
sed -n 's/^project(imgtune VERSION \([0-9.]*\).*/\1/p' "$(dirname "$0")/../CMakeLists.txt"
