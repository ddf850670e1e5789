# fish completion for tovelctl
# The indented JSON has one value a line.
function __tovelctl_applications
    tovelctl apps --json 2>/dev/null | sed -nE 's/.*"id": "([^"]*)".*/\1/p'
end
function __tovelctl_desktops
    tovelctl status --json 2>/dev/null | sed -nE 's/.*"number": ([0-9]+).*/\1/p'
end

set -l commands status access apps flock rename move
set -l chosen "__fish_seen_subcommand_from $commands"
complete -c tovelctl -f
complete -c tovelctl -n "not $chosen" -a status -d 'Access, desktops, the flock and its windows'
complete -c tovelctl -n "not $chosen" -a access -d 'Allow Tovel to see and move windows'
complete -c tovelctl -n "not $chosen" -a apps -d 'The applications that can join the flock'
complete -c tovelctl -n "not $chosen" -a flock -d 'Add or remove applications'
complete -c tovelctl -n "not $chosen" -a rename -d 'Give a desktop a name'
complete -c tovelctl -n "not $chosen" -a move -d 'Move the flock to a desktop'
complete -c tovelctl -n "not $chosen" -s h -l help -d 'Print a summary of the commands'
complete -c tovelctl -n "not $chosen" -l version -d 'Print the version'
complete -c tovelctl -n "$chosen" -l json -d 'Print one JSON object'
complete -c tovelctl -n '__fish_seen_subcommand_from flock; and not __fish_seen_subcommand_from add remove' -a 'add remove'
complete -c tovelctl -n '__fish_seen_subcommand_from flock; and __fish_seen_subcommand_from add remove' -a '(__tovelctl_applications)'
complete -c tovelctl -n '__fish_seen_subcommand_from move rename; and test (count (commandline -opc)) -eq 2' -a '(__tovelctl_desktops)'
complete -c tovelctl -n '__fish_seen_subcommand_from move' -l new -d 'Make the desktop'
complete -c tovelctl -n '__fish_seen_subcommand_from move' -l follow -d 'Show the desktop afterwards'
complete -c tovelctl -n '__fish_seen_subcommand_from move' -l no-follow -d 'Do not show the desktop afterwards'
