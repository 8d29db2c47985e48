#!/usr/bin/env bash
# Installs the packages of build/packages in a pristine Debian, uses each as people do, removes them
# and looks for what is left. Needs root.
# What is quoted for the inside is expanded there.
# shellcheck disable=SC2016
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh mmdebstrap chromium
[ "$(id -u)" -eq 0 ] || { echo "packages-test: a Debian in a folder needs root" >&2; exit 2; }

root=$(mktemp -d "${TMPDIR:-/var/tmp}/packages-test.XXXXXX")
trap 'rm -rf --one-file-system "$root"' EXIT
mapfile -t sources < <(ls /etc/apt/sources.list.d/debian.sources /etc/apt/sources.list 2>/dev/null)
mmdebstrap --quiet --variant=minbase "$(sed -n 's/^VERSION_CODENAME=//p' /etc/os-release)" "$root" "${sources[@]}"
cp -r /etc/apt/apt.conf.d/. "$root/etc/apt/apt.conf.d/"
cp -L /etc/resolv.conf /etc/hosts "$root/etc/"
mkdir "$root/try"
cp build/packages/*.deb examples/imx477-{polynomial.yaml,walk.csv,hunting-awb.csv} tests/package/consumer/* "$root/try/"
rm "$root"/try/*-dbgsym_*

# inside COMMANDS: in the pristine Debian, whose mounts end with them.
inside() {
    unshare --mount --propagation private bash -ec '
        for folder in proc dev; do mount --bind "/$folder" "$0/$folder"; done
        exec chroot "$0" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LC_ALL=C.UTF-8 \
            DEBIAN_FRONTEND=noninteractive bash -euc "cd /try; $1"' "$root" "$1"
}

install='apt-get update -qq && apt-get install -y -qq -o Dpkg::Use-Pty=0 --no-install-recommends'
inside "$install ./imgtune_*.deb ./libimgtune_*.deb" >>build/packages/install.log 2>&1
echo "== imgtune"
inside 'imgtune --version
    imgtune check imx477-polynomial.yaml
    imgtune replay imx477-polynomial.yaml imx477-walk.csv | sha256sum >rows
    imgtune report imx477-polynomial.yaml imx477-walk.csv -o report.html && test -s report.html
    test -s /usr/share/bash-completion/completions/imgtune
    test "$(ls /usr/share/man/man1/imgtune-*.1.gz | wc -l)" -gt 10'
built=$(echo build/packages/imgtune-*/obj-*/cli/imgtune)
"$built" replay examples/imx477-polynomial.yaml examples/imx477-walk.csv | sha256sum |
    diff - "$root/try/rows"

echo "== the page, from its installed place and as a report"
for page in usr/share/imgtune/imgtune.html try/report.html; do
    timeout 60 chromium --headless --no-sandbox --disable-gpu --virtual-time-budget=20000 --dump-dom \
        "file://$root/$page" 2>/dev/null | grep -q 'uplot' || { echo "$page shows no plot"; exit 1; }
done

echo "== libimgtune-dev"
inside "$install g++ cmake ninja-build pkg-config ./libimgtune-dev_*.deb" >>build/packages/install.log 2>&1
inside 'cmake -G Ninja -S . -B by_cmake >/dev/null && cmake --build by_cmake >/dev/null && by_cmake/consumer >by_cmake.txt
    g++ -std=c++14 consumer.cpp -o by_pkg_config $(pkg-config --cflags --libs imgtune) && ./by_pkg_config >by_pkg_config.txt
    test -s by_cmake.txt && diff by_cmake.txt by_pkg_config.txt && cat by_cmake.txt'

echo "== python3-imgtune"
inside "$install ./python3-imgtune_*.deb" >>build/packages/install.log 2>&1
inside 'python3 -c "
import imgtune
rows = imgtune.replay(imgtune.Tuning.load(\"imx477-polynomial.yaml\"), imgtune.load_frames(\"imx477-walk.csv\"))
print(len(rows), \"frames from Python\")"'

echo "== removal"
inside 'apt-get purge -y -qq -o Dpkg::Use-Pty=0 "*imgtune*" >/dev/null
    left=$(find / -xdev -iname "*imgtune*" -not -path "/proc/*" -not -path "/try*" -not -path "/dev/*")
    test -z "$left" || { echo "left behind: $left"; exit 1; }'
echo "all packages work and leave nothing"
