# Completion of qdfax's command line in bash. It asks qdfax for commands, options and their values, so it knows all of
# them; in English, since it looks for headings.

_qdfax_commands() {
  LC_ALL=C qdfax help 2>/dev/null | sed -n '/^Commands:$/,/^$/s/^  \([a-z][a-z -]*[a-z]\)  .*/\1/p'
}

_qdfax_servers() { qdfax server list --json 2>/dev/null | sed -n 's/.*"uid": "\([^"]*\)".*/\1/p'; }

# Sets words, the words of the line up to the cursor. Bash breaks them at "@", ":" and "=", too, which UIDs and
# addresses hold; what belongs together has no blank between it.
_qdfax_words() {
  local rest=${COMP_LINE:0:COMP_POINT} piece between i
  words=()
  for ((i = 0; i <= COMP_CWORD; i++)); do
    between=${rest%%[![:space:]]*}
    rest=${rest:${#between}}
    piece=${COMP_WORDS[i]}
    [[ $i -lt $COMP_CWORD && $rest == "$piece"* ]] || piece=$rest
    rest=${rest:${#piece}}
    if [[ $i -eq 0 || -n $between ]]; then words+=("$piece")
    else words[-1]+=$piece
    fi
  done
}

# Offers what compgen makes of the options for the last word, without what bash takes for words before it: what is up to
# the last break, but for a "@", which bash takes as the beginning of a host's name.
_qdfax_offer() { # COMPGEN-OPTION...
  mapfile -t COMPREPLY < <(compgen "$@" -- "$current")
  local kept=$current breaks=${COMP_WORDBREAKS//[^@:]/}
  [ -n "$breaks" ] || return
  kept=${kept##*["$breaks"]}
  kept=${current:0:${#current}-${#kept}}
  kept=${kept%@}
  COMPREPLY=("${COMPREPLY[@]#"$kept"}")
}

# Offers what help names in a usage line or for an option: one|another, 0..5, UID or FILE; nothing for other names.
_qdfax_offer_for() { # NAMES
  case $1 in
    *FILE* | *DIR*) _qdfax_offer -f; compopt -o filenames 2>/dev/null ;;
    *UID*) _qdfax_offer -W "$(_qdfax_servers)" ;;
    *COMMAND*) _qdfax_offer -W "$all" ;;
    [0-9]..[0-9]) _qdfax_offer -W "$(seq "${1%..*}" "${1#*..}")" ;;
    *[a-z]\|[a-z]*) _qdfax_offer -W "$(grep -o '[a-z0-9-]*\(|[a-z0-9-]*\)\+' <<<"$1" | tr '|' '\n')" ;;
  esac
}

_qdfax() {
  local words all help given=() command='' takes_value='' option='' current i
  _qdfax_words
  current=${words[-1]}
  all=$(_qdfax_commands)
  COMPREPLY=()

  # the words that are neither options nor their values
  for ((i = 1; i < ${#words[@]} - 1; i++)); do
    if [ -n "$takes_value" ]; then takes_value=
    elif [[ ${words[i]} == --server || ${words[i]} == --timeout || ${words[i]} == --log-level ]]; then takes_value=yes
    elif [[ ${words[i]} != -* ]]; then given+=("${words[i]}")
    fi
  done
  # the command that they begin with: two words before one
  if ((${#given[@]} > 1)) && grep -qxF -- "${given[0]} ${given[1]}" <<<"$all"; then command="${given[0]} ${given[1]}"
  elif ((${#given[@]} > 0)) && grep -qxF -- "${given[0]}" <<<"$all"; then command=${given[0]}
  fi
  # shellcheck disable=SC2086 # a command is one word or two
  help=$(LC_ALL=C qdfax help $command 2>/dev/null)

  # the value of an option, behind a blank or "="
  if [[ $current == --*=* ]]; then option=${current%%=*} current=${current#*=}
  elif [[ ${words[-2]} == --* && ${words[-2]} != --*=* ]]; then option=${words[-2]}
  fi
  if [ -n "$option" ]; then
    local value
    value=$(sed -n "s/^  $option \([^ ]\{1,\}\).*/\1/p" <<<"$help")
    [ -z "$value" ] || { _qdfax_offer_for "$value"; return; }
  fi
  if [[ $current == -* ]]; then
    _qdfax_offer -W "$(sed -n 's/^  \(--[a-z-]*\).*/\1/p' <<<"$help")"
    return
  fi
  if ((${#given[@]} == 0)); then
    _qdfax_offer -W "$(cut -d ' ' -f 1 <<<"$all" | sort -u)"
    return
  fi
  # the second word of a group, unless it has been given
  if ((${#given[@]} == 1)) && grep -q -- "^${given[0]} " <<<"$all"; then
    _qdfax_offer -W "$(sed -n "s/^${given[0]} //p" <<<"$all")"
    return
  fi
  # the arguments: one, but where "..." says that there may be more
  local usage length
  usage=$(head -n 1 <<<"$help")
  # shellcheck disable=SC2206
  length=($command)
  [[ ${#given[@]} -gt ${#length[@]} && $usage != *...* ]] || _qdfax_offer_for "$usage"
}

complete -F _qdfax qdfax
