# SPDX-License-Identifier: MIT
complete -c lexwend-convert -l layout -x -a 'en he' -d 'The layout that was active'
complete -c lexwend-convert -l map -x -a 'builtin system' -d 'The table of characters'
complete -c lexwend-convert -l lines -d 'Convert each line by itself'
complete -c lexwend-convert -l null -d 'Convert each NUL-separated record by itself'
complete -c lexwend-convert -l report -d 'One line per text on standard error'
complete -c lexwend-convert -l help -d 'Print a short help'
complete -c lexwend-convert -l version -d 'Print the version'
