#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Fails when a program needs a library that it must not need.

  check_needed_libraries.py READELF PROGRAM --own LIBRARY... --without NAME...

Checks the program and those of its own libraries that it needs, directly or through another. NAME is a part of a library's
name. Exit status: 0 it needs none of them, 1 it needs one, 2 unreadable input.
"""
import argparse
import pathlib
import re
import subprocess
import sys


def needed_libraries(readelf, file):
    result = subprocess.run([readelf, "--dynamic", "--wide", file], capture_output=True, text=True)
    needed = re.findall(r"\(NEEDED\).*\[(.+)\]", result.stdout)
    if result.returncode != 0 or not needed:
        print(f"{file}: no needed libraries found. {result.stderr.strip()}", file=sys.stderr)
        sys.exit(2)
    return needed


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("readelf")
    parser.add_argument("program")
    parser.add_argument("--own", nargs="*", default=[], help="libraries of this project")
    parser.add_argument("--without", nargs="+", required=True)
    arguments = parser.parse_args()

    own = {pathlib.Path(file).name: file for file in arguments.own}
    files = [arguments.program]
    seen = set()
    for file in files:
        for library in needed_libraries(arguments.readelf, file):
            if any(name in library for name in arguments.without):
                print(f"{file} needs {library}.")
                return 1
            if library in own and library not in seen:
                files.append(own[library])
            seen.add(library)
    print(f"{arguments.program} needs {', '.join(sorted(seen))}.")
    return 0


sys.exit(main())
