#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Measures how long a change blocks the panel, for each store on its own ext4 file system mounted in FOLDER. The stores take
turns, with a few changes each. Prints JSON: {"quiet" or "log": {store: [microseconds...]}}."""
import argparse
import contextlib
import json
import subprocess
import sys
import tempfile
from pathlib import Path

STORES = ("module", "module_files", "sqlite", "lmdb", "qsettings", "two_files", "fdatasync", "dsync", "module_shell")
TURN = 25


def run(*command):
    subprocess.run(command, check=True, stdout=subprocess.DEVNULL)


@contextlib.contextmanager
def file_system(folder, name):
    image, mounted = folder / f"{name}.img", folder / name
    mounted.mkdir()
    with open(image, "wb") as file:
        file.truncate(64 << 20)
    run("mkfs.ext4", "-q", "-b", "4096", str(image))
    run("mount", "-o", "loop", str(image), str(mounted))
    try:
        yield mounted
    finally:
        run("umount", str(mounted))


def measure(program, folder, load, changes):
    with contextlib.ExitStack() as stack:
        processes = {}
        for store in STORES:
            mounted = stack.enter_context(file_system(folder, f"{load}_{store}"))
            processes[store] = stack.enter_context(subprocess.Popen(
                [program, str(mounted), store, load], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True, bufsize=1))
        times = {store: [] for store in STORES}
        for done in range(-TURN, changes, TURN):  # the first turn warms up
            for store, process in processes.items():
                process.stdin.write(f"{TURN}\n")
                process.stdin.flush()
                taken = [float(word) for word in process.stdout.readline().split()]
                if len(taken) != TURN:
                    sys.exit(f"{store} failed")
                times[store] += taken if done >= 0 else []
        for process in processes.values():
            process.stdin.close()
            process.wait()
        return times


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("program", help="stand_still")
    parser.add_argument("folder", type=Path)
    parser.add_argument("--changes", type=int, default=2000, help="of each store (default %(default)s)")
    options = parser.parse_args()
    with tempfile.TemporaryDirectory(dir=options.folder) as name:
        times = {load: measure(options.program, Path(name), load, options.changes) for load in ("quiet", "log")}
    json.dump(times, sys.stdout)


if __name__ == "__main__":
    main()
