#!/usr/bin/env bash
# Every verb as a user types it: the sessions in *.t and the tutorial, each with its output and exit status.
# Usage: run.sh IMGTUNE [--renew | SESSION...]   (--renew writes what is printed now into the sessions:
# read the difference before committing it)
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
IMGTUNE=$(realpath "${1:?usage: run.sh IMGTUNE [--renew]}")
export IMGTUNE EXAMPLES=$here/../../examples COMPLETIONS=$here/../../completions
export PATH=${IMGTUNE%/*}:$PATH
sessions=("$here"/*.t "$here/../../docs/tutorial.md")
[ $# -eq 1 ] || [ "$2" = --renew ] || sessions=("${@:2}")
cram=$(command -v cram3 || command -v cram)
"$cram" --shell=/bin/bash --indent=4 "${sessions[@]}" && exit 0
if [ "${2:-}" = --renew ]; then
    for printed in "${sessions[@]/%/.err}"; do [ ! -e "$printed" ] || mv "$printed" "${printed%.err}"; done
    exit 0
fi
rm -f "${sessions[@]/%/.err}"
exit 1
