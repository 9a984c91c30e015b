# Configures and builds; source it after packages.sh, in the top folder.

# The packages of every build with tests.
build_packages=(g++ cmake ninja-build pkg-config qtbase5-dev libgtest-dev libgmock-dev)

# build_preset PRESET: an up-to-date build in build/PRESET. Says nothing unless something fails.
build_preset() {
    local log
    log=$(mktemp)
    if ! { cmake --preset "$1" && cmake --build --preset "$1"; } >"$log" 2>&1; then
        tail -n 60 "$log" >&2
        rm -f "$log"
        echo "The build '$1' failed." >&2
        exit 1
    fi
    rm -f "$log"
}
