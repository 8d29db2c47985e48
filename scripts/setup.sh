#!/usr/bin/env bash
# Installs the Debian packages that are named and missing. Usage: scripts/setup.sh PACKAGE...
# Or unpacks one beside the system, into a folder: scripts/setup.sh --unpack FOLDER PACKAGE
set -euo pipefail
sudo=
as_root() {
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || { echo "setup: neither root nor sudo; install: $*" >&2; exit 2; }
        sudo=sudo
    fi
    $sudo apt-get update -qq
}

if [ "${1:-}" = --unpack ]; then
    folder=$2 package=$3
    [ -d "$folder" ] && exit 0
    echo "unpacking: $package" >&2
    archive=$(mktemp -d)
    trap 'rm -rf "$archive"' EXIT
    chmod 755 "$archive"
    fetch() { (cd "$archive" && apt-get download -qq "$package" 2>/dev/null); }
    fetch || { as_root "$package"; fetch; }
    dpkg -x "$archive"/*.deb "$folder"
    exit 0
fi

missing=()
for package in "$@"; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0
echo "installing: ${missing[*]}" >&2
as_root "${missing[@]}"
$sudo env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
