#!/usr/bin/env bash
# Installs what is missing, builds the tool and shows what the library makes of light, on the tuning
# of a real sensor.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh g++ cmake ninja-build libcli11-dev libyaml-cpp-dev libfmt-dev nlohmann-json3-dev libeigen3-dev zlib1g-dev libraw-dev libtiff-dev libpng-dev

mkdir -p build
echo "building the tool, some 2 minutes on two cores (log: build/demo.log) ..." >&2
# Not optimised: it is built once and runs for a second, with the same bits.
if ! { cmake --preset release -DIMGTUNE_BUILD_TESTS=OFF -DIMGTUNE_BUILD_BENCH=OFF -DIMGTUNE_UNITY=8 \
           -DCMAKE_CXX_FLAGS_RELEASE=-O0 -B build/demo &&
       cmake --build build/demo --target imgtune; } >build/demo.log 2>&1; then
    tail -n 40 build/demo.log
    exit 1
fi
imgtune=build/demo/cli/imgtune
tuning=examples/imx477-polynomial.yaml
walk=examples/imx477-walk.csv

echo
echo "== Is the tuning sound?  imgtune check $tuning"
$imgtune check "$tuning"

echo
echo "== A walk from sun to candle light, every 60th frame (registers of all 841 in build/walk.csv)"
$imgtune replay "$tuning" "$walk" -o build/walk.csv
awk -F, '
    NR == 1 { for (i = 1; i <= NF; ++i) at[$i] = i
              print " frame    LV     CT    R/B gain     matrix diagonal   saturation  hue[4]  LSP"; next }
    ($1 % 60 == 0) || ($1 == 541) {
        printf "%6d  %4d  %5d   %4d/%4d   %5d %5d %5d   %10d  %6d  %3s%s\n", $1, $(at["lv"]), $(at["cct"]),
            $(at["awb_r"]), $(at["awb_b"]), $(at["c0"]), $(at["c4"]), $(at["c8"]), $(at["Global.S"]),
            $(at["Hue.PH[4]"]), $(at["control.LSP_enable"]) ? "on" : "off", ($(at["flash"]) == 0 ? "" : "  flash") }
' build/walk.csv

echo
echo "== How fast does it settle after a flash?  imgtune replay ... --summary"
$imgtune replay "$tuning" examples/imx477-flash-shot.csv --summary |
    sed '/^fields that moved/,$d'

echo
echo "== Why this matrix at LV 25?  imgtune explain examples/imx708-blend.yaml --lv 25 --cct 3610 ..."
$imgtune explain examples/imx708-blend.yaml --lv 25 --cct 3610 --gain 837,512,1152 |
    sed -n '/^Matrix/,/after low light/p'
echo
echo "== All of it as pictures  imgtune report ... --against examples/imx708-blend.yaml"
echo "building the page, which runs the library in the browser; the first time some 2 minutes (log: build/page.log) ..." >&2
scripts/setup.sh emscripten nodejs npm googletest ccache dpkg-dev
scripts/page.sh >build/page.log 2>&1 || { tail -n 40 build/page.log; exit 1; }
$imgtune report "$tuning" "$walk" --against examples/imx708-blend.yaml -o build/report.html --force
echo "open build/report.html in a browser; build/imgtune.html is the page alone"
echo
echo "More: $imgtune --help"
