# bash completion for imgtune; verbs and options are those that its help names.

_imgtune() {
    local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]}
    local verbs
    verbs=$("${COMP_WORDS[0]}" --help 2>/dev/null |
        sed -nE '/^Subcommands:/,/^$/s/^  ([a-z]+) .*/\1/p' | tr '\n' ' ')
    local verb="" word
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        if [[ " $verbs " == *" $word "* ]]; then verb=$word; break; fi
    done

    if [[ -z $verb ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$verbs --help --version" -- "$cur")
        return
    fi
    case $prev in
        --only) mapfile -t COMPREPLY < <(compgen -W "ccm color" -- "$cur"); return ;;
        --set) mapfile -t COMPREPLY < <(compgen -W "$(_imgtune_properties)" -- "$cur")
               compopt -o nospace; return ;;
    esac
    if [[ $cur == -* ]]; then
        # The verb's own help names its options.
        mapfile -t COMPREPLY < <(compgen -W "$("${COMP_WORDS[0]}" "$verb" --help 2>/dev/null |
            sed -nE 's/^ +(-[^ ]+).*/\1/p' | tr , '\n')" -- "$cur")
        return
    fi
    if [[ $verb == pack && $prev == @(-o|--output) || $verb == unpack && $prev == unpack ]]; then
        mapfile -t COMPREPLY < <(compgen -d -- "$cur")
    else
        mapfile -t COMPREPLY < <(compgen -f -- "$cur")
    fi
    compopt -o filenames
}

_imgtune_properties() {
    local block
    echo debug.smooth_ccm.enable= debug.smooth_color.{dump,lock,enable}=
    echo debug.smooth_color.bypass.{yeng,seng,heng,cm}= debug.smooth_color.dump.cm=
    for block in global lsp lum hue sat sgy; do
        echo debug.smooth_color.{dump,lvdump}.$block=
    done
}

complete -F _imgtune imgtune
