# Configures, builds and tests; source it in the top folder.
# SPDX-License-Identifier: MIT
. scripts/lib/needs.sh
. scripts/lib/progress.sh

# configure PRESET [OPTION...]: an up-to-date configuration of build/PRESET.
configure() {
    configure_as "$1" --preset "$@"
}

# configure_as NAME OPTION...: the same for build/NAME, with all of the options of cmake.
configure_as() {
    local name=$1 log
    shift
    log=$(mktemp)
    if ! cmake -B "build/$name" "$@" >"$log" 2>&1; then
        tail -n 60 "$log" >&2
        rm -f "$log"
        echo "The build '$name' could not be configured." >&2
        exit 1
    fi
    rm -f "$log"
}

# build NAME [TARGET...]: everything or the targets, in the configured folder build/NAME.
build() {
    step "Building ($1)"
    if ! cmake --build "build/$1" ${2:+--target "${@:2}"} 2>&1 | show_progress ninja; then
        echo "The build '$1' failed." >&2
        exit 1
    fi
}

build_preset() {
    configure "$1"
    build "$@"
}

# run_tests PRESET [OPTION...]: runs the tests of build/PRESET, with these options of ctest; names those that were skipped,
# and fails when there are more or fewer tests than recorded. COUNTED_AS is the run's name there, unless it is PRESET.
run_tests() {
    run_tests_as "$1" --preset "$@"
}

# run_tests_as NAME OPTION...: the same, with all of the options of ctest. Results are in build/NAME/results.xml, too.
run_tests_as() {
    local name=$1 status=0
    local results=$PWD/build/$name/results.xml
    shift
    step "Testing ($name)"
    rm -f "$results" # left by another run
    ctest "$@" --output-junit "$results" --no-label-summary -j"$(nproc)" 2>&1 | show_progress ctest || status=$?
    local log=build/$name/Testing/Temporary/LastTest.log
    grep -h -m 1 '^mapping paths to ' "$log" 2>/dev/null || true
    [ "$status" -ne 0 ] || scripts/test_counts "${COUNTED_AS-$name}" "$log" "$@" || status=$?
    return "$status"
}
