# Completion of qdfax's command line in bash. It asks qdfax for commands and options, so it knows all of them; in English,
# since it looks for headings.

_qdfax_commands() {
  LC_ALL=C qdfax help 2>/dev/null | sed -n '/^Commands:$/,/^$/s/^  \([a-z][a-z -]*[a-z]\)  .*/\1/p'
}

# The options of a command, or with no command those of every command.
_qdfax_options() {
  LC_ALL=C qdfax help "$@" 2>/dev/null | sed -n 's/^  \(--[a-z-]*\).*/\1/p'
}

# The values of an option that help spells out, like none|pdf|tiff.
_qdfax_values() { # OPTION COMMAND...
  LC_ALL=C qdfax help "${@:2}" 2>/dev/null | sed -n "s/^  $1 \([a-z0-9]*|[a-z0-9|]*\).*/\1/p" | tr '|' '\n'
}

_qdfax() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD-1]}
  local all words=() word takes_value= i

  # the words that are neither options nor their values
  for ((i = 1; i < COMP_CWORD; i++)); do
    word=${COMP_WORDS[i]}
    if [ -n "$takes_value" ]; then takes_value=
    elif [[ $word == --server || $word == --timeout || $word == --log-level ]]; then takes_value=yes
    elif [[ $word != -* ]]; then words+=("$word")
    fi
  done
  all=$(_qdfax_commands)

  # the command that they begin with: two words before one
  local command=
  if ((${#words[@]} > 1)) && grep -qxF -- "${words[0]} ${words[1]}" <<<"$all"; then command="${words[0]} ${words[1]}"
  elif ((${#words[@]} > 0)) && grep -qxF -- "${words[0]}" <<<"$all"; then command=${words[0]}
  fi

  COMPREPLY=()
  case $previous in
    --server)
      mapfile -t COMPREPLY < <(compgen -W "$(qdfax server list --json 2>/dev/null |
        sed -n 's/.*"uid": "\([^"]*\)".*/\1/p')" -- "$current")
      return ;;
    --to | --password-file) ;;
    --*)
      # shellcheck disable=SC2086 # a command is one word or two
      mapfile -t COMPREPLY < <(compgen -W "$(_qdfax_values "$previous" $command)" -- "$current")
      ((${#COMPREPLY[@]})) && return ;;
  esac
  if [[ $current == -* ]]; then
    # shellcheck disable=SC2086
    mapfile -t COMPREPLY < <(compgen -W "$(_qdfax_options $command)" -- "$current")
    return
  fi
  if ((${#words[@]} == 0)); then
    mapfile -t COMPREPLY < <(compgen -W "$(cut -d ' ' -f 1 <<<"$all" | sort -u)" -- "$current")
    return
  fi
  # the second word of a group, unless it has been given
  if ((${#words[@]} == 1)) && grep -q -- "^${words[0]} " <<<"$all"; then
    mapfile -t COMPREPLY < <(compgen -W "$(sed -n "s/^${words[0]} //p" <<<"$all")" -- "$current")
    ((${#COMPREPLY[@]})) && return
  fi
  case $command in
    help) mapfile -t COMPREPLY < <(compgen -W "$all" -- "$current") ;;
    *) mapfile -t COMPREPLY < <(compgen -f -- "$current"); compopt -o filenames 2>/dev/null ;;
  esac
}

complete -F _qdfax qdfax
