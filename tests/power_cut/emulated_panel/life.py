# SPDX-License-Identifier: MIT
"""Takes one panel with one storage image through its starts and power cuts."""
import copy
import random
import shutil
import time
from dataclasses import dataclass

from emulator import Emulator, waiting_state, write_log_of
from promise import Account
from serial_log import UnreadableLog
from storage import DamagedStorage, retention_files
from write_log import SECTOR_BYTES, apply_sectors, cut_state, read_write_log, sectors_of

EARLY_CUTS = 0.25  # share of the cuts while the storage is mounted and the panel starts
MOST_CHANGES = 60  # the other cuts come a moment after at most so many changes
SHIPPED_MODULE = "libpoweroff_protect.so"


@dataclass
class Counts:
    cuts: int = 0
    early: int = 0  # of the cuts: before the panel had reported everything that it restored
    synced: int = 0  # changes
    at_stake: int = 0  # values that were changed and kept in the life before a cut, summed
    checked: int = 0  # values
    lost: int = 0

    def judge(self, verdict):
        self.at_stake += verdict.at_stake
        self.checked += verdict.checked
        self.lost += len(verdict.lost)
        return verdict.lost

    def __str__(self):
        early = f" ({self.early} during start-up)" if self.early else ""
        return (f"{self.cuts} cuts{early}, {self.synced} changes synced, {self.at_stake} values at stake, "
                f"{self.checked} values checked, {self.lost} values lost")


class Life:
    """Begins with an empty file system. `parameters` go to guest_init."""

    def __init__(self, machine, project, seed, parts, folder, parameters):
        self.folder = folder
        self._machine = machine
        self._project = project
        self._seed = seed
        self._parts = parts
        self._image = folder / f"{machine.medium}.img"
        self._parameters = {"PANEL_PROJECT": project.file, "PANEL_MODULE": SHIPPED_MODULE, **parameters}
        self._account = Account(project)
        self._starts = 0
        self._start_seconds = None  # that the first start took
        folder.mkdir()
        shutil.copyfile(parts / machine.blank_image, self._image)

    def start(self, counts, cut=True):
        """Starts the panel and cuts its power; without `cut`, as soon as all values are restored. Checks what was restored;
        returns a line for each wrong value."""
        log, findings = self._boot(counts, range(MOST_CHANGES) if cut else range(1), early=cut and self._starts > 0)
        self._account.take(log)
        counts.cuts += cut
        counts.early += cut and not log.restored
        return findings

    def start_and_replay(self, counts, replays, at_returns=False):
        """Starts the panel, and cuts its power so many times: in states in which its disk may be when it loses its cache.
        With `at_returns` only what was flushed when the module had returned from a change is there. The next start goes on
        from the last one of these states."""
        log, findings = self._boot(counts, range(MOST_CHANGES // 3, MOST_CHANGES), early=False)
        if findings:
            return findings
        chance = random.Random(f"{self._seed} {self.folder.name} {self._starts} replays")
        before = self._image_before().read_bytes()
        requests = read_write_log(write_log_of(self._image))
        while requests and requests[-1].flush:
            requests.pop()  # perhaps not the guest's, because halting the machine also flushes
        mark = len(before) // SECTOR_BYTES - 1
        marks = [i + 1 for i, request in enumerate(requests) if request.sector == mark and not request.flush]
        lines = [0] * (len(requests) + 1)  # that the panel had printed after so many requests
        for i, request in enumerate(requests):
            lines[i + 1] = int(request.content.rstrip(b"\0")) if i + 1 in marks else lines[i]
        account = None
        for _ in range(replays):
            done = chance.choice(marks) if at_returns or chance.random() < 0.5 else chance.randrange(len(requests) + 1)
            state = cut_state(requests, done, chance)
            image = bytearray(before)
            apply_sectors(image, sectors_of(requests[: state.durable]))
            apply_sectors(image, [] if at_returns else state.arrived)
            account = copy.deepcopy(self._account)
            account.take(log.until(lines[done]))
            counts.cuts += 1
            try:
                findings = counts.judge(account.check(self._project.start_on(retention_files(image))))
            except DamagedStorage as error:
                findings = [str(error)]
                counts.lost += 1
            if findings:
                self._image.with_suffix(".replayed").write_bytes(image)
                return [f"start {self._starts}, cut after request {done}, flushed up to {state.durable}:", *findings]
        self._account = account
        self._image.write_bytes(image)
        return []

    def _boot(self, counts, changes, early):
        """The log of a start up to its cut, and what must not be in it. The cut falls after one of these numbers of changes,
        or, with `early`, now and then before the panel has restored its values."""
        self._starts += 1
        chance = random.Random(f"{self._seed} {self.folder.name} {self._starts}")
        parameters = {"PANEL_SEED": chance.getrandbits(31), **self._parameters}
        shutil.copyfile(self._image, self._image_before())
        log_path = self.folder / f"start_{self._starts:02}.log"
        state = waiting_state(self._machine, self._parts)
        with Emulator(self._machine, self._parts, self._image, log_path, state) as emulator:
            try:
                emulator.start_panel(parameters)
                if early and chance.random() < EARLY_CUTS:
                    emulator.run_until(lambda: False, chance.uniform(0, self._start_seconds))
                else:
                    self._run_until_restored(emulator)
                    self._run_through_changes(emulator, chance, chance.choice(changes))
                emulator.cut_power()
            except UnreadableLog as error:
                emulator.log.failure = str(error)
        log = emulator.log
        counts.synced += log.synced
        counts.lost += bool(log.failure)
        return log, [log.failure] * bool(log.failure) + counts.judge(self._account.check(log))

    def _run_until_restored(self, emulator):
        begin = time.monotonic()
        if not emulator.run_until(lambda: emulator.log.restored):
            emulator.log.failure = emulator.log.failure or "the panel did not restore its values"
        self._start_seconds = self._start_seconds or time.monotonic() - begin

    @staticmethod
    def _run_through_changes(emulator, chance, changes):
        """Waits until that many were made, then for a part of the time that one of them takes."""
        if not changes:
            return
        begin = time.monotonic()
        if not emulator.run_until(lambda: len(emulator.log.changes) >= changes):
            emulator.log.failure = emulator.log.failure or "the panel does not go on"
        emulator.run_until(lambda: False, chance.random() * 2 * (time.monotonic() - begin) / changes)

    def _image_before(self):
        return self.folder / f"{self._machine.medium}_as_the_last_cut_left_it.img"
