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
become_root() {  # become_root PACKAGE...: what for
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || { echo "setup: neither root nor sudo; install: $*" >&2; exit 2; }
        sudo=sudo
    fi
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
    fetch 2>/dev/null || { become_root "$package"; $sudo apt-get update -qq; fetch; }
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
become_root "${missing[@]}"
install() {
    $sudo env DEBIAN_FRONTEND=noninteractive \
        apt-get -o DPkg::Lock::Timeout=600 install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}
# Lists that were read within the hour will do.
if [ -n "$(find /var/lib/apt/lists -maxdepth 0 -mmin -60)" ] && compgen -G '/var/lib/apt/lists/*_Packages*' >/dev/null; then
    install && exit 0
fi
$sudo apt-get update -qq
install
