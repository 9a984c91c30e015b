# SPDX-License-Identifier: MIT
"""Cuts the power of the emulated panel again and again and checks what every next start restores."""
import argparse
import random
import shutil
import sys
import tempfile
import time
from dataclasses import dataclass
from pathlib import Path

from emulator import DISK, FLASH, Emulator, EmulatorFailure
from promise import FileLengths, RetainedCells, WholeAreas
from serial_log import UnreadableLog

PROJECTS = {"retained_cells.xml": RetainedCells, "whole_areas.xml": WholeAreas}
LONGEST_LIFE = 20  # cuts that one storage image lives through
EARLY_CUTS = 0.25  # this share of the cuts falls while the storage is mounted and the panel starts
LOAD_SECONDS = 4  # the other cuts fall in this time after the panel has restored its values
FINDINGS_SHOWN = 10  # of one start; all of them are kept in a file


@dataclass
class Counts:
    cuts: int = 0
    early: int = 0  # of the cuts: before the panel had said everything that it restored
    synced: int = 0
    checked: int = 0
    lost: int = 0

    def __str__(self):
        return (f"{self.cuts} cuts ({self.early} during start-up), {self.synced} changes synced, "
                f"{self.checked} values checked, {self.lost} values lost")


class Life:
    """One storage image, from an empty file system on through its starts and cuts."""

    def __init__(self, machine, project, options, folder):
        self.folder = folder
        self._machine = machine
        self._project = project
        self._options = options
        self._image = folder / f"{machine.medium}.img"
        self._promises = [FileLengths(), PROJECTS[project]()]
        self._starts = 0
        folder.mkdir()
        shutil.copyfile(options.parts / machine.blank_image, self._image)

    def start(self, counts, cut):
        """Starts the panel and cuts its power: at a random instant, or without `cut` as soon as all values are
        restored. Checks what was restored; returns what must not be, a line each."""
        self._starts += 1
        chance = random.Random(f"{self._options.seed} {self.folder.name} {self._starts}")
        parameters = {"PANEL_PROJECT": self._project, "PANEL_SEED": chance.getrandbits(31),
                      "PANEL_BREAK_SYNC": int(self._options.break_sync)}
        shutil.copyfile(self._image, self.folder / f"{self._machine.medium}_as_the_last_cut_left_it.img")
        log_path = self.folder / f"start_{self._starts:02}.log"
        with Emulator(self._machine, self._options.parts, self._image, log_path, parameters) as emulator:
            try:
                emulator.boot()
                if cut:
                    self._run_until_cut(emulator, chance)
                else:
                    self._run_until_restored(emulator)
                emulator.cut_power()
                counts.cuts += cut
                counts.early += cut and not emulator.log.restored
            except UnreadableLog as error:
                emulator.log.failure = str(error)
        return self._judge(emulator.log, counts)

    def _run_until_cut(self, emulator, chance):
        if chance.random() < EARLY_CUTS:
            emulator.run_until(lambda: False, chance.uniform(0, self._machine.start_seconds))
        else:
            self._run_until_restored(emulator)
            emulator.run_until(lambda: False, chance.uniform(0, LOAD_SECONDS))

    @staticmethod
    def _run_until_restored(emulator):
        if not emulator.run_until(lambda: emulator.log.restored):
            emulator.log.failure = emulator.log.failure or "the panel did not restore its values"

    def _judge(self, log, counts):
        findings = [log.failure] if log.failure else []
        for promise in self._promises:
            verdict = promise.check(log)
            counts.checked += verdict.checked
            findings += verdict.lost
            promise.take(log)
        counts.synced += log.synced
        counts.lost += len(findings)
        return findings


def lives(machine, cuts):
    """The machine, project and number of cuts of each life; the modes take turns."""
    longest = min(LONGEST_LIFE, -(-cuts // len(PROJECTS))) or 1
    for number, done in enumerate(range(0, cuts, longest)):
        yield machine, list(PROJECTS)[number % len(PROJECTS)], min(longest, cuts - done)


def run(options, folder, counts):
    """Lives through all cuts. Returns the folder of the first life with findings and these, or None."""
    plan = [*lives(DISK, options.cuts), *lives(FLASH, options.flash_cuts)]
    for number, (machine, project, cuts) in enumerate(plan, 1):
        life = Life(machine, project, options, folder / f"{machine.medium}_{number}")
        for left in range(cuts, -1, -1):
            progress(f"{counts}; {machine.medium} {number} of {len(plan)}, {project}")
            findings = life.start(counts, cut=left > 0)
            if findings:
                return life.folder, findings
        shutil.rmtree(life.folder)
    return None


def progress(text):
    if sys.stderr.isatty():
        sys.stderr.write(f"\r\033[K{text}")
        sys.stderr.flush()


def report(life_folder, findings, options):
    lines = [f"Seed {options.seed}, {options.cuts} cuts, {options.flash_cuts} flash cuts.", *findings]
    (life_folder / "findings.txt").write_text("\n".join(lines) + "\n", encoding="utf-8")
    for line in findings[:FINDINGS_SHOWN]:
        print(line, file=sys.stderr)
    print(f"{len(findings)} findings; serial logs and storage images are in {life_folder}, what was booted is in "
          f"{options.parts}", file=sys.stderr)


def conclude(failed, counts, options):
    """The exit status: 0 when all is as it must be, 1 when not, 2 when that remains open."""
    if options.break_sync:
        print(f'"sync" did nothing, and {"this was found" if failed else "nothing was found lost"}', file=sys.stderr)
        return 0 if failed else 1
    if failed:
        report(*failed, options)
        return 1
    if counts.synced == 0:
        print("no change was ever synced, so nothing was tested; make more cuts", file=sys.stderr)
        return 2
    return 0


def parse_options():
    parser = argparse.ArgumentParser(prog="power_cut_emulated", description=__doc__)
    parser.add_argument("--cuts", type=int, default=200, help="power cuts with an ext4 disk (default %(default)s)")
    parser.add_argument("--flash-cuts", type=int, default=40,
                        help="power cuts with UBIFS on a flash chip (default %(default)s)")
    parser.add_argument("--seed", type=int, default=int(time.time()),
                        help="decides the changes and the seconds until each cut (default: the time)")
    parser.add_argument("--break-sync", action="store_true",
                        help='make "sync" do nothing in the panel; succeeds if values are found lost')
    parser.add_argument("--parts", type=Path, required=True, help=argparse.SUPPRESS)
    options = parser.parse_args()
    if options.cuts < 0 or options.flash_cuts < 0 or options.cuts + options.flash_cuts == 0:
        parser.error("there must be at least one cut")
    return options


def main():
    options = parse_options()
    folder = Path(tempfile.mkdtemp(prefix=f"seed_{options.seed}_", dir=options.parts.parent))
    counts = Counts()
    try:
        failed = run(options, folder, counts)
    except (EmulatorFailure, OSError) as error:
        print(f"{error}; what there is of it is in {folder}", file=sys.stderr)
        return 2
    except KeyboardInterrupt:
        print(f"interrupted after {counts}; the storage of this run is in {folder}", file=sys.stderr)
        return 130
    finally:
        progress("")
    status = conclude(failed, counts, options)
    if status != 1 or options.break_sync:
        shutil.rmtree(folder)
    print(f"seed {options.seed}: {counts}")
    return status


if __name__ == "__main__":
    sys.exit(main())
