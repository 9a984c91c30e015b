# Shows the progress of long work: one changing line on a terminal, an occasional line in a log. Source it.
# SPDX-License-Identifier: MIT
set -o pipefail

# step TEXT...: begins a stretch of work.
step() { printf '== %s\n' "$*"; }

# show_progress apt|ninja|ctest: takes the output of one of these and passes on what is not progress. Progress lines have at
# most 80 columns.
show_progress() {
    local terminal= unbuffered=()
    [ ! -t 1 ] || terminal=yes
    # Debian's usual awk would otherwise wait for more lines.
    if awk -W version 2>&1 </dev/null | grep -q mawk; then unbuffered=(-W interactive); fi
    awk "${unbuffered[@]}" -v kind="$1" -v terminal="$terminal" '
    # at N of TOTAL, with a word on it
    function show(n, total, word,    tenth) {
        if (terminal) {
            printf "\r\033[K%s", substr(total ? "[" n "/" total "] " word : "[" n "] " word, 1, 79)
            shown = 1
        } else {
            tenth = total ? int(n * 10 / total) : int(n / 100)
            if (tenth != last || n == total) print total ? "   " n " of " total : "   " n " " word
            last = tenth
        }
        fflush()
    }
    function clear() { if (shown) printf "\r\033[K"; shown = 0 }
    # a line of the summary of ctest, which has long names
    function narrow(line) { return length(line) > 79 ? substr(line, 1, 76) "..." : line }

    kind == "apt" {
        if ($1 == "Unpacking" || $1 == "Setting") show(int(++count / 2), packages, $1 == "Setting" ? "setting up " $3 : "unpacking " $2)
        else if ($1 ~ /^Get:/) { if (terminal) show(++fetched, 0, "fetching " $5) }
        else if ($0 ~ /newly installed/) { packages = $1 + $3; print "   " $3 " packages, including dependencies" }
        next
    }
    kind == "ninja" && match($0, /^\[[0-9]+\/[0-9]+\] /) {
        split(substr($0, 2, RLENGTH - 3), at, "/")
        word = $NF
        sub(/.*\//, "", word)
        show(at[1], at[2], word)
        next
    }
    kind == "ninja" && /^ninja: no work to do/ { next }
    kind == "ctest" && /^ *[0-9]+\/[0-9]+ Test +#/ {
        split($1, at, "/")
        match($0, /#[0-9]+: [^ ]+/)
        name = substr($0, RSTART, RLENGTH)
        sub(/^#[0-9]+: /, "", name)
        if ($0 ~ /(Passed|\*\*\*Skipped) +[0-9.]+ sec$/) show(at[1], at[2], name)
        else { clear(); print "FAILED " name }
        next
    }
    kind == "ctest" && (/^ +Start +[0-9]+: / || /^Internal ctest changing / || /^Test project / || /^$/ && !summary) { next }
    kind == "ctest" && /tests passed, / { summary = 1; clear(); print ""; print; next }
    kind == "ctest" && summary { sub(/^\t *[0-9]+ - /, "   "); print narrow($0); next }
    { clear(); print; fflush() }
    END { clear() }'
}
