# SPDX-License-Identifier: MIT
_lexwend_doctor() {
  [[ $3 == --after ]] || mapfile -t COMPREPLY < <(compgen -W '--try --after --json --help --version' -- "$2")
}
complete -F _lexwend_doctor lexwend-doctor
