# SPDX-License-Identifier: MIT
_lexwend() {
  mapfile -t COMPREPLY < <(compgen -W '--fix --menu --settings --quit --selftest --help --version' -- "$2")
}
complete -F _lexwend lexwend
