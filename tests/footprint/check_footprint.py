#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Prints what the library costs the panel, and fails when it is over a limit.

  check_footprint.py --strip STRIP --readelf READELF LIBRARY OPEN_PROJECT

OPEN_PROJECT opens a project with 1,000 entries and prints what memory the module holds; TEST_EMULATOR comes before it.
Exit status: 0 within the limits, 1 over one of them, 2 when something could not be measured.
"""
import argparse
import os
import re
import subprocess
import sys
import tempfile

SIZE_LIMIT = 48 * 1024
RESIDENT_LIMIT = 64 * 1024
HEAP_LIMIT = 128 * 1024
# QtCore and the C and C++ runtime.
ALLOWED = re.compile(r"(libQt5Core\.so\.5|libQtCore\.so\.4|libstdc\+\+\.so\.6|libgcc_s\.so\.1|libm\.so\.6|libc\.so\.6)$")


def run(*command):
    result = subprocess.run(command, capture_output=True, text=True)
    if result.returncode != 0:
        print(f"{' '.join(command)}: status {result.returncode}: {result.stderr.strip()}", file=sys.stderr)
        sys.exit(2)
    return result.stdout


def stripped_size(strip, library):
    with tempfile.TemporaryDirectory() as folder:
        stripped = os.path.join(folder, "stripped")
        run(strip, "-o", stripped, library)
        return os.path.getsize(stripped)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--strip", required=True)
    parser.add_argument("--readelf", required=True)
    parser.add_argument("library")
    parser.add_argument("open_project")
    arguments = parser.parse_args()

    needed = re.findall(r"\(NEEDED\).*\[(.+)\]", run(arguments.readelf, "--dynamic", "--wide", arguments.library))
    emulator = os.environ.get("TEST_EMULATOR", "").split()
    held = dict(line.split() for line in run(*emulator, arguments.open_project).splitlines())

    over = 0
    for what, value, limit in [
            ("size of the file, stripped", stripped_size(arguments.strip, arguments.library), SIZE_LIMIT),
            ("of it in memory", int(held["resident"]), RESIDENT_LIMIT),
            (f"heap held, {held['entries']} entries open", int(held["heap"]), HEAP_LIMIT)]:
        # Zero means that the measurement failed.
        good = 0 < value <= limit
        over += not good
        print(f"{what:32} {value:8} bytes  limit {limit:8}{'' if good else '  NOT KEPT'}")
    strangers = [name for name in needed if not ALLOWED.match(name)]
    print(f"{'libraries needed':32} {' '.join(needed)}")
    if strangers or not needed:
        over += 1
        print(f"not QtCore or the C and C++ runtime: {' '.join(strangers)}  NOT KEPT")
    return 1 if over else 0


sys.exit(main())
