#!/usr/bin/env bash
# Makes the CCM parts of the sample tunings anew from examples/calibrations; what else they hold
# stays. Usage: scripts/samples.sh IMGTUNE
set -euo pipefail
imgtune=$(realpath "${1:?usage: scripts/samples.sh IMGTUNE}")
cd "$(dirname "$0")/../examples"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# sample TUNING CALIBRATION OPTION...
sample() {
    "$imgtune" import "calibrations/$2" --fit points --force -o "$work/made" "${@:3}" >/dev/null 2>"$work/said" ||
        { cat "$work/said" >&2; exit 1; }
    {
        sed '/^ccm:/,$d' "$1"
        sed -n '/^ccm:/,$p' "$work/made"
        sed -n '/^color:/,$p' "$1"
    } >"$work/whole"
    cp "$work/whole" "$1"
}

smooth=2000,2200,2600,3000,3600,4600,6100,8600
sample imx477-polynomial.yaml imx477.json --method polynomial --cts $smooth
sample imx708-blend.yaml imx708.json --method blend --cts 2964,3610,4640,5910,7590
sample imx477-measured-blend.yaml imx477-measured.json --method blend --cts 2360,2870,2970,3700,4400,4715,5920,9050
sample synthetic-stretched.yaml imx477.json --method blend --stretch 3 --cts $smooth
