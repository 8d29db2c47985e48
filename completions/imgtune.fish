# fish completion for imgtune; verbs and options are those that its help names.

function __imgtune_verbs
    imgtune --help 2>/dev/null | sed -nE '/^Subcommands:/,/^$/s/^  ([a-z]+) +(.*)/\1\t\2/p'
end

function __imgtune_options
    set -l words (commandline -opc)
    imgtune $words[2] --help 2>/dev/null | sed -nE 's/^ +(-[^ ]+).*/\1/p' | tr , '\n'
end

complete -c imgtune -n 'test (count (commandline -opc)) -eq 1' -f -a '(__imgtune_verbs)'
complete -c imgtune -n 'test (count (commandline -opc)) -gt 1; and string match -q -- "-*" (commandline -ct)' -f -a '(__imgtune_options)'
complete -c imgtune -n '__fish_prev_arg_in --only' -x -a 'ccm color'
complete -c imgtune -n '__fish_prev_arg_in --set' -x -a 'debug.smooth_ccm.enable=
    debug.smooth_color.{dump,lock,enable}= debug.smooth_color.bypass.{yeng,seng,heng,cm}=
    debug.smooth_color.{dump,lvdump}.{global,lsp,lum,hue,sat,sgy}= debug.smooth_color.dump.cm='
