# SPDX-License-Identifier: MIT
"""Cuts the power of the emulated panel repeatedly and checks what each next start restores."""
import argparse
import random
import re
import shutil
import signal
import sys
import tempfile
import time
from collections import defaultdict
from pathlib import Path

from emulator import CACHED_DISK, DISK, FLASH, EmulatorFailure
from life import Counts, Life
from planted_faults import PLANTED_FAULTS
from project import PROJECTS

LONGEST_LIFE = 20  # cuts that one storage image goes through
REPLAYS_OF_START = 10  # cuts made of one start with a disk that has a volatile cache
REPLAYS_OF_FAULT = 40
FINDINGS_SHOWN = 10  # of one start; a file has all of them


class Run:
    """One run of this program. `counts` by medium and kind of project."""

    def __init__(self, options, folder):
        self._options = options
        self._folder = folder
        self.counts = defaultdict(Counts)

    def live(self, machine, project, cuts, number):
        """Runs a separate panel; returns its folder and its findings, or None."""
        counts = self.counts[machine.medium, project.name]
        life = self._life(machine, project, f"{machine.medium}_{number}", {})
        if machine is CACHED_DISK:
            steps = [lambda n=n: life.start_and_replay(counts, min(REPLAYS_OF_START, cuts - n))
                     for n in range(0, cuts, REPLAYS_OF_START)]
        else:
            steps = [lambda left=left: life.start(counts, cut=left > 0) for left in range(cuts, -1, -1)]
        for step in steps:
            progress(f"{machine.medium} {number}, {project.name}: {counts}")
            findings = step()
            if findings:
                return life.folder, findings
        shutil.rmtree(life.folder)
        return None

    def find_planted(self, number, fault):
        """Returns what is wrong when a planted fault is not found with its own message."""
        progress(f"planted: {fault.text}")
        life = self._life(CACHED_DISK, fault.project, f"planted_{number}", fault.parameters)
        findings = life.start_and_replay(Counts(), REPLAYS_OF_FAULT, at_returns=True)
        if any(re.search(fault.message, finding) for finding in findings):
            shutil.rmtree(life.folder)
            return None
        return life.folder, [f"planted: {fault.text}, and \"{fault.message}\" was not found but this:", *findings]

    def _life(self, machine, project, name, parameters):
        return Life(machine, project, self._options.seed, self._options.parts, self._folder / name, parameters)


def lives(machine, cuts, first_project):
    """The machine, project and number of cuts of each life; the modes take turns."""
    longest = min(LONGEST_LIFE, max(-(-cuts // len(PROJECTS)), REPLAYS_OF_START if machine is CACHED_DISK else 1))
    for number, done in enumerate(range(0, cuts, longest)):
        project = PROJECTS[(first_project + number) % len(PROJECTS)]
        yield machine, project, min(longest, cuts - done)


def run_all(run, options):
    """Makes all cuts, and plants faults. Returns the folder and findings of the first life that has any, or None."""
    first = random.Random(f"{options.seed} projects").randrange(len(PROJECTS))
    plan = [*lives(DISK, options.cuts, first), *lives(FLASH, options.flash_cuts, first + 1),
            *lives(CACHED_DISK, options.replays, first)]
    for number, life in enumerate(plan, 1):
        failed = run.live(*life, number)
        if failed:
            return failed
    for number, fault in enumerate(PLANTED_FAULTS if options.sabotage else (), 1):
        failed = run.find_planted(number, fault)
        if failed:
            return failed
        print(f"planted and found: {fault.text}")
    return None


def progress(text):
    if sys.stderr.isatty():
        sys.stderr.write(f"\r\033[K{text}"[:100])
        sys.stderr.flush()


def print_counts(run, seed):
    print(f"seed {seed}")
    total = Counts()
    for (medium, project), counts in run.counts.items():
        print(f"  {medium.replace('_', ' ')}, {project}: {counts.cuts} cuts, {counts.at_stake} values at stake")
        for name in vars(total):
            setattr(total, name, getattr(total, name) + getattr(counts, name))
    print(total)
    return total


def report(life_folder, findings, options):
    lines = [f"Seed {options.seed}, {options.cuts} cuts, {options.flash_cuts} flash cuts, {options.replays} replays.",
             *findings]
    (life_folder / "findings.txt").write_text("\n".join(lines) + "\n", encoding="utf-8")
    for line in findings[:FINDINGS_SHOWN]:
        print(line, file=sys.stderr)
    print(f"{len(findings)} findings; serial logs and storage images are in {life_folder}, what was booted is in "
          f"{options.parts}", file=sys.stderr)


def parse_options():
    parser = argparse.ArgumentParser(prog="power_cut_emulated", description=__doc__)
    parser.add_argument("--cuts", type=int, default=100, help="power cuts with an ext4 disk (default %(default)s)")
    parser.add_argument("--flash-cuts", type=int, default=30,
                        help="power cuts with UBIFS on a flash chip (default %(default)s)")
    parser.add_argument("--replays", type=int, default=100,
                        help="power cuts with an ext4 disk that loses its cache (default %(default)s)")
    parser.add_argument("--seed", type=int, default=int(time.time()),
                        help="determines the projects, the changes and the moments of the cuts (default: the time)")
    parser.add_argument("--sabotage", action="store_true", help="plant faults as well: they must be found")
    parser.add_argument("--parts", type=Path, required=True, help=argparse.SUPPRESS)
    options = parser.parse_args()
    numbers = (options.cuts, options.flash_cuts, options.replays)
    if min(numbers) < 0 or sum(numbers) == 0 and not options.sabotage:
        parser.error("there must be at least one cut")
    return options


def main():
    options = parse_options()
    folder = Path(tempfile.mkdtemp(prefix=f"seed_{options.seed}_", dir=options.parts.parent))
    run = Run(options, folder)
    signal.signal(signal.SIGTERM, signal.default_int_handler)  # so that a stopped run still prints its counts
    try:
        failed = run_all(run, options)
    except (EmulatorFailure, OSError) as error:
        print(f"{error}; what remains of it is in {folder}", file=sys.stderr)
        return 2
    except KeyboardInterrupt:
        print(f"interrupted; the storage of this run is in {folder}", file=sys.stderr)
        return 130
    finally:
        progress("")
        total = print_counts(run, options.seed)
    if failed:
        report(*failed, options)
        return 1
    shutil.rmtree(folder)
    if total.at_stake == 0 and not options.sabotage:
        print("no changed value was ever at stake, so nothing was tested; make more cuts", file=sys.stderr)
        return 2
    return 0


if __name__ == "__main__":
    sys.exit(main())
