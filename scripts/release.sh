#!/usr/bin/env bash
# Builds all that is handed out, of the last commit, into build/release-VERSION: Debian packages, the
# Python wheel, the page, the Android file with its symbols; with a bill of materials, the notices
# that are due, and checksums.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh git python3-build python3-setuptools python3-wheel python3-venv nodejs
[ -z "$(git status --porcelain)" ] || { echo "release: commit first; what is handed out is what is committed" >&2; exit 1; }
version=$(scripts/version.sh)
grep -qx "## $version" CHANGELOG.md || { echo "release: CHANGELOG.md has no '## $version'" >&2; exit 1; }
! grep -qx '## Unreleased' CHANGELOG.md || { echo "release: CHANGELOG.md still has '## Unreleased'; name it $version" >&2; exit 1; }
SOURCE_DATE_EPOCH=$(git log -1 --format=%ct)
export SOURCE_DATE_EPOCH

scripts/packages.sh
scripts/packages-test.sh
scripts/android.sh
out=$PWD/build/release-$version
rm -rf "$out"
mkdir -p "$out/android"
/usr/bin/python3 -m build --wheel --no-isolation --outdir "$out" >build/wheel.log 2>&1 || { tail -n 40 build/wheel.log; exit 1; }
cp build/packages/*.{deb,dsc,tar.xz} build/imgtune.html "$out/"
cp build/imgtune.html.notices.txt "$out/notices.txt"
cp build/android/libimgtune.ispfeature.so* "$out/android/"
cp CHANGELOG.md debian/copyright "$out/"
node scripts/bill-of-materials.mjs "$version" "$(git rev-parse HEAD)" build/imgtune.html.components.json >"$out/bom.cdx.json"
(cd "$out" && find . -type f ! -name SHA256SUMS -printf '%P\n' | LC_ALL=C sort | xargs sha256sum >SHA256SUMS)
ls -l "$out"
