# SPDX-License-Identifier: MIT
# shellcheck shell=bash
#
# Completion of vornjsondb for bash: commands, options and files.
_vornjsondb()
{
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} word command='' choices=''
    local commands='list get count create set delete import export check upgrade explain init'
    COMPREPLY=()
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        [[ " $commands " != *" $word "* ]] || { command=$word && break; }
    done
    case $previous in
    --db | --def | --output | --skip-bad) choices='' ;;
    --format)
        choices='json jsonl csv'
        case $command in list | get | create) choices+=' table' ;; esac
        ;;
    --table | --wait | --sort | --limit | --offset | --fields) return ;;
    *)
        choices='--db --def --table --wait --json-errors --help'
        case $command in
        '') choices+=" --version $commands" ;;
        list | get) choices+=' --sort --limit --offset --fields --format' ;;
        explain) choices+=' --sort --limit --offset --fields' ;;
        create) choices+=' --format' ;;
        set) choices+=' --to --all --yes --dry-run' ;;
        delete) choices+=' --all --yes --dry-run' ;;
        import) choices+=' --format --upsert --skip-bad --dry-run' ;;
        export) choices+=' --sort --limit --offset --fields --format --output' ;;
        check) choices+=' --cells' ;;
        upgrade) choices+=' --dry-run' ;;
        init) choices+=' --format --output' ;;
        esac
        ;;
    esac
    mapfile -t COMPREPLY < <(compgen -W "$choices" -- "$current")
    case $previous:$command in
    --db:* | --def:* | --output:* | --skip-bad:* | *:import | *:init)
        mapfile -t -O ${#COMPREPLY[@]} COMPREPLY < <(compgen -f -- "$current")
        ;;
    esac
}
complete -o filenames -F _vornjsondb vornjsondb
