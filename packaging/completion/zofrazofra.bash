# SPDX-License-Identifier: GPL-3.0-or-later
# bash completion for zofrazofra
_zofrazofra() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    local options="--play --output --endpoints --no-discovery --headless --quit --status --doctor --json --version --help"
    local stations="zofra qmusic joe zofra_class_x radio_contact bel_rtl inside_radio sud_radio_belgique sud_radio_hainaut"
    case $previous in
    --play) mapfile -t COMPREPLY < <(compgen -W "$stations $options" -- "$current") ;;
    --output) mapfile -t COMPREPLY < <(compgen -W "here everywhere" -- "$current") ;;
    --endpoints) mapfile -t COMPREPLY < <(compgen -f -- "$current") ;;
    *) mapfile -t COMPREPLY < <(compgen -W "$options" -- "$current") ;;
    esac
}
complete -F _zofrazofra zofrazofra
