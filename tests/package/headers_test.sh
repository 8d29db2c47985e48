#!/bin/sh
# Each public header alone and twice, as C++14: headers_test.sh INCLUDE_DIR COMPILER FLAG...
set -eu
include_dir=$1 compiler=$2
shift 2
failed=0
for header in "$include_dir"/imgtune/*.h; do
    name=imgtune/$(basename "$header")
    printf '#include <%s>\n#include <%s>\n' "$name" "$name" |
        "$compiler" -std=c++14 -fsyntax-only -Werror "$@" -I"$include_dir" -x c++ - || {
        echo "$name does not stand alone"
        failed=1
    }
done
exit $failed
