#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Compares the symbols that a library exports or leaves undefined with a committed list.

The list holds one demangled symbol a line, written as on the panel (32-bit ARM). A line may begin with "armhf: " or
"amd64: " when the symbol belongs to that processor alone. A line that ends in "*" stands for any number of
symbols that begin so. "#" begins a comment; "## " begins a section, which can be compared alone.

Exit status: 0 the same, 1 a difference, 2 unreadable input.
"""
import argparse
import re
import subprocess
import sys


def fail(message):
    print(message, file=sys.stderr)
    sys.exit(2)


def as_on_the_panel(symbol):
    """The symbol with the sizes and offsets of a 64-bit target in the types of the 32-bit one."""
    return re.sub(r"\b(unsigned )?long\b(?! long)(?<!long long)", lambda match: (match[1] or "") + "int", symbol)


def library_symbols(nm, library, undefined):
    command = [nm, "--dynamic", "--demangle", "--without-symbol-versions",
               "--undefined-only" if undefined else "--defined-only", library]
    result = subprocess.run(command, capture_output=True, text=True)
    if result.returncode != 0:
        fail(f"{' '.join(command)}: {result.stderr.strip()}")
    symbols = set()
    for line in result.stdout.splitlines():
        match = re.match(r"[0-9a-f]* *([A-Za-z]) (.+)$", line)
        # Weak references are the start-up code's, which works without them.
        if match and match[1] != "w":
            symbols.add(match[2])
    return symbols


def listed_symbols(path, processor, section):
    try:
        with open(path, encoding="utf-8") as file:
            lines = file.read().splitlines()
    except OSError as error:
        fail(f"{path}: {error.strerror}")
    symbols = set()
    current = None
    for line in lines:
        if line.startswith("## "):
            current = line[3:]
        elif line and not line.startswith("#") and section in (None, current):
            only = re.match(r"(armhf|amd64): ", line)
            if not only or only[1] == processor:
                symbols.add(line[only.end():] if only else line)
    if not symbols:
        fail(f"{path}: no symbols" + (f" in a section '{section}'" if section else ""))
    return symbols


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--nm", default="nm", help="the nm of the library's processor")
    parser.add_argument("--processor", choices=["armhf", "amd64"], required=True)
    parser.add_argument("--undefined", action="store_true", help="the undefined symbols instead of the exported ones")
    parser.add_argument("--section", help="compare this section only: every symbol of it must be there")
    parser.add_argument("library")
    parser.add_argument("list")
    arguments = parser.parse_args()

    found = library_symbols(arguments.nm, arguments.library, arguments.undefined)
    if arguments.processor != "armhf":
        found = {as_on_the_panel(symbol) for symbol in found}
    listed = listed_symbols(arguments.list, arguments.processor, arguments.section)
    kind = "undefined" if arguments.undefined else "exported"
    groups = tuple(symbol[:-1] for symbol in listed if symbol.endswith("*"))
    missing = sorted(symbol for symbol in listed - found if not symbol.endswith("*"))
    added = [] if arguments.section else sorted(symbol for symbol in found - listed if not symbol.startswith(groups))
    for symbol in missing:
        print(f"no longer {kind}: {symbol}")
    for symbol in added:
        print(f"newly {kind}: {symbol}")
    if missing or added:
        print(f"{arguments.library} has changed its binary interface. If that is meant, change {arguments.list} too.")
        return 1
    print(f"{len(found)} {kind} symbols, as listed in {arguments.list}.")
    return 0


sys.exit(main())
