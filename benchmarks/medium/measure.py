#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Counts what the module and other stores write to the medium of an emulated 32-bit ARM panel: bytes, write requests and
flushes, on a flash chip also erasures. QEMU counts: for the disk in its block statistics, for the flash chip in its
trace."""
import argparse
import concurrent.futures
import json
import os
import shutil
import subprocess
import sys
import tempfile
import time
from dataclasses import dataclass, replace
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "tests/power_cut/emulated_panel"))
from emulator import Emulator, EmulatorFailure, Machine  # pylint: disable=wrong-import-position

os.environ["PATH"] += ":/usr/sbin:/sbin"
STORES = ("module", "module_files", "sqlite", "lmdb", "qsettings", "two_files", "fdatasync", "dsync")
DISK_BYTES = 128 << 20
FLASH_PAGE = 256
RECORD = Path(__file__).with_name("expected_costs.txt")
RECORD_HEADER = """# What a change of one of 10 cells writes: storage, bytes, flushes or, on UBIFS, erasures.
# scripts/measure_medium --check --update writes it; --check compares.
"""
MARGIN = 0.1


@dataclass(frozen=True)
class Load:
    """That many changes of one of `cells` cells or, with 0 cells, saves of three area images, 327,680 bytes."""

    cells: int
    changes: int
    log: bool = False  # another program's log gets a line of 128 bytes before each change
    pause: int = 0  # milliseconds after each change
    times_each: int = 1  # more than 1: a planted fault that repeats each change


SHORT = [Load(10, 30)]
PACED = [Load(10, 10, pause=1200)]  # occasional changes, so that the kernel's periodic work is included
SOME = tuple(Load(cells, changes, log) for log in (False, True) for cells, changes in ((10, 40), (0, 5)))
FULL = (*SOME, *(Load(cells, 20, log) for log in (False, True) for cells in (1, 1000)))


@dataclass(frozen=True)
class Storage:
    name: str
    kind: str  # as mount calls it
    options: str = "noatime"
    loads: tuple = FULL
    make: tuple = ("mkfs.ext4", "-q", "-b", "4096")

    @property
    def on_flash(self):
        return self.kind == "ubifs"


STORAGES = (
    Storage("ext4", "ext4", "defaults"),
    Storage("ext4 noatime", "ext4", loads=SOME),
    Storage("ext4 lazytime", "ext4", "noatime,lazytime", SOME),
    Storage("ext4 data=writeback", "ext4", "noatime,data=writeback", SOME),
    Storage("ext4 no journal", "ext4", make=("mkfs.ext4", "-q", "-b", "4096", "-O", "^has_journal")),
    Storage("ext4 commit=1", "ext4", "noatime,commit=1", SOME),
    Storage("f2fs", "f2fs", make=("mkfs.f2fs", "-q")),
    Storage("ubifs", "ubifs"),
)


def machine(storage):
    if storage.on_flash:
        return Machine("ubifs", "flash", "blank.ubifs", "ttyS4",
                       ("-M", "ast2600-evb,fmc-model=m25p128", "-m", "512M", "-dtb", "{parts}/aspeed-ast2600-evb.dtb",
                        "-drive", "if=mtd,format=raw,cache=unsafe,file={image}",
                        # QEMU keeps no statistics of flash chips.
                        "-trace", "m25p80_page_program", "-trace", "m25p80_flash_erase", "-D", "{image}.trace"), False)
    disks = (word for number, _ in enumerate(STORES) for word in (
        "-drive", f"if=none,id=disk{number},format=raw,cache=unsafe,file={{image}}{number}",
        "-device", f"virtio-blk-device,drive=disk{number},serial=disk{number}"))
    return Machine(storage.kind, "disks", "", "ttyAMA0", ("-M", "virt", "-m", "256M", *disks), False)


class FlashTrace:
    """The commands to the emulated flash chip, from QEMU's trace: a line for each byte programmed and for each erasure."""

    def __init__(self, path):
        self._path = path
        self._lines = None
        self._page = None
        self._counts = {"bytes": 0, "requests": 0, "flushes": 0, "erasures": 0}

    def read(self):
        self._lines = self._lines or open(self._path, encoding="ascii")
        for line in self._lines:
            if line.startswith("m25p80_flash_erase"):
                self._counts["erasures"] += 1
                self._page = None
            else:
                page = int(line.split("cur_addr=")[1].split()[0], 16) // FLASH_PAGE
                self._counts["bytes"] += 1
                self._counts["requests"] += page != self._page
                self._page = page
        return dict(self._counts)


