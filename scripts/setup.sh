#!/usr/bin/env bash
# Installs the Debian packages that are named and missing. Usage: scripts/setup.sh PACKAGE...
set -euo pipefail
missing=()
for package in "$@"; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0
echo "installing: ${missing[*]}" >&2
sudo=
if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || { echo "setup: neither root nor sudo; install: ${missing[*]}" >&2; exit 2; }
    sudo=sudo
fi
$sudo apt-get update -qq
$sudo env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
