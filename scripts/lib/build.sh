# Configures and builds; source it after packages.sh, in the top folder.
# SPDX-License-Identifier: MIT

# The libraries of every build with tests: installed for this machine, unpacked by scripts/armhf_sysroot for the panel.
library_packages=(qtbase5-dev libgtest-dev libgmock-dev libedit-dev)
# All packages of a build for this machine, and of one for the panel's processor.
build_packages=(g++ cmake ninja-build pkg-config python3 "${library_packages[@]}")
armhf_packages=(g++-arm-linux-gnueabihf cmake ninja-build pkg-config python3 qemu-user)

# build_preset PRESET [TARGET...]: an up-to-date build in build/PRESET, of everything or of the targets. Says nothing
# unless something fails.
build_preset() {
    local log
    log=$(mktemp)
    if ! { cmake --preset "$1" && cmake --build --preset "$1" ${2:+--target "${@:2}"}; } >"$log" 2>&1; then
        tail -n 60 "$log" >&2
        rm -f "$log"
        echo "The build '$1' failed." >&2
        exit 1
    fi
    rm -f "$log"
}

# run_tests PRESET [OPTION...]: runs the tests of build/PRESET, with these options of ctest.
run_tests() {
    local preset=$1 private=()
    shift
    # An ordinary user needs a user namespace to get a private /usr/tavrin. An emulated program cannot enter one
    # itself, because the emulator has threads, so it is entered here.
    [ "$preset" != armhf ] || [ "$(id -u)" -eq 0 ] || private=(unshare --map-root-user --mount)
    "${private[@]}" ctest --preset "$preset" -j"$(nproc)" "$@"
}