class Guest(Emulator):
    """The emulated panel with an empty file system for each store; a flash chip has one for all of them."""

    def __init__(self, storage, parts, folder):
        self._said = []
        self._storage = storage
        self._image = folder / "image"
        if storage.on_flash:
            shutil.copyfile(parts / "blank.ubifs", self._image)
            self._flash = FlashTrace(f"{self._image}.trace")
        else:
            for number, _ in enumerate(STORES):
                path = f"{self._image}{number}"
                with open(path, "wb") as file:
                    file.truncate(DISK_BYTES)
                subprocess.run([*storage.make, path], check=True, stdout=subprocess.DEVNULL)
        super().__init__(machine(storage), parts, self._image, folder / "serial.log")
        self._shell(f"while read -r module parameters; do insmod /modules/$module $parameters 2>/dev/null; done "
                    f"</modules/{'ubifs' if storage.on_flash else 'disk'}")

    def measure(self, store, load):
        """The cost of one change or save."""
        number = STORES.index(store)
        device = "ubi0:project" if self._storage.on_flash else (
            f"/dev/$(cd /sys/block && grep -lx disk{number} vd*/serial | cut -d / -f 1)")
        folder = "/usr/tavrin/project"
        self._shell(f"mount -t {self._storage.kind} -o {self._storage.options} {device} {folder}")
        begun = time.monotonic()
        self._say(f"medium_costs {store} {load.cells} {load.changes} {load.pause} {int(load.log)} {load.times_each}")
        self._hear("ready")
        before = self._counts(number)
        self._say("")
        self._hear("made")
        after = self._counts(number)
        self._say("")
        self._hear("ended 0")
        self._shell(f"rm -rf {folder}/*.* {folder}/image* && sync && umount {folder}")
        return {"storage": self._storage.name, "store": store, **vars(load), "seconds": round(time.monotonic() - begun, 1),
                **{name: (after[name] - before[name]) / load.changes for name in before}}

    def _counts(self, number):
        if self._storage.on_flash:
            return self._flash.read()
        statistics = self._command("query-blockstats")
        stats = next(entry["stats"] for entry in statistics if entry["device"] == f"disk{number}")
        return {"bytes": stats["wr_bytes"], "requests": stats["wr_operations"], "flushes": stats["flush_operations"]}

    def _shell(self, command):
        self._say(command)
        self._hear("ended 0")

    def _say(self, line):
        self._process.stdin.write(line.encode("ascii") + b"\n")
        self._process.stdin.flush()

    def _hear(self, wanted):
        self.run_until(lambda: bool(self._said))
        if not self._said or self._said[0] != wanted:
            raise EmulatorFailure(f"{self._storage.name}: the panel says {self._said or 'nothing more'}, not \"{wanted}\"")
        del self._said[0]

    def _take(self, line):
        if line is None:
            super()._take(None)
        elif line == "medium waiting":
            self._waiting = True
        elif line.startswith("medium "):
            self._said.append(line.split(" ", 1)[1])


def measure_storage(storage, loads, stores, parts, note):
    with tempfile.TemporaryDirectory(dir=parts.parent) as name:
        rows = []
        with Guest(storage, parts, Path(name)) as guest:
            for store in stores:
                for load in loads:
                    rows.append(guest.measure(store, load))
                note(f"{storage.name}, {store}: {len(rows)} measured")
        return rows


def check(rows, update):
    """Compares the module's bytes, flushes and erasures with the record; returns the findings."""
    found = {row["storage"]: [row["bytes"], row.get("erasures", row["flushes"])] for row in rows if row["store"] == "module"}
    if update:
        RECORD.write_text(RECORD_HEADER + "".join(
            f"{storage:20} {size:8.0f} {waits:6.2f}\n" for storage, (size, waits) in found.items()))
        return []
    recorded = {line[:20].strip(): [float(word) for word in line[20:].split()]
                for line in RECORD.read_text().splitlines() if not line.startswith("#")}
    # The kernel sometimes flushes by itself.
    return [f"{storage}: a change writes {costs[0]:.0f} bytes with {costs[1]:.2f} flushes or erasures, recorded are {size:.0f} "
            f"and {waits:.2f}" for storage, costs in found.items() for size, waits in [recorded[storage]]
            if abs(costs[0] - size) > MARGIN * size or abs(costs[1] - waits) > 0.5]


def main():
    parser = argparse.ArgumentParser(prog="scripts/measure_medium", description=__doc__)
    parser.add_argument("--short", action="store_true", help="30 changes of one of 10 cells in each store")
    parser.add_argument("--storage", action="append", choices=[storage.name for storage in STORAGES],
                        help="only this one; may be repeated")
    parser.add_argument("--store", action="append", choices=STORES, help="only this one; may be repeated")
    parser.add_argument("--check", action="store_true", help="compare the module's changes with the record, without other stores")
    parser.add_argument("--update", action="store_true", help="with --check: record them instead")
    parser.add_argument("--sabotage", action="store_true", help="with --check: plant a module that does each change twice")
    parser.add_argument("--parts", type=Path, required=True, help=argparse.SUPPRESS)
    parser.add_argument("--output", type=Path, required=True, help=argparse.SUPPRESS)
    options = parser.parse_args()
    short = [replace(load, times_each=2) for load in SHORT] if options.sabotage else SHORT
    jobs = [(storage, short if options.short or options.check else storage.loads) for storage in STORAGES]
    if not options.short and not options.check:
        jobs += [(storage, PACED) for storage in STORAGES]
    if options.storage:
        jobs = [(storage, loads) for storage, loads in jobs if storage.name in options.storage]
    stores = ("module",) if options.check else options.store or STORES
    note = lambda text: print(text, file=sys.stderr)
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count() + 1) as pool:
        rows = []
        for part in pool.map(lambda job: measure_storage(*job, stores, options.parts, note), jobs):
            rows += part
            if not options.check:
                options.output.write_text(json.dumps(rows, indent=0))
    if options.check:
        findings = check(rows, options.update)
        print("\n".join(findings or ["OK: the writes of the module's changes match the record."]))
        sys.exit(1 if findings else 0)


if __name__ == "__main__":
    try:
        main()
    except EmulatorFailure as error:
        sys.exit(str(error))
