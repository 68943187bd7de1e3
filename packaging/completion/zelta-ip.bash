# bash completion for zelta-ip. The words stand here in full, so that completing never starts a
# program that runs as root.

# Offers the settings files that have a mode; the links' own files and the chat scripts have none.
_zelta_ip_settings() {
    local directory=/home/main-user/.ip_config name
    while IFS= read -r name; do
        name=${name#"$directory/"}
        [[ $name != "$1"* ]] || COMPREPLY+=("$(printf %q "$name")")
    done < <(grep -ls '^config=' "$directory"/*)
}

_zelta_ip() {
    local current=${COMP_WORDS[COMP_CWORD]} words=''
    COMPREPLY=()
    case $COMP_CWORD:${COMP_WORDS[1]-} in
    1:*)
        words="--domainname --hostname
            --start-gprs-if --start-wifi-if --start-bluetooth-pan-if --start-usb-eth-if
            --stop-gprs-if --stop-wifi-if --stop-bluetooth-pan-if --stop-usb-eth-if
            --wifi-scan --restart-dhclient --restart-wpa-supplicant
            --open-port --close-port --open-ping --close-ping"
        ;;
    2:--start-*-if | 2:--stop-*-if) _zelta_ip_settings "$current" ;;
    2:--open-port | 2:--close-port) words='tcp udp' ;;
    4:--open-port | 4:--close-port | 2:--open-ping | 2:--close-ping) words='in out' ;;
    esac
    [[ -z $words ]] || mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
}

complete -F _zelta_ip zelta-ip
