# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=bash
# Completes the commands and options that rulecheck --help lists, and files.

_rulecheck() {
  local words=''
  if ((COMP_CWORD == 1)); then
    words=$("$1" --help | sed -nE '/^Subcommands:/,$s/^  ([a-z]+) .*/\1/p')
  elif [[ $2 == -* ]]; then
    words=$("$1" "${COMP_WORDS[1]}" --help | grep -oE -e '--[a-z-]+')
  fi
  mapfile -t COMPREPLY < <(compgen -W "$words" -- "$2")
}
complete -o default -F _rulecheck rulecheck
