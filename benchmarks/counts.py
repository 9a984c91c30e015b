#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Counts what one operation costs: instructions (callgrind; on armhf qemu-user with a counting plugin) and system calls
(strace). Every count is the difference of two runs that differ by a known number of operations, so that start-up and
set-up drop out. Prints JSON: {row: {side: {"instructions": n, "calls": {name: n}, "armhf": n}}}."""
import argparse
import collections
import json
import re
import subprocess
import sys
import tempfile

CHANGES_AND_SAVE = ["bit_change", "word_change/10", "word_change/1000", "whole_area_save"]
# Row: operations by which the two runs differ. Every row of the main table.
ROWS = {
    "whole_area_save": 50, "whole_area_restore": 20, "bit_change": 200, "word_change/10": 200, "word_change/1000": 200,
    "bit_restore/4096": 2, "bit_restore/65536": 1, "word_restore/65536": 10, "address_list/1000": 4,
    "address_list/10000": 1, "watch_list/1000": 10, "watch_list/65536": 1,
}
# Enough operations to fill the caches of the allocator before the first count.
BEFORE = 10


def run(command):
    done = subprocess.run(command, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
    if done.returncode != 0:
        sys.exit(f"{' '.join(command)} failed:\n{done.stderr[-2000:]}")
    return done.stderr


def per_operation(measure, row):
    times = ROWS[row]
    before = BEFORE if times > 5 else 1
    few, many = measure(before), measure(before + times)
    return {name: round((many[name] - few[name]) / times, 2) for name in many if many[name] != few[name]}


def callgrind(program):
    text = run(["valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null", *program])
    return {"instructions": int(re.search(r"Collected : (\d+)", text).group(1))}


def strace(program):
    with tempfile.NamedTemporaryFile("r") as log:
        run(["strace", "-qq", "-o", log.name, *program])
        return collections.Counter(re.findall(r"^(\w+)\(", log.read(), re.MULTILINE))


def emulated(program, sysroot, plugin):
    text = run(["qemu-arm", "-L", sysroot, "-plugin", plugin, *program])
    return {"armhf": int(re.search(r"instructions: (\d+)", text).group(1))}


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("program", help="repeat_operation")
    parser.add_argument("directory", help="where the retention files are made")
    parser.add_argument("--armhf", nargs=3, metavar=("PROGRAM", "SYSROOT", "PLUGIN"), help="count on armhf too")
    options = parser.parse_args()
    counts = {}
    for row in ROWS:
        for side in ("module", "bare"):
            words = [options.directory, row, side]
            count = counts.setdefault(row, {}).setdefault(side, {})
            if row in CHANGES_AND_SAVE:
                native = [options.program, *words]
                count.update(per_operation(lambda times: callgrind([*native, str(times)]), row))
                count["calls"] = per_operation(lambda times: strace([*native, str(times)]), row)
            if options.armhf:
                program, sysroot, plugin = options.armhf
                count.update(per_operation(
                    lambda times: emulated([program, *words, str(times)], sysroot, plugin), row))
    json.dump(counts, sys.stdout, indent=1)


if __name__ == "__main__":
    main()
