# SPDX-License-Identifier: MIT
"""Tests that a run fails when a panel loses a value: with panels that keep one word in the first bytes of their disk."""
import contextlib
import io
import tempfile
import unittest
from pathlib import Path
from unittest import mock

import power_cuts
from emulator import DISK, STUCK_SECONDS
from project import Project
from serial_log import StartLog
from storage import DamagedStorage
from write_log import SECTOR_BYTES, Request

MARK = 1  # the sector of the panel's marks


class Panel(contextlib.AbstractContextManager):
    """Takes the place of the emulator. Changes its word without end; each line of the log is marked in the log of writes."""

    flushes = True
    forgets = False  # what is on its disk when the power is cut
    end_of_start = "panel restored"
    writes = []  # of the latest start

    def __init__(self, _machine, _parts, image, *_):
        self.log = StartLog()
        self._image = image
        self._disk = bytearray(image.read_bytes())
        Panel.writes = []

    def __exit__(self, *_):
        pass

    def start_panel(self, _):
        self.log.feed("panel lengths -1 -1 2")
        self.log.feed(f"panel cell RWI 0 {self._word()}")
        self.log.feed(self.end_of_start)

    def run_until(self, reached, seconds=STUCK_SECONDS):
        while not reached() and seconds == STUCK_SECONDS and self.log.restored:
            number = len(self.log.changes) + 1
            value = self._word() + 1
            self._say(f"panel change {number} RWI 0 1 {value} 0")
            self._write(0, value.to_bytes(2, "little"))
            if self.flushes:
                self.writes.append(Request(True))
            self._say(f"panel synced {number} -1 -1 2")
        return reached()

    def cut_power(self):
        self._image.write_bytes(bytes(2 * SECTOR_BYTES) if self.forgets else self._disk)

    def _word(self):
        return int.from_bytes(self._disk[:2], "little")

    def _say(self, line):
        self.log.feed(line)
        self._write(MARK, b"%d" % len(self.log.lines))

    def _write(self, number, content):
        content = content.ljust(SECTOR_BYTES, b"\0")
        self.writes.append(Request(False, number, content))
        self._disk[number * SECTOR_BYTES : (number + 1) * SECTOR_BYTES] = content


class PowerCutsTest(unittest.TestCase):
    def run_with(self, *options, files=lambda image: {"maintenance-RWI.dat": bytes(image[:2])}, **panel):
        """Exit status and messages of a run over a panel with these properties."""
        messages = io.StringIO()
        with tempfile.TemporaryDirectory() as folder, contextlib.ExitStack() as patched:
            parts = Path(folder) / "parts"
            parts.mkdir()
            (parts / DISK.blank_image).write_bytes(bytes(2 * SECTOR_BYTES))
            for name, value in {
                    "life.Emulator": type("Panel", (Panel,), panel), "life.waiting_state": mock.Mock(),
                    "life.read_write_log": lambda _: Panel.writes, "life.retention_files": files,
                    "power_cuts.PROJECTS": (Project("one word", (("RWI", 0, 1),)),),
                    "sys.argv": ["", "--parts", str(parts), "--flash-cuts", "0", "--seed", "1", *options]}.items():
                patched.enter_context(mock.patch(name, value))
            patched.enter_context(contextlib.redirect_stdout(messages))
            patched.enter_context(contextlib.redirect_stderr(messages))
            return power_cuts.main(), messages.getvalue()

    def test_a_panel_that_keeps_its_values_passes(self):
        status, said = self.run_with("--cuts", "8", "--replays", "20")
        self.assertEqual(status, 0, said)
        self.assertIn("28 cuts", said)

    def test_a_value_that_is_lost_with_the_power_is_found(self):
        status, said = self.run_with("--cuts", "8", "--replays", "0", forgets=True)
        self.assertEqual(status, 1, said)
        self.assertRegex(said, r"RWI 0 came back as 0, possible were \[[1-9]")

    def test_a_value_that_is_lost_with_the_cache_is_found(self):
        status, said = self.run_with("--cuts", "0", "--replays", "20", flushes=False)
        self.assertEqual(status, 1, said)
        self.assertRegex(said, r"cut after request(.|\n)*RWI 0 came back as \d+, possible were \[[1-9]")

    def test_a_file_system_that_is_lost_with_the_cache_is_found(self):
        status, said = self.run_with("--cuts", "0", "--replays", "1", files=mock.Mock(side_effect=DamagedStorage("torn")))
        self.assertEqual(status, 1, said)
        self.assertIn("torn", said)

    def test_a_panel_that_does_not_start_is_found(self):
        for medium in ("--cuts", "--replays"):
            for says, finding in (("panel failed: no storage", "no storage"), ("", "did not restore its values")):
                status, said = self.run_with("--cuts", "0", "--replays", "0", medium, "1", end_of_start=says)
                self.assertEqual(status, 1, said)
                self.assertIn(finding, said)

    def test_a_planted_fault_that_is_not_found_is_a_failure(self):
        status, said = self.run_with("--cuts", "0", "--replays", "0", "--sabotage")
        self.assertEqual(status, 1, said)
        self.assertIn('planted: the command "sync" does nothing, and', said)


if __name__ == "__main__":
    unittest.main()
