# SPDX-License-Identifier: MIT
_lexwend() {
  mapfile -t COMPREPLY < <(compgen -W '--selftest --help --version' -- "$2")
}
complete -F _lexwend lexwend
