#!/usr/bin/env bash
# Installs and packs the program, and makes the settings directory in each of the ways that there are. Owners,
# modes and contents are those that keep user 500 from becoming root.
#   packaging_test.sh TOOL      exits with 77 where something that it needs is not installed

set -u -o pipefail
for name in cpack dpkg-deb fakeroot make; do
    command -v $name >/dev/null || { echo "skipped, not installed: $name" && exit 77; }
done
[[ $(id -u) == 0 ]] || exec fakeroot "$0" "$@"
tool=$(readlink -f "$1") scratch=$(mktemp -d) failed=0
trap 'rm -rf "$scratch"' EXIT
cd "$(dirname "$0")/.." || exit 1
umask 022
export SOURCE_DATE_EPOCH=1700000000

same() { # WHAT TEXT TEXT
    diff <(echo "$2") <(echo "$3") || { echo "differs: $1" && failed=1; }
}
install_to() { # DIRECTORY CMAKE-OPTION: from a build that is nothing but the given tool
    cmake -G Ninja -S . -B "$scratch/build" -DCMAKE_INSTALL_PREFIX=/usr "$2" && cp "$tool" "$scratch/build/zelta-ip" &&
        DESTDIR=$1 cmake --install "$scratch/build"
} >/dev/null
listing() { find "$1" -mindepth 1 -printf '%M %U/%G ./%P\n' | sort; }
device_files() { listing "$1" | grep -v ' ./usr/share'; }
packed() { tar --numeric-owner -tv | awk '{ sub("/$", "", $6); print $1, $2, $6 }' | sort; }

install_to "$scratch/plain" -DZELTA_SETUID=OFF
install_to "$scratch/root" -DZELTA_SETUID=ON
for mask in 022 077; do
    (umask $mask && cpack --config "$scratch/build/CPackConfig.cmake" -B "$scratch/$mask")
done >/dev/null 2>&1
same "packages of one date" "" "$(cmp "$scratch"/{022,077}/*.tgz 2>&1)"
root=$(listing "$scratch/root")
same "only the program is special" "-rwsr-xr-x 0/0 ./usr/bin/zelta-ip" \
    "$(grep -vE '^(-rw-r--r--|[-d]rwxr-xr-x) 0/0 ' <<<"$root")"
same ".tgz, but for what Debian wants" \
    "$(sed 's|site-functions|vendor-completions|; s|\.[58]$|&.gz|' <<<"$root" | sort)" \
    "$(gzip -dc "$scratch"/022/*.tgz | packed | grep -vE '/(lintian.*|changelog\.gz|copyright)$')"

# The settings directory, as the .deb makes it: in one step, or not at all.
device=$scratch/deb home=$scratch/deb/home/main-user settings=$scratch/deb/home/main-user/.ip_config
dpkg-deb -x "$scratch"/022/*.deb "$device"
dpkg-deb -e "$scratch"/022/*.deb "$scratch/control"
rm -r "$device/usr/share/doc" # as slim images do
run() { DPKG_ROOT=$device "$scratch/control/$1" "$2" 2>&1; }
blamed() { run postinst configure | sed -n "s|^create-settings: $device\(/[^:]*\):.*|\1|p" | xargs; }
mkdir -p "$home"
for directory in /home /home/main-user; do
    chown 500 "$device$directory"
    same "of user 500" "$directory " "$(blamed) $(find "$home" -mindepth 1)"
    chown 0 "$device$directory"
done
ln -s nowhere "$settings"
same "a link to nowhere" /home/main-user/.ip_config "$(blamed)"
rm "$settings"
same "output of the first installation" "" "$(run postinst configure)"
whole=$(device_files "$device")
same "owners and modes" "$(printf '%s 0/500\n' -rw-r-----{,,,} drwxr-x---)" \
    "$(grep -F .ip_config <<<"$whole" | cut -d' ' -f1,2)"

# The image builders end with the same settings and program. Buildroot's rows have to add the set-user-ID bit.
D=$scratch/root datadir=/usr/share sh -ec \
    "$(sed -n '/^do_install:append/,/^}/{//!p}' packaging/openembedded/recipes-*/*/*.bb)"
make -sf - TARGET_DIR="$scratch/plain" >"$scratch/rows" <<'END'
include packaging/buildroot/package/zelta-ip/zelta-ip.mk
all: ; $(ZELTA_IP_INSTALL_SETTINGS)
$(info $(ZELTA_IP_PERMISSIONS))
END
while read -r path type mode owner group _; do
    [[ $type == r ]] && all=(-R) || all=()
    chown "${all[@]}" "$owner:$group" "$scratch/plain$path" && chmod "${all[@]}" "$mode" "$scratch/plain$path"
done <"$scratch/rows"
for image in root plain; do
    same "$image" "$whole" "$(device_files "$scratch/$image" && diff -r "$device/home" "$scratch/$image/home")"
done

# What is there already is left alone, complained about, and gone with a purge.
rm "$settings/wifi-auto"
echo psk=secret | tee "$settings/usb-auto" "$settings/wlan-config" >/dev/null
chmod 0600 "$settings/usb-auto"
chown 500 "$settings/gprs-auto"
kept=$(listing "$home")
same "complaints" "$(printf ' /home/main-user/.ip_config/%s' gprs-auto wlan-config)" " $(blamed)"
run postrm purge # of another build of the program, while this one is there
same "the engineer's settings" "psk=secret $kept" "$(cat "$settings/usb-auto") $(listing "$home")"
rm -r "$scratch/deb/usr"
chmod g+w "$settings"
same "purge where others can write" "1 $(listing "$home")" "$(run postrm purge | wc -l) $(listing "$home")"
chmod g-w "$settings"
same "purge" "" "$(run postrm purge; find "$device/home" -mindepth 1)"
exit $failed
