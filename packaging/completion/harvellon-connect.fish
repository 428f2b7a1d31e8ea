# fish completion for harvellon-connect

function __harvellon_connect_projects
    # Never starts the program.
    set -l projects (harvellon-connect list --no-start 2>/dev/null)
    contains disconnect (commandline -opc); and set projects (string match -rv '\tNicht verbunden\t' -- $projects)
    set projects (string replace -r '\t.*' '' -- $projects)
    set -l offered (string replace -r '^www\.' '' -- $projects)
    string match -q 'w*' -- (commandline -ct); and set -a offered $projects
    printf '%s\n' $offered
end

function __harvellon_connect_wants_project
    set -l words (string match -v -- '-*' (commandline -opc))
    test (count $words) -eq 2; and contains $words[2] connect disconnect open search
end

set -l verbs list status connect disconnect open search toggle
complete -c harvellon-connect -f
complete -c harvellon-connect -n "not __fish_seen_subcommand_from $verbs" -l help -d 'Hilfe'
complete -c harvellon-connect -n "not __fish_seen_subcommand_from $verbs" -l version -d 'Version'
complete -c harvellon-connect -n "not __fish_seen_subcommand_from $verbs" -a list -d 'Projekte auflisten'
complete -c harvellon-connect -n "not __fish_seen_subcommand_from $verbs" -a status -d 'Anmeldung und verbundene Projekte zeigen'
complete -c harvellon-connect -n "not __fish_seen_subcommand_from $verbs" -a connect -d 'Projekt verbinden'
complete -c harvellon-connect -n "not __fish_seen_subcommand_from $verbs" -a disconnect -d 'Projekt trennen'
complete -c harvellon-connect -n "not __fish_seen_subcommand_from $verbs" -a open -d 'Projekt öffnen'
complete -c harvellon-connect -n "not __fish_seen_subcommand_from $verbs" -a search -d 'Text in den Dateien suchen'
complete -c harvellon-connect -n "not __fish_seen_subcommand_from $verbs" -a toggle -d 'Fenster zeigen oder verbergen'
complete -c harvellon-connect -n __harvellon_connect_wants_project -a '(__harvellon_connect_projects)'
complete -c harvellon-connect -n "__fish_seen_subcommand_from list status" -l json -d 'Als JSON'
complete -c harvellon-connect -n "__fish_seen_subcommand_from disconnect" -l all -d 'Alle Projekte'
complete -c harvellon-connect -n "__fish_seen_subcommand_from list connect open search toggle" -l no-start -d 'Programm nicht starten'
for target in editor files site admin shell database
    complete -c harvellon-connect -n "__fish_seen_subcommand_from open" -l $target
end
