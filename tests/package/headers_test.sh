#!/bin/sh
# Each public header alone and twice, as C++14, and the layout of the records whatever options the
# caller's code is compiled with: headers_test.sh INCLUDE_DIR COMPILER FLAG...
set -eu
include_dir=$1 compiler=$2
shift 2
here=$(dirname "$0")
failed=0
for header in "$include_dir"/imgtune/*.h; do
    name=imgtune/$(basename "$header")
    printf '#include <%s>\n#include <%s>\n' "$name" "$name" |
        "$compiler" -std=c++14 -fsyntax-only -Werror "$@" -I"$include_dir" -x c++ - || {
        echo "$name does not stand alone"
        failed=1
    }
done

layouts() { "$compiler" -std=c++14 -fsyntax-only -I"$include_dir" "$@" "$here/layouts.cpp"; }
for option in -fno-short-enums -fshort-enums -fpack-struct=1 -fsigned-char -funsigned-char; do
    layouts "$@" "$option" || { echo "other layouts by $option"; failed=1; }
done

# A camera stack's record of other widths is refused.
stack="-I$here/camera_stack -DIMGTUNE_CAMERA_STATE_HEADER=<isp/enum_camera_info.h>"
# Flags are lists of words.
# shellcheck disable=SC2086
layouts "$@" $stack -fno-short-enums || { echo "a fitting record is refused"; failed=1; }
# shellcheck disable=SC2086
if layouts "$@" $stack -fshort-enums 2>&1 | grep -q 'members of other widths'; then :; else
    echo "a record with a member of one byte is not refused"
    failed=1
fi
exit $failed
