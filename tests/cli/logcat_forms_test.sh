#!/usr/bin/env bash
# Every form and modifier of docs/phone-logs.md, written by Android's own log library.
# Usage: logcat_forms_test.sh IMGTUNE LOGCAT_FORMS EXAMPLES
set -euo pipefail
imgtune=$1 forms=$2 examples=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
tuning=$examples/imx708-blend.yaml
grep -v '^#' "$examples/imx708-walk.csv" | sed -n 1,4p >walk.csv
mapfile -t on < <("$imgtune" props | sed 's/adb shell setprop \(.*\) \(.\)/--set=\1=\2/')
"$imgtune" replay "$tuning" walk.csv -o rows.csv "${on[@]}" 2>brief.log
"$imgtune" frames brief.log | cut -d, -f1-13 >wanted.csv
lines=$(wc -l <brief.log)
[ "$lines" -gt 500 ]

count=0
verified() {  # verified WHAT
    local told
    told=$("$imgtune" verify "$tuning" phone.log) || true
    [ "${told%%$'\n'*}" = "3 frames, $lines trace lines compared: equal" ] && return
    echo "$*: $told"
    head -n 3 phone.log
    exit 1
}
try() {  # try FORM MODIFIER...
    "$forms" "$@" <brief.log >phone.log
    verified "$@"
    count=$((count + 1))
    [ $# -eq 1 ] || return 0
    "$imgtune" frames phone.log | cut -d, -f1-13 | cmp wanted.csv - || { echo "$*: other frames"; exit 1; }
    sed -i 's/$/\r/' phone.log
    verified "$@" CRLF
}
for form in brief tag time threadtime long; do
    try $form
    for modifier in color year epoch monotonic usec nsec zone uid; do try $form $modifier; done
    try $form color year nsec zone uid
    try $form epoch usec uid
done
echo "$count forms"
