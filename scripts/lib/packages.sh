# Installs Debian packages that a script needs; source it.
# SPDX-License-Identifier: MIT

# need_packages PACKAGE...: installs those that are missing, as root or through sudo. Ends the script when that
# cannot be done.
need_packages() {
    local package missing=() as_root=() log
    for package in "$@"; do
        [ "$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null)" = installed ] || missing+=("$package")
    done
    [ ${#missing[@]} -gt 0 ] || return 0
    if [ "$(id -u)" -ne 0 ]; then
        if ! command -v sudo >/dev/null; then
            echo "Missing packages: ${missing[*]}" >&2
            echo "Install them as root with apt-get install, or install sudo, and start again." >&2
            exit 1
        fi
        as_root=(sudo)
    fi
    echo "Installing ${missing[*]}" >&2
    local apt_get=("${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -qq -o DPkg::Lock::Timeout=600)
    log=$(mktemp)
    # The second try is for package lists that are missing or old.
    if ! "${apt_get[@]}" install -y --no-install-recommends "${missing[@]}" >"$log" 2>&1 &&
        ! { "${apt_get[@]}" update && "${apt_get[@]}" install -y --no-install-recommends "${missing[@]}"; } >"$log" 2>&1; then
        tail -n 20 "$log" >&2
        rm -f "$log"
        echo "Installing ${missing[*]} failed." >&2
        exit 1
    fi
    rm -f "$log"
}
