# bash completion for orvel-thumbs: options, their values, settings keys and paths.
# Installed as share/bash-completion/completions/orvel-thumbs; a test keeps its lists in step with
# the program's --help.

_orvel_thumbs()
{
    local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]}
    local keys="filetype width height sizing scale quality Antialiasing sharpen extension extensionFormat create QuitWhenDone"
    local options="--set --set-string --format --size --scale --quality --interpolation --suffix --prefix
        --folder --output-dir --create --sharpen --jobs --dry-run --files-from --null --skip-up-to-date --max-depth
        --timeout --memory-limit --thumbnailer --quiet --verbose --help --version"

    if [[ ${COMP_WORDS[1]} == defaults ]]; then
        case $COMP_CWORD in
            2) COMPREPLY=($(compgen -W "read write delete --help" -- "$cur")) ;;
            3) [[ $prev == write ]] && COMPREPLY=($(compgen -W "--force $keys" -- "$cur")) \
                || COMPREPLY=($(compgen -W "$keys" -- "$cur")) ;;
            4) [[ $prev == --force ]] || COMPREPLY=($(compgen -W "-int -float -bool -string" -- "$cur")) ;;
        esac
        return
    fi

    case $prev in
        -f | --format) COMPREPLY=($(compgen -W "tiff bmp gif jpeg png jp2" -- "$cur")); return ;;
        --interpolation) COMPREPLY=($(compgen -W "default none low high" -- "$cur")); return ;;
        --create) COMPREPLY=($(compgen -W "thumbnail thumbnail+icon icon" -- "$cur")); return ;;
        --sharpen) COMPREPLY=($(compgen -W "none light medium strong" -- "$cur")); return ;;
        --set | --set-string)
            compopt -o nospace 2>/dev/null
            COMPREPLY=($(compgen -S = -W "$keys" -- "$cur"))
            return
            ;;
        --files-from) COMPREPLY=($(compgen -f -- "$cur")); return ;;
        --output-dir) COMPREPLY=($(compgen -d -- "$cur")); return ;;
        -s | --size | --scale | -Q | --quality | --suffix | --prefix | --folder | -j | --jobs | --max-depth | \
            --timeout | --memory-limit)
            return
            ;;
    esac

    if [[ $cur == -* ]]; then
        COMPREPLY=($(compgen -W "$options" -- "$cur"))
    elif [[ $COMP_CWORD == 1 ]]; then
        COMPREPLY=($(compgen -W "defaults" -- "$cur") $(compgen -f -- "$cur"))
    else
        COMPREPLY=($(compgen -f -- "$cur"))
    fi
}
complete -o filenames -o bashdefault -F _orvel_thumbs orvel-thumbs
