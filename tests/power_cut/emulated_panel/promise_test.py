# SPDX-License-Identifier: MIT
"""Tests that the judge of restored values accepts what the promise allows and finds everything else."""
import unittest
import xml.etree.ElementTree as ElementTree

from project import AREAS, BYTES_PER_CELL, CELLS, RETAINED_CELLS, WHOLE_AREAS, Project, digests
from promise import Account
from serial_log import StartLog, UnreadableLog

THREE_CELLS = Project("three cells", (("LW", 10, 3),))


def start_log(*lines):
    log = StartLog()
    for line in lines:
        log.feed(line)
    return log


def restored(*values, end=("panel restored",)):
    """A start that restored these values from LW 10 on."""
    cells = (f"panel cell LW {10 + i} {value}" for i, value in enumerate(values) if value)
    return start_log(*cells, *end)


class RetainedCellsTest(unittest.TestCase):
    def setUp(self):
        self.account = Account(THREE_CELLS)
        self.account.take(restored(end=(
            "panel restored", "panel change 1 LW 10 1 7 0", "panel synced 1 0 20 0", "panel change 2 LW 11 1 8 0",
            "panel change 3 LW 11 1 9 0")))

    def test_a_cell_comes_back_with_its_synced_value_or_a_later_one(self):
        for values in ((7, 0, 0), (7, 8, 0), (7, 9, 0)):
            self.assertEqual(self.account.check(restored(*values)), (3, 1, []))

    def test_any_other_value_is_found(self):
        for values, lost in (((0, 0, 0), "LW 10 came back as 0, possible were [7]"),
                             ((7, 1, 0), "LW 11 came back as 1, possible were [0, 8, 9]"),
                             ((7, 8, 1), "LW 12 came back as 1, possible were [0]"),
                             ((7, 8, 0, 4), "LW 13 is not retained and came back as 4")):
            self.assertEqual(self.account.check(restored(*values)).lost, [lost])

    def test_before_anything_was_changed_every_cell_is_0(self):
        self.assertEqual(Account(THREE_CELLS).check(restored(0, 1)).lost, ["LW 11 came back as 1, possible were [0]"])

    def test_a_change_of_several_cells_gives_each_its_value(self):
        self.account.take(restored(7, 8, end=("panel restored", "panel change 1 LW 10 3 5 1", "panel synced 1 0 20 0")))
        self.assertEqual(self.account.check(restored(5, 6, 7)), (3, 3, []))
        self.assertEqual(len(self.account.check(restored(7, 8, 0)).lost), 3)

    def test_what_one_start_restored_is_what_the_next_one_must_restore(self):
        self.account.take(restored(7, 8))
        self.assertEqual(self.account.check(restored(7, 8)), (3, 0, []))
        self.assertEqual(len(self.account.check(restored(7)).lost), 1)

    def test_a_start_that_was_cut_is_judged_as_far_as_it_came_and_changes_nothing(self):
        self.assertEqual(self.account.check(restored(0, 8, end=())), (1, 0, []))
        self.assertEqual(self.account.check(restored(7, end=())), (1, 1, []))
        self.account.take(restored(7, 8, end=()))
        self.assertEqual(self.account.check(restored(7, 9)).lost, [])

    def test_a_file_that_became_shorter_or_vanished_is_found(self):
        for length, lost in ((20, []), (19, ["maintenance-word.dat is 19 bytes long, after the last sync it had 20"]),
                             (-1, ["maintenance-word.dat is -1 bytes long, after the last sync it had 20"])):
            self.assertEqual(self.account.check(restored(7, end=(f"panel lengths 0 {length} 0",))).lost, lost)
        self.assertEqual(Account(THREE_CELLS).check(start_log("panel lengths -1 -1 -1")).lost, [])


