#!/usr/bin/env bash
# Every form and modifier of docs/phone-logs.md, written by Android's own log library.
# Usage: logcat_forms_test.sh IMGTUNE LOGCAT_FORMS EXAMPLES
set -euo pipefail
imgtune=$1 forms=$2 examples=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
tuning=$examples/imx708-blend.yaml
grep -v '^#' "$examples/imx708-walk.csv" | sed -n 1,7p >walk.csv
mapfile -t on < <("$imgtune" props | sed 's/adb shell setprop \(.*\) \(.\)/--set=\1=\2/')
"$imgtune" replay "$tuning" walk.csv -o rows.csv "${on[@]}" 2>brief.log
"$imgtune" frames brief.log | cut -d, -f1-13 >wanted.csv
lines=$(wc -l <brief.log)
[ "$lines" -gt 1000 ]

count=0
try() {  # try FORM MODIFIER...
    "$forms" "$@" <brief.log >phone.log
    for ending in LF CRLF; do
        [ $ending = LF ] || sed -i 's/$/\r/' phone.log
        local told
        told=$("$imgtune" verify "$tuning" phone.log) || { echo "$*, $ending: $told"; head -n 3 phone.log; exit 1; }
        [ "$told" = "6 frames, $lines trace lines compared: equal" ] || { echo "$*, $ending: $told"; head -n 3 phone.log; exit 1; }
        "$imgtune" frames phone.log | cut -d, -f1-13 | cmp wanted.csv - || { echo "$*, $ending: other frames"; exit 1; }
    done
    count=$((count + 1))
}
for form in brief tag time threadtime long; do
    try $form
    for modifier in color year epoch monotonic usec nsec zone uid; do try $form $modifier; done
    try $form color year nsec zone uid
    try $form epoch usec uid
done
echo "$count forms"
