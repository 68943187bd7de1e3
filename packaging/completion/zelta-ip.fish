# fish completion for zelta-ip. The words stand here in full, so that completing never starts a
# program that runs as root.

# Whether word COUNT of the line is being typed, behind one of the given commands, if any is given.
function __zelta_ip_at --argument-names count
    set -l line (commandline -opc)
    test (count $line) -eq $count
    and begin
        not set -q argv[2]
        or contains -- "$line[2]" $argv[2..-1]
    end
end

# The settings files that have a mode; the links' own files and the chat scripts have none. grep
# gets /dev/null too, or it would read the terminal when there is no file.
function __zelta_ip_settings
    set -l files /home/main-user/.ip_config/*
    command grep -ls '^config=' /dev/null $files | string replace -r '.*/' ''
end

function __zelta_ip_commands
    printf '%s\t%s\n' \
        --domainname 'Show or set the domain name' \
        --hostname 'Show or set the host name' \
        --start-gprs-if 'Start the GPRS link' \
        --start-wifi-if 'Start the Wi-Fi link' \
        --start-bluetooth-pan-if 'Start the Bluetooth link' \
        --start-usb-eth-if 'Start the USB Ethernet link' \
        --stop-gprs-if 'Stop the GPRS link' \
        --stop-wifi-if 'Stop the Wi-Fi link' \
        --stop-bluetooth-pan-if 'Stop the Bluetooth link' \
        --stop-usb-eth-if 'Stop the USB Ethernet link' \
        --wifi-scan 'List the Wi-Fi networks in reach' \
        --restart-dhclient 'Restart the DHCP client' \
        --restart-wpa-supplicant 'Restart the WPA supplicant' \
        --open-port 'Open the firewall for a port' \
        --close-port 'Delete the rule of a port' \
        --open-ping 'Open the firewall for echo requests' \
        --close-ping 'Delete the rule for echo requests'
end

complete -c zelta-ip -f
complete -c zelta-ip -n '__zelta_ip_at 1' -k -a '(__zelta_ip_commands)'

set -l links gprs wifi bluetooth-pan usb-eth
set -l link_commands --start-$links-if --stop-$links-if
complete -c zelta-ip -n "__zelta_ip_at 2 $link_commands" -k -a '(__zelta_ip_settings)'
complete -c zelta-ip -n '__zelta_ip_at 2 --open-port --close-port' -a 'tcp udp'
complete -c zelta-ip -n '__zelta_ip_at 4 --open-port --close-port' -a 'in out'
complete -c zelta-ip -n '__zelta_ip_at 2 --open-ping --close-ping' -a 'in out'
