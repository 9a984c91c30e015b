# Prints this machine's source of Debian packages, for other suites; source it.
# SPDX-License-Identifier: MIT

# debian_source SUITE: a line for sources.list, with the server and the key ring of this machine's own Debian. A mirror that
# is days behind is accepted, although for sid its list is then past its validity date.
debian_source() {
    local server
    server=$(apt-get indextargets --format '$(SITE) $(ORIGIN) $(LABEL) $(COMPONENT)' |
        awk '$2 == "Debian" && $3 == "Debian" && $4 == "main" { print $1; exit }')
    if [ -z "$server" ]; then
        echo "This machine's apt has no package lists from Debian: run apt-get update." >&2
        return 1
    fi
    echo "deb [signed-by=/usr/share/keyrings/debian-archive-keyring.gpg check-valid-until=no] $server $1 main"
}
