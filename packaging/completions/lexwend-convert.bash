# SPDX-License-Identifier: MIT
_lexwend_convert() {
  case $3 in
    --layout) mapfile -t COMPREPLY < <(compgen -W 'en he' -- "$2") ;;
    --map) mapfile -t COMPREPLY < <(compgen -W 'builtin system' -- "$2") ;;
    *)
      if [[ $2 == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W '--layout --map --lines --null --report --help --version' -- "$2")
      else
        compopt -o default
      fi
      ;;
  esac
}
complete -F _lexwend_convert lexwend-convert
