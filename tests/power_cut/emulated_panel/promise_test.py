# SPDX-License-Identifier: MIT
"""The judge of restored values accepts what the promise allows and finds everything else."""
import unittest
from hashlib import md5

from promise import BYTES_PER_CELL, CELLS, SECTOR_BYTES, FileLengths, RetainedCells, WholeAreas
from serial_log import StartLog, UnreadableLog


def start_log(text):
    log = StartLog()
    for line in text.strip().splitlines():
        log.feed(line)
    return log


def after(promise, text):
    promise.take(start_log(text))
    return promise


class RetainedCellsTest(unittest.TestCase):
    FIRST_START = """
        panel cells LW 10 0 0 0
        panel restored
        panel change 1 LW 10 1 7 0
        panel synced 1 0 20 0
        panel change 2 LW 11 1 8 0
        panel change 3 LW 11 1 9 0
    """

    def lost(self, restored):
        return after(RetainedCells(), self.FIRST_START).check(start_log(f"panel cells LW 10 {restored}")).lost

    def test_a_synced_value_must_come_back(self):
        self.assertEqual(self.lost("7 0 0"), [])
        self.assertIn("LW 10 came back as 0", self.lost("0 0 0")[0])

    def test_values_given_after_the_last_sync_may_come_back(self):
        self.assertEqual(self.lost("7 8 0"), [])
        self.assertEqual(self.lost("7 9 0"), [])

    def test_a_value_that_was_never_given_is_found(self):
        self.assertEqual(len(self.lost("7 1 0")), 1)
        self.assertEqual(len(self.lost("7 8 1")), 1)

    def test_an_overwritten_value_may_not_come_back_once_its_successor_is_synced(self):
        cells = after(RetainedCells(), self.FIRST_START + "panel synced 3 0 20 0")
        self.assertEqual(len(cells.check(start_log("panel cells LW 11 8")).lost), 1)
        self.assertEqual(cells.check(start_log("panel cells LW 11 9")).lost, [])

    def test_what_one_start_restored_is_what_the_next_one_must_restore(self):
        cells = after(RetainedCells(), self.FIRST_START)
        cells.take(start_log("panel cells LW 10 7 8 0\npanel restored"))
        self.assertEqual(len(cells.check(start_log("panel cells LW 10 7 0 0")).lost), 1)
        self.assertEqual(cells.check(start_log("panel cells LW 10 7 8 0")), (3, []))

    def test_a_cell_that_is_not_retained_any_more_is_found(self):
        cells = after(RetainedCells(), self.FIRST_START)
        self.assertEqual(len(cells.check(start_log("panel cells LW 10 7 8\npanel restored")).lost), 1)
        self.assertEqual(len(cells.check(start_log("panel cells LW 10 7 8")).lost), 0)

    def test_a_start_that_was_cut_before_everything_was_restored_changes_nothing(self):
        cells = after(RetainedCells(), self.FIRST_START)
        cells.take(start_log("panel cells LW 10 7 8"))
        self.assertEqual(cells.check(start_log("panel cells LW 10 7 9 0")).lost, [])

    def test_a_bit_gets_the_lowest_bit(self):
        cells = after(RetainedCells(), "panel cells LB 0 1\npanel restored\npanel change 1 LB 0 1 2 0")
        self.assertEqual(cells.check(start_log("panel cells LB 0 0")).lost, [])


class WholeAreasTest(unittest.TestCase):
    @staticmethod
    def sectors(cells_of_lw):
        """A start that restored zeros except for these LW cells."""
        log = StartLog(restored=True)
        for area, width in BYTES_PER_CELL.items():
            image = bytearray(CELLS * width)
            for address, value in cells_of_lw.items() if area == "LW" else ():
                image[2 * address : 2 * address + 2] = value.to_bytes(2, "little")
            for start in range(0, len(image), SECTOR_BYTES):
                log.sectors[area, start // SECTOR_BYTES] = md5(image[start : start + SECTOR_BYTES]).hexdigest()
        return log

    def setUp(self):
        self.areas = WholeAreas()
        first = self.sectors({})
        for line in ("panel change 1 LW 0 1 5 0", "panel synced 1 0 0 0", "panel change 2 LW 1 1 6 0",
                     "panel change 3 LW 300 2 7 1"):
            first.feed(line)
        self.areas.take(first)

    def lost(self, cells_of_lw):
        return self.areas.check(self.sectors(cells_of_lw)).lost

    def test_the_last_completed_save_must_come_back(self):
        self.assertEqual(self.areas.check(self.sectors({0: 5})), (128 + 256 + 256, []))
        self.assertEqual(self.lost({}), ["sector 0 of LW is neither the last saved one nor the one being saved"])

    def test_sectors_of_the_save_under_way_may_come_back(self):
        self.assertEqual(self.lost({0: 5, 1: 6, 300: 7, 301: 8}), [])
        self.assertEqual(self.lost({0: 5, 300: 7, 301: 8}), [])

    def test_a_missing_sector_is_found(self):
        log = self.sectors({0: 5})
        del log.sectors["RWI", 255]
        self.assertEqual(self.areas.check(log).lost, ["sector 255 of RWI was not restored"])

    def test_a_mixture_inside_a_sector_is_found(self):
        self.assertEqual(len(self.lost({0: 5, 300: 7})), 1)

    def test_the_next_start_must_restore_the_mixture_that_this_one_restored(self):
        self.areas.take(self.sectors({0: 5, 300: 7, 301: 8}))
        self.assertEqual(self.lost({0: 5, 300: 7, 301: 8}), [])
        self.assertEqual(len(self.lost({0: 5})), 1)
        self.assertEqual(len(self.lost({0: 5, 1: 6, 300: 7, 301: 8})), 1)


class FileLengthsTest(unittest.TestCase):
    def test_a_file_that_became_shorter_or_vanished_is_found(self):
        lengths = after(FileLengths(), "panel change 1 LW 0 1 5 0\npanel synced 1 2 20 0")
        self.assertEqual(lengths.check(start_log("panel length maintenance-word.dat 20")).lost, [])
        self.assertEqual(len(lengths.check(start_log("panel length maintenance-word.dat 19")).lost), 1)
        self.assertEqual(len(lengths.check(start_log("panel length maintenance-RWI.dat -1")).lost), 1)

    def test_nothing_is_known_before_the_first_sync(self):
        self.assertEqual(FileLengths().check(start_log("panel length maintenance-word.dat -1")).lost, [])


class StartLogTest(unittest.TestCase):
    def test_lines_of_the_kernel_are_passed_over(self):
        self.assertEqual(start_log("[    1.5] EXT4-fs (vda): mounted\nBooting"), StartLog())

    def test_a_damaged_line_is_not_taken_for_a_good_one(self):
        for line in ("panel chan", "panel change 1 LW 3", "panel change 2 LW 0 1 5 0", "panel synced 1 2 3",
                     "panel length other.dat 3", "panel cells LW 10 zz"):
            with self.subTest(line), self.assertRaises(UnreadableLog):
                start_log(line)


if __name__ == "__main__":
    unittest.main()
