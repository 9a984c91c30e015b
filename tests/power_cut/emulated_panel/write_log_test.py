# SPDX-License-Identifier: MIT
"""Tests that a record of writes leads to the states in which a disk with a volatile cache may be, and to no other."""
import random
import struct
import subprocess
import tempfile
import unittest
from pathlib import Path

from storage import DamagedStorage, retention_files
from write_log import SECTOR_BYTES, Request, UnreadableWriteLog, apply_sectors, cut_state, read_write_log


def sector(text):
    return text.ljust(SECTOR_BYTES, b".")


def header(number, count, flags=0):
    return struct.pack("<QQQQ", number, count, flags, 0).ljust(SECTOR_BYTES, b"\0")


SUPERBLOCK = struct.pack("<QQQI", 0x6A736677736872, 1, 2, SECTOR_BYTES).ljust(SECTOR_BYTES, b"\0")
FLUSH = Request(True)


class ReadWriteLogTest(unittest.TestCase):
    def read(self, log):
        with tempfile.NamedTemporaryFile() as file:
            file.write(log)
            file.flush()
            return read_write_log(Path(file.name))

    def test_writes_and_flushes_come_in_order(self):
        log = SUPERBLOCK + header(7, 2) + sector(b"a") + sector(b"b") + header(0, 0, flags=1)
        self.assertEqual(self.read(log), [Request(False, 7, sector(b"a") + sector(b"b")), FLUSH])

    def test_a_request_that_was_not_logged_completely_never_happened(self):
        whole = SUPERBLOCK + header(7, 1) + sector(b"a")
        self.assertEqual(len(self.read(whole + header(8, 2) + sector(b"b"))), 1)
        self.assertEqual(len(self.read(whole + bytes(SECTOR_BYTES) + sector(b"b"))), 1)
        self.assertEqual(self.read(b""), [])

    def test_another_format_is_refused(self):
        for log in (bytes(2 * SECTOR_BYTES), SUPERBLOCK + header(0, 1, flags=4)):
            with self.assertRaises(UnreadableWriteLog):
                self.read(log)


class CutStateTest(unittest.TestCase):
    REQUESTS = [Request(False, 1, sector(b"kept")), FLUSH, Request(False, 1, sector(b"x") + sector(b"y")),
                Request(False, 2, sector(b"z"))]

    def contents(self, done):
        """Everything that 500 states have in sectors 1 and 2."""
        found = set()
        for seed in range(500):
            state = cut_state(self.REQUESTS, done, random.Random(seed))
            image = bytearray(3 * SECTOR_BYTES)
            for request in self.REQUESTS[: state.durable]:
                apply_sectors(image, [(request.sector, request.content)] if request.content else [])
            apply_sectors(image, state.arrived)
            found.add((image[SECTOR_BYTES:][:1] + image[2 * SECTOR_BYTES :][:1]).decode())
        return found

    def test_what_was_flushed_stays_and_of_the_rest_any_sector_may_be_missing(self):
        self.assertEqual(self.contents(1), {"\0\0", "k\0"})
        self.assertEqual(self.contents(2), {"k\0"})
        self.assertEqual(self.contents(3), {"k\0", "ky", "x\0", "xy"})
        self.assertEqual(self.contents(4), {"k\0", "ky", "kz", "x\0", "xy", "xz"})

    def test_a_superblock_arrives_as_a_whole_or_not_at_all(self):
        requests = [Request(False, 0, b"".join(map(sector, (b"0", b"1", b"2", b"3", b"4"))))]
        found = set()
        for seed in range(500):
            state = cut_state(requests, 1, random.Random(seed))
            found.add("".join(content[:1].decode() for _, content in state.arrived))
        self.assertEqual([state for state in found if ("2" in state) != ("3" in state)], [])
        self.assertLessEqual({"", "23", "014", "01234"}, found)


class RetentionFilesTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.image = Path(folder.name) / "image"
        (Path(folder.name) / "files").mkdir()
        (Path(folder.name) / "files" / "maintenance-word.dat").write_bytes(b"words")
        self.image.write_bytes(bytes(1 << 22))
        subprocess.run(["mkfs.ext4", "-q", "-d", Path(folder.name) / "files", self.image], check=True,
                       stdout=subprocess.DEVNULL)

    def test_files_are_read_and_missing_ones_are_missing(self):
        self.assertEqual(retention_files(self.image.read_bytes()), {"maintenance-word.dat": b"words"})

    def test_a_file_system_that_did_not_survive_is_found(self):
        image = bytearray(self.image.read_bytes())
        image[: 1 << 16] = bytes(1 << 16)
        with self.assertRaises(DamagedStorage):
            retention_files(image)

    def debugfs(self, *commands):
        run = subprocess.run(["debugfs", "-w", "-f", "-", self.image], input="\n".join(commands), text=True, check=True,
                             stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        return run.stdout.splitlines()[-1]

    def test_a_name_that_leads_nowhere_is_damage(self):
        self.debugfs("clri maintenance-word.dat")
        with self.assertRaises(DamagedStorage):
            retention_files(self.image.read_bytes())

    def test_what_only_the_journal_has_is_there(self):
        block = self.debugfs("blocks maintenance-word.dat").split()[-1]
        late = self.image.with_name("late")
        late.write_bytes(b"later".ljust(1024, b"\0"))
        self.debugfs("journal_open", f"journal_write -b {block} {late}", "journal_close")
        self.assertEqual(retention_files(self.image.read_bytes()), {"maintenance-word.dat": b"later"})


if __name__ == "__main__":
    unittest.main()
