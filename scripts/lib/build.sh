# Configures, builds and tests; source it in the top folder.
# SPDX-License-Identifier: MIT
. scripts/lib/needs.sh
. scripts/lib/progress.sh

# configure PRESET [OPTION...]: an up-to-date configuration of build/PRESET.
configure() {
    configure_as "$1" --preset "$@"
}

# configure_as NAME OPTION...: the same for any folder; NAME is for messages.
configure_as() {
    local name=$1 log
    shift
    log=$(mktemp)
    if ! cmake "$@" >"$log" 2>&1; then
        tail -n 60 "$log" >&2
        rm -f "$log"
        echo "The build '$name' could not be configured." >&2
        exit 1
    fi
    rm -f "$log"
}

# build PRESET [TARGET...]: everything or the targets, in a configured build.
build() {
    build_as "$1" --preset "$@"
}

# build_as NAME --preset PRESET|FOLDER [TARGET...]: the same for any folder.
build_as() {
    local name=$1 place=("$2")
    [ "$2" != --preset ] || { place+=("$3"); shift; }
    shift 2
    step "Building ($name)"
    if ! cmake --build "${place[@]}" ${1:+--target "$@"} 2>&1 | show_progress ninja; then
        echo "The build '$name' failed." >&2
        exit 1
    fi
}

build_preset() {
    configure "$1"
    build "$@"
}

# run_tests PRESET [OPTION...]: runs the tests of build/PRESET, with these options of ctest, and names why some were
# skipped.
run_tests() {
    run_tests_as "$1" "build/$1" --preset "$@"
}

# run_tests_as NAME FOLDER OPTION...: the same for any folder.
run_tests_as() {
    local name=$1 folder=$2 status=0
    shift 2
    step "Testing ($name)"
    ctest "$@" --no-label-summary -j"$(nproc)" 2>&1 | show_progress ctest || status=$?
    local log=$folder/Testing/Temporary/LastTest.log
    grep -h -m 1 '^mapping paths to ' "$log" 2>/dev/null || true
    sed -n -e '/: Skipped$/{n;p}' -e '/^needs root/p' "$log" 2>/dev/null | sort | uniq -c |
        while read -r count reason; do echo "$count skipped: $reason"; done
    return "$status"
}
