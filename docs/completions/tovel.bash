# bash completion for tovel
complete -W '--hidden --help --version --diagnose --switch-test --fixture --cross-process-test
    --integration-test --minimized --self-test' tovel
