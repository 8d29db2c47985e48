#compdef imgtune
# zsh completion for imgtune; verbs and options are those that its help names.

_imgtune() {
    local -a verbs options
    if (( CURRENT == 2 )); then
        verbs=(${(f)"$(imgtune --help 2>/dev/null |
            sed -nE '/^Subcommands:/,/^$/s/^  ([a-z]+) +(.*)/\1:\2/p')"})
        _describe 'verb' verbs
        return
    fi
    case $words[CURRENT-1] in
        --only) compadd ccm color; return ;;
        --set) compadd -S '' -- debug.smooth_ccm.enable= debug.smooth_color.{dump,lock,enable}= \
                   debug.smooth_color.bypass.{yeng,seng,heng,cm}= \
                   debug.smooth_color.{dump,lvdump}.{global,lsp,lum,hue,sat,sgy}= \
                   debug.smooth_color.dump.cm=
               return ;;
    esac
    if [[ $words[CURRENT] == -* ]]; then
        options=(${(f)"$(imgtune $words[2] --help 2>/dev/null |
            sed -nE 's/^ +(-[^ ]+).*/\1/p' | tr , '\n')"})
        compadd -- $options
        return
    fi
    _files
}

_imgtune "$@"
