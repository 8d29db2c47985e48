#!/bin/sh
# Every property that the library reads is named in the public headers and in docs/integration.md, and
# no other: switches_test.sh SOURCE_DIR
set -eu
cd "$1"
names() { grep -ohE 'debug\.smooth_[a-z_.]+[a-z]' "$@" | sort -u; }
read=$(names ccm/* color/*)
[ "$(echo "$read" | wc -l)" -eq 21 ]
for places in docs/integration.md 'include/imgtune/ccm.h include/imgtune/color.h'; do
    # shellcheck disable=SC2086
    named=$(names $places)
    [ "$named" = "$read" ] || { printf '%s\n' "read:" "$read" "named in $places:" "$named"; exit 1; }
done
