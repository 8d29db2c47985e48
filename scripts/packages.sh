#!/usr/bin/env bash
# Builds the Debian packages of the last commit, with their source, into build/packages, and reads
# them with lintian.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh git cmake dpkg-dev debhelper dh-python fakeroot lintian ninja-build libcli11-dev \
    libeigen3-dev libfmt-dev libyaml-cpp-dev nlohmann-json3-dev pybind11-dev python3-dev zlib1g-dev libraw-dev libtiff-dev libpng-dev
scripts/page.sh

jobs=$(nproc)
SOURCE_DATE_EPOCH=$(git log -1 --format=%ct)
export DEB_BUILD_OPTIONS="parallel=$jobs nocheck" SOURCE_DATE_EPOCH LC_ALL=C.UTF-8
version=$(scripts/version.sh) commit=$(git rev-parse --short=12 HEAD)
packages=$PWD/build/packages tree=$PWD/build/packages/imgtune-$version
rm -rf "$packages"
mkdir -p "$tree"
# What is not committed is not packed; the page is, as its tools come from npm.
git archive HEAD | tar -x -C "$tree"
cp build/imgtune.html{,.notices.txt} "$tree/debian/"
echo "$commit" >"$tree/debian/commit"
cat >"$tree/debian/changelog" <<CHANGELOG
imgtune ($version) unstable; urgency=medium

  * Commit $commit; CHANGELOG.md tells what changed.

 -- $(sed -n 's/^Maintainer: //p' debian/control)  $(date -uR -d "@$SOURCE_DATE_EPOCH")
CHANGELOG

cd "$tree"
dpkg-buildpackage -us -uc >../build.log 2>&1 || { tail -n 60 ../build.log; exit 1; }
cd ..
lintian --fail-on error --info --display-level '>=warning' ./*.changes
ls -l ./*.deb ./*.dsc
