# Installs Debian packages, for the few scripts that do so; source it in the top folder.
# SPDX-License-Identifier: MIT
. scripts/lib/needs.sh
. scripts/lib/progress.sh

# install_missing WHY NAME...: says what it is about to install, and why, and installs it as root or through sudo. Ends the
# script when that cannot be done.
install_missing() {
    local why=$1 missing as_root=() log
    shift
    find_missing "$@"
    [ ${#missing[@]} -gt 0 ] || return 0
    if ! command -v apt-get >/dev/null; then
        echo "missing: ${missing[*]}" >&2
        echo "This is not Debian: install the equivalents of these Debian 12 packages." >&2
        exit 2
    fi
    if [ "$(id -u)" -ne 0 ]; then
        if ! command -v sudo >/dev/null; then
            echo "missing: ${missing[*]}" >&2
            echo "As root: apt-get install --no-install-recommends ${missing[*]}" >&2
            echo "Then run this again. With sudo installed, it installs them itself." >&2
            exit 2
        fi
        as_root=(sudo)
    fi
    step "Installing with ${as_root[*]:+${as_root[*]} }apt-get, $why:"
    printf '%s\n' "${missing[*]}" | fold -s -w 76 | sed 's/^/   /'
    local apt_get=("${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -q -o DPkg::Lock::Timeout=600)
    log=$(mktemp)
    # The second try is for package lists that are missing or old.
    if ! install_packages "$log" "${missing[@]}" && ! { "${apt_get[@]}" update >"$log" 2>&1 && install_packages "$log" "${missing[@]}"; }; then
        tail -n 20 "$log" >&2
        rm -f "$log"
        echo "Installing ${missing[*]} failed." >&2
        exit 1
    fi
    rm -f "$log"
}

# install_packages LOG NAME...: for install_missing.
install_packages() {
    local log=$1
    shift
    "${apt_get[@]}" install -y --no-install-recommends "$@" 2>&1 | tee "$log" | show_progress apt
}
