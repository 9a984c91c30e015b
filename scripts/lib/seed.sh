# Replaces --seed-of-commit in a command's options, so that each commit uses other random numbers; source it.
# SPDX-License-Identifier: MIT

# take_seed_of_commit OPTION...: sets `options` to these, with the first eight digits of the commit that is checked out.
take_seed_of_commit() {
    local option
    options=()
    for option in "$@"; do
        if [ "$option" = --seed-of-commit ]; then
            options+=(--seed $((16#$(git rev-parse HEAD | cut -c 1-8))))
        else
            options+=("$option")
        fi
    done
}
