# fish completion for tovel
complete -c tovel -f
complete -c tovel -l hidden -d 'Start without showing the panel'
complete -c tovel -s h -l help -d 'Print a summary of the modes'
complete -c tovel -l version -d 'Print the version'
complete -c tovel -l diagnose -d 'Tell whether this session can be worked with'
complete -c tovel -l switch-test -d 'Go to another desktop and back'
complete -c tovel -l cross-process-test -d 'Move a window of another process and back'
complete -c tovel -l fixture -d 'Open two windows for the cross-process test'
complete -c tovel -l integration-test -d 'Move an own window and back'
complete -c tovel -l minimized -d 'Minimise the window of the integration test'
complete -c tovel -l self-test -d 'Check the rules that decide which windows move'
