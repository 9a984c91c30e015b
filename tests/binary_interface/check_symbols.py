#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Compares the symbols that a library exports or leaves undefined with a committed list.

The list has one demangled symbol per line, written as on the panel (32-bit ARM) with the names of Qt 4 and 5. A line may
begin with "Qt 4: ", "Qt 5: " or "Qt 6: " when the symbol belongs to that Qt only. A line that ends in "*" matches any
number of symbols with that beginning. "#" begins a comment; "## " begins a section, which can be compared alone.

A library built with one minor version of a Qt must also load with the first one, so a newer symbol is a difference.

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
    """The symbol, with a 64-bit target's types for sizes and offsets replaced by those of the 32-bit one."""
    return re.sub(r"\b(unsigned )?long\b(?! long)(?<!long long)", lambda match: (match[1] or "") + "int", symbol)


def library_symbols(nm, library, undefined):
    """The symbols, each with its version or an empty string."""
    command = [nm, "--dynamic", "--demangle", "--undefined-only" if undefined else "--defined-only", library]
    result = subprocess.run(command, capture_output=True, text=True)
    if result.returncode != 0:
        fail(f"{' '.join(command)}: {result.stderr.strip()}")
    symbols = {}
    for line in result.stdout.splitlines():
        match = re.match(r"[0-9a-f]* *([A-Za-z]) (.+?)(?:@@?([\w.]+)(?: \(\d+\))?)?$", line)
        # Weak references belong to the start-up code, which works without them.
        if match and match[1] != "w":
            symbols[as_on_the_panel(match[2])] = match[3] or ""
    return symbols


def with_names_of(qt, symbol):
    """A listed symbol in that Qt's spelling."""
    if qt < 6:
        return symbol
    return symbol.replace("QStringList", "QList<QString>").replace("QVector<", "QList<")


def listed_symbols(path, qt, section):
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
            only = re.match(r"Qt (\d): ", line)
            if not only or int(only[1]) == qt:
                symbols.add(with_names_of(qt, line[only.end():] if only else line))
    if not symbols:
        fail(f"{path}: no symbols" + (f" in a section '{section}'" if section else ""))
    return symbols


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--nm", default="nm", help="the nm of the library's processor")
    parser.add_argument("--qt", type=int, choices=[4, 5, 6], required=True, help="the major version of its Qt")
    parser.add_argument("--undefined", action="store_true", help="the undefined symbols instead of the exported ones")
    parser.add_argument("--section", help="compare this section only: every symbol of it must be there")
    parser.add_argument("library")
    parser.add_argument("list")
    arguments = parser.parse_args()

    found = library_symbols(arguments.nm, arguments.library, arguments.undefined)
    listed = listed_symbols(arguments.list, arguments.qt, arguments.section)
    kind = "undefined" if arguments.undefined else "exported"
    groups = tuple(symbol[:-1] for symbol in listed if symbol.endswith("*"))
    missing = sorted(symbol for symbol in listed - found.keys() if not symbol.endswith("*"))
    added = [] if arguments.section else sorted(symbol for symbol in found.keys() - listed if not symbol.startswith(groups))
    for symbol in missing:
        print(f"no longer {kind}: {symbol}")
    for symbol in added:
        print(f"newly {kind}: {symbol}")
    late = sorted(symbol for symbol, version in found.items() if re.match(r"Qt_\d+\.\d+", version))
    for symbol in late:
        print(f"not in the first Qt {arguments.qt}: {symbol} ({found[symbol]})")
    if missing or added or late:
        print(f"{arguments.library} has changed its binary interface. If that is intended, change {arguments.list} too.")
        return 1
    print(f"{len(found)} {kind} symbols, as listed in {arguments.list}.")
    return 0


sys.exit(main())
