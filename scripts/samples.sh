#!/usr/bin/env bash
# Makes the CCM parts of the sample tunings anew from examples/calibrations; what else they hold
# stays. Usage: scripts/samples.sh IMGTUNE
set -euo pipefail
imgtune=$(realpath "${1:?usage: scripts/samples.sh IMGTUNE}")
cd "$(dirname "$0")/../examples"
part=$(mktemp)
trap 'rm -f "$part"' EXIT

# sample TUNING NAME CALIBRATION OPTION...
sample() {
    "$imgtune" import "calibrations/$3" --name "$2" --color-from "$1" --force -o "$part" \
        "${@:4}" >/dev/null 2>&1
    { sed '/^[^#]/,$d' "$1"; sed '/^#/d' "$part"; } >"$part.whole"
    mv "$part.whole" "$1"
}

smooth=2000,2200,2600,3000,3600,4600,6100,8600
sample imx477-polynomial.yaml "Sony IMX477, polynomial" imx477.json --method polynomial --cts $smooth
sample imx708-blend.yaml "Sony IMX708, blend" imx708.json
sample imx477-measured-blend.yaml "Sony IMX477 as measured, blend" imx477-measured.json \
    --cts 2360,2870,2970,3700,4400,4715,5920,9050
sample synthetic-stretched.yaml "synthetic, IMX477 gains times 3" imx477.json --stretch 3 --cts $smooth
