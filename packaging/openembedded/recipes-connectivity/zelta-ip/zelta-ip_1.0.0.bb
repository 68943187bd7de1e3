SUMMARY = "Network configuration tool of the device"
DESCRIPTION = "Starts and stops the four links of the device, scans for Wi-Fi networks, opens and \
closes the firewall, and shows or sets host and domain name. Set-user-ID root, for user 500 too."
# The owner has not chosen a licence.
LICENSE = "CLOSED"

inherit cmake externalsrc useradd

EXTERNALSRC = "${@os.path.realpath(d.getVar('THISDIR') + '/../../../..')}"

USERADD_PACKAGES = "${PN}"
GROUPADD_PARAM:${PN} = "--gid 500 main-user"
USERADD_PARAM:${PN} = "--uid 500 --gid 500 --home-dir /home/main-user \
    --no-create-home --shell /bin/sh main-user"

do_install:append() {
    sh ${D}${datadir}/zelta-ip/create-settings ${D}
}

FILES:${PN} += "/home/main-user ${datadir}/zelta-ip ${datadir}/bash-completion ${datadir}/fish \
    ${datadir}/zsh"

# The programs that it drives, as far as a configured layer has them; zelta-ip(8) names their paths. Instead
# of the DHCP client a layer may have another program of that name.
RRECOMMENDS:${PN} = "busybox dhcp-client iptables ppp wireless-tools wpa-supplicant wpa-supplicant-cli"

# An upgrade keeps what an engineer wrote.
CONFFILES:${PN} = "/home/main-user/.ip_config/*"