class WholeAreasTest(unittest.TestCase):
    @staticmethod
    def sectors(cells_of_lw):
        """A start that restored zeros except for these LW cells."""
        log = StartLog(restored=True)
        for area in AREAS:
            image = bytearray(CELLS * BYTES_PER_CELL[area])
            for address, value in cells_of_lw.items() if area == "LW" else ():
                image[2 * address : 2 * address + 2] = value.to_bytes(2, "little")
            log.sectors.update(digests(area, image))
        return log

    def setUp(self):
        self.account = Account(WHOLE_AREAS)
        first = self.sectors({})
        for line in ("panel change 1 LW 0 1 5 0", "panel synced 1 0 0 0", "panel change 2 LW 1 1 6 0",
                     "panel change 3 LW 510 2 7 257"):
            first.feed(line)
        self.account.take(first)

    def lost(self, cells_of_lw):
        return self.account.check(self.sectors(cells_of_lw)).lost

    def test_every_sector_is_that_of_the_last_completed_save_or_of_the_one_under_way(self):
        self.assertEqual(self.account.check(self.sectors({0: 5})), (128 + 256 + 256, 1, []))
        self.assertEqual(self.lost({0: 5, 1: 6, 510: 7, 511: 264}), [])
        self.assertEqual(self.lost({0: 5, 510: 7, 511: 264}), [])
        self.assertEqual(self.lost({}), ["sector 0 of LW is neither the last saved one nor the one being saved"])
        self.assertEqual(len(self.lost({0: 5, 510: 7})), 1)

    def test_a_missing_sector_is_found_unless_the_start_was_cut(self):
        log = self.sectors({0: 5})
        del log.sectors["RWI", 255]
        self.assertEqual(self.account.check(log).lost, ["sector 255 of RWI was not restored"])
        log = StartLog(sectors={("LB", 0): log.sectors["LB", 0]})
        self.assertEqual(self.account.check(log), (1, 0, []))

    def test_the_next_start_must_restore_the_mixture_that_this_one_restored(self):
        mixture = {0: 5, 510: 7, 511: 264}
        self.account.take(self.sectors(mixture))
        self.assertEqual(self.account.check(self.sectors(mixture)), (640, 0, []))
        self.assertEqual(len(self.lost({0: 5})), 1)
        self.assertEqual(len(self.lost({0: 5, 1: 6, 510: 7, 511: 264})), 1)


class ProjectTest(unittest.TestCase):
    def test_the_file_names_the_ranges_and_the_mode(self):
        self.assertEqual([text.strip() for text in ElementTree.fromstring(THREE_CELLS.xml()).itertext() if text.strip()],
                         ["0", "1", "3", "LW", "10"])
        self.assertEqual(ElementTree.fromstring(WHOLE_AREAS.xml()).find("*/property").text, "1")

    def test_packed_files_are_read_cell_by_cell(self):
        log = RETAINED_CELLS.start_on(
            {"maintenance-bit.dat": b"\x02" + bytes(6) + b"\x20", "maintenance-word.dat": b"\x01\x80\x02"})
        self.assertEqual({cell: value for cell, value in log.cells.items() if value},
                         {("LB", 4): 1, ("LB", 100): 1, ("LW", 10): 0x8001, ("LW", 11): 2})
        self.assertEqual(log.lengths, {"maintenance-bit.dat": 8, "maintenance-word.dat": 3, "maintenance-RWI.dat": -1})
        self.assertTrue(log.restored)

    def test_an_image_is_read_up_to_its_end_and_not_at_all_when_it_is_too_short(self):
        name, image = "maintenance-word.dat", b"\x01" * (2 * CELLS)
        for stored, content in ((image, image), (image + b"\x02", image), (image[1:], bytes(2 * CELLS))):
            sectors = WHOLE_AREAS.start_on({name: stored}).sectors
            self.assertEqual({at: digest for at, digest in sectors.items() if at[0] == "LW"}, digests("LW", content))
            self.assertEqual(len(sectors), 640)


class StartLogTest(unittest.TestCase):
    def test_lines_of_the_kernel_are_passed_over(self):
        self.assertEqual(start_log("[    1.5] EXT4-fs (vda): mounted", "", "Booting"), StartLog())

    def test_a_damaged_line_is_not_taken_for_a_good_one(self):
        for line in ("panel chan", "panel change 1 LW 3", "panel change 2 LW 0 1 5 0", "panel synced 1 2 3",
                     "panel lengths 1 2", "panel cell LW 10 zz"):
            with self.subTest(line), self.assertRaises(UnreadableLog):
                start_log(line)

    def test_a_changed_cell_gets_its_lowest_bits(self):
        log = start_log("panel change 1 LB 0 3 2 1", "panel change 2 LW 0 2 65535 1")
        self.assertEqual([change.values() for change in log.changes], [[0, 1, 0], [65535, 0]])

    def test_sectors_are_numbered_from_the_first_of_their_line(self):
        self.assertEqual(start_log("panel sectors LW 3 aa bb").sectors, {("LW", 3): "aa", ("LW", 4): "bb"})

    def test_a_guest_that_cannot_go_on_says_why(self):
        self.assertEqual(start_log("panel failed: no storage").failure, "no storage")

    def test_the_log_as_it_was_earlier_knows_nothing_of_later_lines(self):
        log = start_log("panel restored", "panel change 1 LW 0 1 5 0", "panel synced 1 0 0 0")
        self.assertEqual(log.until(3), log)
        self.assertEqual((len(log.until(2).changes), log.until(2).synced), (1, 0))


if __name__ == "__main__":
    unittest.main()
