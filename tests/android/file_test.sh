#!/bin/sh
# The library's file as Android's loader sees it: file_test.sh LIBRARY SYMBOLS_BESIDE_IT
set -eu
library=$1 symbols=$2
here=$(dirname "$0")
nm=aarch64-linux-gnu-nm readelf=aarch64-linux-gnu-readelf
export LC_ALL=C
failed=0

is() {  # is WHAT EXPECTED FOUND
    [ "$2" = "$3" ] && return
    printf '%s: %s: expected "%s", found "%s"\n' "$library" "$1" "$2" "$3" >&2
    failed=1
}

segments() { "$readelf" -lW "$library" | awk -v type="$1" '$1 == type '"$2" | sort -u | xargs; }
dynamic() { "$readelf" -dW "$library" | grep -cE "\(($1)\)" || true; }
note() { "$readelf" -nW "$1" | sed -n "s/.*$2: //p"; }

# The fields are awk's.
# shellcheck disable=SC2016
is "alignment of loaded segments" 0x4000 "$(segments LOAD '{ print $NF }')"
is "segments writable and executable" 0 "$("$readelf" -lW "$library" | grep -c ' RWE 0x' || true)"
# shellcheck disable=SC2016
is "stack" RW "$(segments GNU_STACK '{ print $7 }')"
is "read-only after relocation" 1 "$(segments GNU_RELRO '{ n++ } END { print n }')"
is "thread-local storage" "" "$(segments TLS '{ print }')"
is "bound at load time" 1 "$("$readelf" -dW "$library" | grep -c '(FLAGS_1) .*NOW')"
is "text relocations" 0 "$(dynamic TEXTREL)"
is "constructors and destructors" 0 "$(dynamic '(PRE)?(INIT|FINI)(_ARRAY)?(SZ)?')"
is "packed relocations, under Android's tags" 3 "$("$readelf" -dW "$library" | grep -c ' 6fffe00[013]')"
is "relocations of other kinds" R_AARCH64_JUMP_SLOT \
    "$("$readelf" -rW "$library" | awk '$3 ~ /^R_/ { print $3 }' | sort -u | xargs)"
is "branch protection" "BTI, PAC" "$(note "$library" 'AArch64 feature' | grep -oE 'BTI, PAC')"
is "writable data" ".data 000004" "$("$readelf" -SW "$library" | sed 's/^ *\[ *[0-9]*\] //' |
    awk '$7 ~ /W/ && $1 !~ /^\.(data\.rel\.ro|dynamic|got|got\.plt|relro_padding)$/ { print $1, $5 }' | xargs)"
is "symbols of the static linker" "" "$("$readelf" -SW "$library" | grep -oE '\.(symtab|debug_[a-z]+)')"
is "build id of the symbols" "$(note "$library" 'Build ID')" "$(note "$symbols" 'Build ID')"
is "length of the build id" 40 "$(note "$library" 'Build ID' | tr -d '\n' | wc -c)"
is "debug information beside it" 1 "$("$readelf" -SW "$symbols" | grep -c '\.debug_info ')"

"$here/../package/library_file_test.sh" "$library" "$here/../package/exported_symbols.txt" "$nm" \
    "$readelf" libc.so libm.so libcutils.so liblog.so >"$symbols.diff" || {
    cat "$symbols.diff" >&2
    failed=1
}
exit $failed
