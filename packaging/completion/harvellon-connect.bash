# bash completion for harvellon-connect

_harvellon_connect_projects() {
    local domain state
    # Never starts the program. Compared here, because compgen -W would run what stands in $(…); what a shell would read as
    # more than a word is left out.
    while IFS=$'\t' read -r domain state _; do
        [[ $verb == disconnect && $state == 'Nicht verbunden' ]] && continue
        [[ ${domain#www.} == "$1"* ]] && domain=${domain#www.}
        [[ $domain == "$1"* && $domain =~ ^[[:alnum:]._-]+$ ]] && COMPREPLY+=("$domain")
    done < <(harvellon-connect list --no-start 2>/dev/null)
}

_harvellon_connect() {
    local word=${COMP_WORDS[COMP_CWORD]} verb=${COMP_WORDS[1]} words='' candidate

    COMPREPLY=()
    if [ "$COMP_CWORD" -eq 1 ]; then
        words='list status connect disconnect open search toggle --help --version'
    elif [[ $word == -* ]]; then
        case $verb in
            list) words='--json --no-start' ;;
            status) words='--json' ;;
            disconnect) words='--all' ;;
            open) words='--editor --files --site --admin --shell --database --no-start' ;;
            connect | search | toggle) words='--no-start' ;;
        esac
    elif [ "$COMP_CWORD" -eq 2 ] || { [ "$COMP_CWORD" -eq 3 ] && [[ ${COMP_WORDS[2]} == -* ]]; }; then
        case $verb in
            connect | disconnect | open | search) _harvellon_connect_projects "$word" ;;
        esac
        return
    fi
    # The bash of macOS has no mapfile.
    for candidate in $words; do
        [[ $candidate == "$word"* ]] && COMPREPLY+=("$candidate")
    done
}

complete -F _harvellon_connect harvellon-connect
