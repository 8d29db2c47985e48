#!/usr/bin/env bash
# Installs the Debian packages that are named and missing. Usage: scripts/setup.sh PACKAGE...
# Or unpacks one beside the system, into a folder: scripts/setup.sh --unpack FOLDER PACKAGE
set -euo pipefail
sudo=
one_at_a_time() {  # another may be installing the same
    mkdir -p "$(dirname "$0")/../build"
    exec 9>"$(dirname "$0")/../build/setup.lock"
    flock 9
}
update_lists() {  # update_lists PACKAGE...: what they are needed for
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || { echo "setup: neither root nor sudo; install: $*" >&2; exit 2; }
        sudo=sudo
    fi
    $sudo apt-get update -qq
}

if [ "${1:-}" = --unpack ]; then
    folder=$2 package=$3
    one_at_a_time
    [ -d "$folder" ] && exit 0
    echo "unpacking: $package" >&2
    part=$folder.part
    rm -rf "$part"
    mkdir -p "$part"
    fetch() { (cd "$part" && apt-get download -qq "$package"); }
    fetch 2>/dev/null || { update_lists "$package"; fetch; }
    dpkg -x "$part"/*.deb "$part"
    mv "$part" "$folder"
    exit 0
fi

find_missing() {
    local package
    missing=()
    for package in "$@"; do
        dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' ||
            missing+=("$package")
    done
    [ ${#missing[@]} -gt 0 ]
}
find_missing "$@" || exit 0
one_at_a_time
find_missing "$@" || exit 0
echo "installing: ${missing[*]}" >&2
update_lists "${missing[@]}"
$sudo env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
