# SPDX-License-Identifier: GPL-3.0-or-later
complete -c zofrazofra -f
complete -c zofrazofra -l play -a 'zofra qmusic joe zofra_class_x radio_contact bel_rtl inside_radio sud_radio_belgique sud_radio_hainaut' -d 'Start playing'
complete -c zofrazofra -l output -x -a 'here everywhere' -d 'Where the sound goes'
complete -c zofrazofra -l endpoints -rF -d 'Service hosts'
complete -c zofrazofra -l no-discovery -d 'Do not look for networked speakers'
complete -c zofrazofra -l headless -d 'No status item and no window'
complete -c zofrazofra -l quit -d 'End the running program'
complete -c zofrazofra -l status -d 'Print the state of the running program'
complete -c zofrazofra -l doctor -d 'Say what works, what does not, and what to do'
complete -c zofrazofra -l json -d 'State or findings as JSON'
complete -c zofrazofra -l version -d 'Print the version'
complete -c zofrazofra -l help -d 'Print a summary'
