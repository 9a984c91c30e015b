# Runs the steps of a long run and reports the time of each; source it.
# SPDX-License-Identifier: MIT
step_times=()

# run_step TITLE COMMAND...: runs it. A step that fails ends the script, after the times.
run_step() {
    local title=$1 begin=$SECONDS
    shift
    printf '\n=== %s\n' "$title"
    if ! "$@"; then
        step_times+=("$(printf '%6d s  %s: FAILED' $((SECONDS - begin)) "$title")")
        print_steps
        echo "FAILED: $title ($*)" >&2
        exit 1
    fi
    step_times+=("$(printf '%6d s  %s' $((SECONDS - begin)) "$title")")
}

# print_steps: the steps so far, with the total time.
print_steps() {
    printf '\n'
    printf '%s\n' "${step_times[@]}"
    printf '%6d s  total\n\n' "$SECONDS"
}
