# SPDX-License-Identifier: MIT
complete -c lexwend -f
complete -c lexwend -l fix -d 'Tell the agent that runs to fix the selected text'
complete -c lexwend -l menu -d 'Tell it to open its menu'
complete -c lexwend -l settings -d 'Tell it to open the window that changes the hot key'
complete -c lexwend -l quit -d 'Tell it to end'
complete -c lexwend -l selftest -d 'Print the character maps, a round-trip check and sample conversions'
complete -c lexwend -s h -l help -d 'Print a short help'
complete -c lexwend -l version -d 'Print the version'
