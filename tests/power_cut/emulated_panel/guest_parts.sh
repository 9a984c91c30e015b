# Assembles the root folder of an emulated guest, for the scripts that make one; source it. They set `here`, their own
# folder, and from their arguments `debian`, from fetch_guest, `build`, a cross build, and `parts`, the folder to fill.
# SPDX-License-Identifier: MIT
PATH=$PATH:/usr/sbin:/sbin
root=$parts/root
libraries=()

# begin_root SYSROOT...: a root with busybox and the script's own guest_init. Shared libraries come from the build or from the
# first of the sysroots that has them.
begin_root() {
    local sysroot folder
    libraries=("$build/simulated_host" "$build/project_tree" "$build/poweroff_protect")
    for sysroot in "$@"; do
        for folder in "$sysroot/lib/" "$sysroot/usr/lib/"; do
            [ ! -d "$folder" ] || libraries+=("$folder")
        done
    done
    release=$(basename "$debian"/kernel/lib/modules/*)
    mkdir -p "$root"/{bin,dev,proc,sys,lib,modules,usr/tavrin/project}
    cp "$debian/busybox/bin/busybox" "$root/bin/"
    cp "$here/guest_init" "$root/init"
}

# built NAME: the file of that name that the cross build made.
built() {
    find "$build" -name "$1" -type f -print -quit | grep . || { echo "$build has no $1; build it first." >&2; exit 2; }
}

# add_needed FILE: copies the shared libraries that FILE needs, and those that they need, into the guest's /lib.
add_needed() {
    local name library
    for name in $(readelf -d "$1" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p'); do
        [ ! -e "$root/lib/$name" ] || continue
        library=$(find "${libraries[@]}" -name "$name" -print -quit)
        [ -n "$library" ] || { echo "None of ${libraries[*]} has $name, which $1 needs." >&2; exit 2; }
        cp -L "$library" "$root/lib/$name"
        add_needed "$root/lib/$name"
    done
}

# add_program NAME: a program of the cross build, with its libraries.
add_program() {
    local program
    program=$(built "$1")
    cp "$program" "$root/bin/"
    add_needed "$program"
}

# add_modules LIST MODULE...: copies kernel modules with those that they need; /modules/LIST tells the guest in which order
# they load and with which parameters. Modules that a file system requests by name (checksums and compression) are not among
# the dependencies.
add_modules() {
    local list=$root/modules/$1 path parameters
    shift
    echo "options ubi mtd=bmc" >"$parts/module_parameters"
    modprobe -C "$parts/module_parameters" -d "$debian/kernel" -S "$release" --show-depends -a "$@" |
        sed -n 's/^insmod //p' | awk '!seen[$0]++' |
        while read -r path parameters; do
            cp -n "$path" "$root/modules/"
            echo "${path##*/} $parameters"
        done >"$list"
}

# pack_guest: what the emulator boots, in the folder of parts.
pack_guest() {
    add_modules ubifs crc32c_generic deflate zstd spi-nor spi-aspeed-smc ubi ubifs
    (cd "$root" && find . | LC_ALL=C sort | cpio -o -H newc -R 0:0 --quiet) >"$parts/initramfs"
    cp "$debian"/kernel/boot/vmlinuz-* "$parts/vmlinuz"
    cp "$debian"/kernel/usr/lib/linux-image-*/aspeed-ast2600-evb.dtb "$parts/"
}

# make_flash: blank.ubifs, a flash chip of 64 erase blocks of 256 KiB with one volume over all of it; everything else is
# erased.
make_flash() {
    mkdir "$parts/empty"
    mkfs.ubifs -m 8 -e 262016 -c 60 -r "$parts/empty" "$parts/volume"
    cat >"$parts/volumes.ini" <<EOF
[project]
mode=ubi
image=$parts/volume
vol_id=0
vol_type=dynamic
vol_size=$(stat -c %s "$parts/volume")
vol_name=project
vol_flags=autoresize
EOF
    ubinize -m 1 -p 256KiB -o "$parts/flash" "$parts/volumes.ini"
    head -c 16M /dev/zero | tr '\0' '\377' >"$parts/blank.ubifs"
    dd if="$parts/flash" of="$parts/blank.ubifs" conv=notrunc status=none
}
