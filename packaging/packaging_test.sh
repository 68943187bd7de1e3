#!/usr/bin/env bash
# Installs, packs and unpacks the program, and makes the settings directory in each of the ways that
# there are. Owners, modes and contents are those that keep user 500 from becoming root.
#
#   packaging_test.sh TOOL      exits with 77 where something that it needs is not installed

set -u -o pipefail
missing=$(for name in fakeroot make mandoc man; do command -v $name >/dev/null || echo $name; done)
[[ -z $missing ]] || { echo "skipped, not installed: ${missing//$'\n'/ }" && exit 77; }
[[ $(id -u) == 0 ]] || exec fakeroot "$0" "$@"
tool=$(readlink -f "$1")
cd "$(dirname "$0")/.." || exit 1
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
export SOURCE_DATE_EPOCH=1700000000
failed=0

same() { # WHAT TEXT TEXT
    diff <(echo "$2") <(echo "$3") && return
    echo "differs: $1"
    failed=1
}
install_to() { # DIRECTORY CMAKE-OPTION: from a build that is nothing but the given tool
    cmake -G Ninja -S . -B "$scratch/build" -DCMAKE_INSTALL_PREFIX=/usr "$2" >/dev/null
    cp "$tool" "$scratch/build/zelta-ip"
    DESTDIR=$1 cmake --install "$scratch/build" >/dev/null
}
listing() { find "$1" -mindepth 1 -printf '%M %U/%G ./%P\n' | sort; }
packed() { tar --numeric-owner -tv | awk '{ sub("/$", "", $6); print $1, $2, $6 }' | sort; }

install_to "$scratch/plain" -DZELTA_SETUID=OFF
install_to "$scratch/root" -DZELTA_SETUID=ON
for mask in 022 077; do
    (umask $mask && cpack --config "$scratch/build/CPackConfig.cmake" -B "$scratch/$mask")
done >/dev/null 2>&1
deb=$(echo "$scratch"/022/*.deb)

root=$(listing "$scratch/root")
same "only the program is special" "-rwsr-xr-x 0/0 ./usr/bin/zelta-ip" \
    "$(grep -vE '^(-rw-r--r--|[-d]rwxr-xr-x) 0/0 ' <<<"$root")"
same "without set-user-ID" "${root/rws/rwx}" "$(listing "$scratch/plain")"
same ".deb" "$root" "$(dpkg-deb --fsys-tarfile "$deb" | packed)"
same ".tgz" "$root" "$(gzip -dc "${deb%.deb}.tgz" | packed)"
same "files that are not installed" "" "$(for file in docs/*.[58] packaging/completion/*; do
    find "$scratch/root" -type f -exec cmp -s {} "$file" ';' -print | grep -q . || echo "$file"
done)"
same "packages of one date" "" "$(cmp "$scratch"/{022,077}/*.tgz 2>&1)"

# The settings directory, as the .deb makes it, complains about it, and leaves what is there alone.
dpkg-deb -x "$deb" "$scratch/deb"
dpkg-deb -e "$deb" "$scratch/control"
configure() {
    DPKG_ROOT=$scratch/deb "$scratch/control/postinst" configure 2>&1 | sed "s|$scratch||"
}
settings=$scratch/deb/home/main-user/.ip_config
same "output of the first installation" "" "$(configure)"
whole=$(listing "$scratch/deb")
same "owners and modes" $'-rw------- 0/500\n-rw-r----- 0/500\ndrwxr-x--- 0/500' \
    "$(grep -F .ip_config <<<"$whole" | cut -d' ' -f1,2 | uniq)"
same "what root alone can read" gprs-config "$(find "$settings" -type f -perm 0600 -printf %f)"

# The image builders end with the same tree. Buildroot's rows have to add the set-user-ID bit.
cp -a "$scratch/root" "$scratch/oe"
D=$scratch/oe datadir=/usr/share sh -ec \
    "$(sed -n '/^do_install:append/,/^}/{//!p}' packaging/openembedded/zelta-ip_1.0.0.bb)"
same "OpenEmbedded" "$whole" "$(listing "$scratch/oe")"
make -sf - TARGET_DIR="$scratch/plain" >"$scratch/rows" <<'END'
cmake-package =
include packaging/buildroot/package/zelta-ip/zelta-ip.mk
all: ; $(ZELTA_IP_INSTALL_SETTINGS)
$(info $(ZELTA_IP_PERMISSIONS))
END
while read -r path type mode uid gid _; do
    [[ $type == f ]] || mkdir -p "$scratch/plain$path"
    chown "$uid:$gid" "$scratch/plain$path"
    chmod "$mode" "$scratch/plain$path"
done <"$scratch/rows"
same "Buildroot" "$whole" "$(listing "$scratch/plain")"
same "settings" "" "$(diff -r "$scratch"/{deb,oe}/home && diff -r "$scratch"/{deb,plain}/home)"

echo config=manual >"$settings/usb-auto"
rm "$settings/usb-manual"
chmod g+w "$settings"
chown 500 "$settings/.." "$settings/wlan-config"
kept=$(listing "$scratch/deb")
note=": who owns it or can write it is root through zelta-ip"
same "complaints" "create-settings: /deb/home/main-user$note
create-settings: /deb/home/main-user/.ip_config$note
create-settings: /deb/home/main-user/.ip_config/wlan-config$note" "$(configure)"
same "the engineer's settings" "config=manual $kept" \
    "$(cat "$settings/usb-auto") $(listing "$scratch/deb")"

same "manual pages" "" "$(for page in docs/*.[58]; do
    mandoc -Tlint "$page" | grep -v 'referenced manual not found'
    man --warnings -l "$page" 2>&1 >/dev/null
done)"
exit $failed
