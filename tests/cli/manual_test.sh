#!/usr/bin/env bash
# The manual pages: well formed, one a verb, and each names every option of the verb's help.
# Usage: manual_test.sh IMGTUNE FOLDER
set -euo pipefail
imgtune=$1 folder=$2
status=0
verbs=$("$imgtune" --help | sed -nE '/^Subcommands:/,/^$/s/^  ([a-z]+) .*/\1/p' | grep -v '^help$')
[ -n "$verbs" ]
for verb in "" $verbs; do
    page=$folder/imgtune${verb:+-$verb}.1
    mandoc -T lint -W warning "$page" || status=1
    text=$(mandoc -T utf8 "$page" | sed 's/.\x08//g')
    for name in $("$imgtune" ${verb:+"$verb"} --help | grep -oE '^  +(-[a-zA-Z],)?--[a-z-]+' | tr , ' '); do
        grep -qE -- "(^|[ ,])$name([ ,]|$)" <<<"$text" || { echo "$page: $name is missing"; status=1; }
    done
    grep -q 'EXIT STATUS' <<<"$text" || { echo "$page: no exit status"; status=1; }
done
exit $status
