# SPDX-License-Identifier: MIT
complete -c lexwend -f
complete -c lexwend -l selftest -d 'Print the character maps, a round-trip check and sample conversions'
complete -c lexwend -l help -d 'Print a short help'
complete -c lexwend -l version -d 'Print the version'
