# SPDX-License-Identifier: MIT
complete -c lexwend-doctor -f
complete -c lexwend-doctor -l try -d 'Fix a text in a field of its own'
complete -c lexwend-doctor -l after -x -d 'Look after so many seconds'
complete -c lexwend-doctor -l json -d 'Print JSON for tools'
complete -c lexwend-doctor -s h -l help -d 'Print a short help'
complete -c lexwend-doctor -l version -d 'Print the version'
