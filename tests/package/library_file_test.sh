#!/bin/sh
# The library as the dynamic linker sees it: library_file_test.sh LIBRARY SYMBOLS NM READELF NEEDED...
set -eu
library=$1 symbols=$2 nm=$3 readelf=$4
shift 4
export LC_ALL=C
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failed=0

same() {  # same WHAT: the lines of $work/expected and $work/found
    diff -u "$work/expected" "$work/found" >"$work/diff" && return
    echo "$1 (- expected, + found):"
    sed 1,2d "$work/diff"
    failed=1
}

grep -v -e '^#' -e '^$' "$symbols" | sort >"$work/expected"
"$nm" -DC --defined-only "$library" | sed 's/^[0-9a-f]* . //' | sort >"$work/found"
same "symbols defined"

# A platform function that is imported under a version is bound to a library at link time.
printf '%s\n' __android_log_print property_get >"$work/expected"
"$nm" -D --undefined-only "$library" | sed -n 's/^ *U //p' |
    grep -xE '__android_log_print|property_get' | sort >"$work/found"
same "platform functions imported without a version"

printf '%s\n' "$@" | sort >"$work/expected"
"$readelf" -d "$library" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' | grep -v '^ld-linux' |
    sort >"$work/found"
same "libraries needed"

echo libimgtune.ispfeature.so >"$work/expected"
"$readelf" -d "$library" | sed -n 's/.*(SONAME).*\[\(.*\)\]/\1/p' >"$work/found"
same "SONAME"
exit $failed
