# bash completion for tovelctl
_tovelctl()
{
    local current=${COMP_WORDS[COMP_CWORD]} command= action= isNew= word i
    for ((i = 1; i < COMP_CWORD; i++)); do
        word=${COMP_WORDS[i]}
        [[ $word == --new ]] && isNew=yes
        [[ $word == -* ]] && continue
        if [[ -z $command ]]; then
            command=$word
        elif [[ -z $action ]]; then
            action=$word
        fi
    done

    local options=--json
    [[ $command == move ]] && options+=' --new --follow --no-follow'
    [[ -z $command ]] && options+=' --help --version'
    if [[ $current == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$options" -- "$current")
        return
    fi

    # The indented JSON has one value a line.
    case $command in
        '')
            mapfile -t COMPREPLY < <(compgen -W 'status access apps flock rename move' -- "$current")
            ;;
        flock)
            local candidates='add remove'
            if [[ -n $action ]]; then
                candidates=$(tovelctl apps --json 2>/dev/null |
                    sed -nE 's/.*"id": "([^"]*)".*/\1/p')
            fi
            mapfile -t COMPREPLY < <(compgen -W "$candidates" -- "$current")
            ;;
        rename | move)
            [[ -n $action || -n $isNew ]] && return
            mapfile -t COMPREPLY < <(compgen -W "$(tovelctl status --json 2>/dev/null |
                sed -nE 's/.*"number": ([0-9]+).*/\1/p')" -- "$current")
            ;;
    esac
}
complete -F _tovelctl tovelctl
