# Checks for what a script needs, however it was installed; source it. Names are those of Debian packages.
# SPDX-License-Identifier: MIT

# Programs that only root's path has.
PATH=$PATH:/usr/sbin:/sbin

# What builds and tests need on this machine, in the order of use.
demo_needs=(g++ cmake ninja-build pkg-config qtbase5-dev libedit-dev libncurses-dev libcsv-dev)
build_needs=("${demo_needs[@]}" libgtest-dev libgmock-dev python3 e2fsprogs dpkg-dev file)
test_needs=("${build_needs[@]}" libxml2-utils)
report_page_needs=(chromium poppler-utils)
armhf_needs=("${build_needs[@]}" g++-arm-linux-gnueabihf qemu-user)
platform_needs=("${build_needs[@]}" g++-{aarch64-linux-gnu,arm-linux-gnueabi,i686-linux-gnu,riscv64-linux-gnu,s390x-linux-gnu}
    qemu-user mmdebstrap qt6-base-dev clang libc++-dev libc++abi-dev git)
package_needs=("${armhf_needs[@]}" g++-aarch64-linux-gnu lintian mmdebstrap qemu-user-static)
emulated_panel_needs=("${armhf_needs[@]}" binutils cpio e2fsprogs kmod mtd-utils qemu-system-arm)
bench_needs=("${build_needs[@]}" libbenchmark-dev libsqlite3-dev liblmdb-dev gnuplot-nox)
measure_medium_needs=("${emulated_panel_needs[@]}" f2fs-tools gnuplot-nox)

# is_present NAME: whether the contents of that package are present.
is_present() {
    case "$1" in
    g++) command -v c++ ;;
    ninja-build) command -v ninja ;;
    qtbase5-dev) pkg-config --exists 'Qt5Core >= 5.15' ;;
    qt6-base-dev) pkg-config --exists 'Qt6Core >= 6.2' ;;
    libgtest-dev) pkg-config --exists gtest ;;
    libgmock-dev) pkg-config --exists gmock ;;
    libedit-dev) pkg-config --exists libedit ;;
    libxml2-utils) command -v xmllint ;;
    poppler-utils) command -v pdftotext ;;
    libcsv-dev) [ -e /usr/include/csv.h ] ;;
    libncurses-dev) pkg-config --exists ncursesw ;;
    libbenchmark-dev) pkg-config --exists benchmark ;;
    libsqlite3-dev) pkg-config --exists sqlite3 ;;
    liblmdb-dev) pkg-config --exists lmdb ;;
    libseccomp-dev) pkg-config --exists libseccomp ;;
    libc++-dev) compgen -G '/usr/lib/llvm-*/include/c++/v1' ;;
    libc++abi-dev) compgen -G '/usr/lib/*/libc++abi.so' || compgen -G '/usr/lib/llvm-*/lib/libc++abi.so' ;;
    libclang-rt-dev) compgen -G "$(clang -print-resource-dir)/lib/*/libclang_rt.fuzzer*.a" ;;
    clang) command -v clang++ ;;
    clang-tidy) command -v run-clang-tidy ;;
    g++-*-linux-*) command -v "${1#g++-}-g++" ;;
    dpkg-dev) command -v dpkg-shlibdeps ;;
    qemu-user-static) command -v qemu-arm-static ;;
    qemu-user) command -v qemu-arm ;;
    binutils) command -v readelf ;;
    e2fsprogs) command -v mke2fs ;;
    kmod) command -v modprobe ;;
    mtd-utils) command -v ubinize ;;
    gnuplot-nox) command -v gnuplot ;;
    f2fs-tools) command -v mkfs.f2fs ;;
    *) command -v "$1" ;;
    esac >/dev/null 2>&1
}

# find_missing NAME...: sets `missing` to those that are not present.
find_missing() {
    local name
    missing=()
    for name in "$@"; do
        is_present "$name" || [[ " ${missing[*]} " = *" $name "* ]] || missing+=("$name")
    done
}

# need NAME...: ends the script, with status 2, when one is missing.
need() {
    local missing
    find_missing "$@"
    [ ${#missing[@]} -gt 0 ] || return 0
    echo "missing: ${missing[*]}; run scripts/bootstrap ${0##*/}" >&2
    exit 2
}
