# SPDX-License-Identifier: MIT
"""Tests that the judge of restored values accepts what the promise allows and finds everything else."""
import tempfile
import unittest
from pathlib import Path

from project import AREAS, BYTES_PER_CELL, CELLS, Project, digests
from promise import Account
from serial_log import StartLog, UnreadableLog

ROOM = Path(__file__).resolve().parent


def start_log(text):
    log = StartLog()
    for line in text.strip().splitlines():
        log.feed(line.strip())
    return log


class ThreeCells:
    """A project that retains LW 10 to 12."""

    places = {"LB": [], "LW": [("LW", 10), ("LW", 11), ("LW", 12)], "RWI": []}
    cells = Project.cells
    start_on = Project.start_on


class RetainedCellsTest(unittest.TestCase):
    FIRST_START = """
        panel cells LW 10 0 0 0
        panel restored
        panel change 1 LW 10 1 7 0
        panel synced 1 0 20 0
        panel change 2 LW 11 1 8 0
        panel change 3 LW 11 1 9 0
    """

    def account(self, more=""):
        account = Account(ThreeCells())
        account.take(start_log(self.FIRST_START + more))
        return account

    def lost(self, restored, more="", end=""):
        return self.account(more).check(start_log(f"panel cells LW 10 {restored}\n{end}")).lost

    def test_a_synced_value_must_come_back(self):
        self.assertEqual(self.lost("7 0 0"), [])
        self.assertEqual(self.lost("0 0 0"), ["LW 10 came back as 0, possible were [7]"])

    def test_before_anything_was_changed_every_cell_is_0(self):
        self.assertEqual(Account(ThreeCells()).check(start_log("panel cells LW 10 0 1 0")).lost,
                         ["LW 11 came back as 1, possible were [0]"])

    def test_a_change_of_several_cells_gives_each_its_value(self):
        account = self.account()
        account.take(start_log("panel cells LW 10 7 8 0\npanel restored\n"
                               "panel change 1 LW 10 3 5 1\npanel synced 1 0 20 0"))
        self.assertEqual(account.check(start_log("panel cells LW 10 5 6 7")), (3, 3, []))

    def test_values_given_after_the_last_sync_may_come_back(self):
        self.assertEqual(self.lost("7 8 0"), [])
        self.assertEqual(self.lost("7 9 0"), [])

    def test_a_value_that_was_never_given_is_found(self):
        self.assertEqual(len(self.lost("7 1 0")), 1)
        self.assertEqual(len(self.lost("7 8 1")), 1)

    def test_an_overwritten_value_may_not_come_back_once_its_successor_is_synced(self):
        self.assertEqual(len(self.lost("7 8", more="panel synced 3 0 20 0")), 1)
        self.assertEqual(self.lost("7 9", more="panel synced 3 0 20 0"), [])

    def test_what_one_start_restored_is_what_the_next_one_must_restore(self):
        account = self.account()
        account.take(start_log("panel cells LW 10 7 8 0\npanel restored"))
        self.assertEqual(len(account.check(start_log("panel cells LW 10 7 0 0")).lost), 1)
        self.assertEqual(account.check(start_log("panel cells LW 10 7 8 0")), (3, 0, []))

    def test_values_that_were_changed_and_kept_are_at_stake(self):
        restored = start_log("panel cells LW 10 7 9 0")
        self.assertEqual(self.account().check(restored).at_stake, 1)
        self.assertEqual(self.account("panel synced 3 0 20 0").check(restored).at_stake, 2)
        self.assertEqual(self.account("panel synced 3 0 20 0").check(start_log("panel cells LW 10 7")).at_stake, 1)

    def test_a_start_that_lists_other_cells_than_the_project_names_is_found(self):
        self.assertEqual(self.lost("7 8", end="panel restored"), ["LW 12 is not listed as retained"])
        self.assertEqual(self.lost("7 8"), [])
        self.assertEqual(self.lost("7 8 0 0", end="panel restored"),
                         ["LW 13, which the project does not name, is listed as retained"])

    def test_a_touched_cell_that_is_not_retained_is_found(self):
        self.assertEqual(self.lost("7 8 0", end="panel others LW 0"), [])
        self.assertEqual(self.lost("7 8 0", end="panel others LW 2"),
                         ["2 cells of LW that are not retained were touched"])

    def test_a_start_that_was_cut_before_everything_was_restored_changes_nothing(self):
        account = self.account()
        account.take(start_log("panel cells LW 10 7 8"))
        self.assertEqual(account.check(start_log("panel cells LW 10 7 9 0")).lost, [])

    def test_a_file_that_became_shorter_or_vanished_is_found(self):
        lengths = "panel length maintenance-word.dat "
        self.assertEqual(self.lost("7 0 0", end=lengths + "20"), [])
        self.assertEqual(self.lost("7 0 0", end=lengths + "19"),
                         ["maintenance-word.dat is 19 bytes long, after the last sync it had 20"])
        self.assertEqual(len(self.lost("7 0 0", end=lengths + "-1")), 1)
        self.assertEqual(Account(ThreeCells()).check(start_log(lengths + "-1")).lost, [])


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
        self.account = Account(Project(ROOM / "whole_areas.xml"))
        first = self.sectors({})
        for line in ("panel change 1 LW 0 1 5 0", "panel synced 1 0 0 0", "panel change 2 LW 1 1 6 0",
                     "panel change 3 LW 510 2 7 257"):
            first.feed(line)
        self.account.take(first)

    def lost(self, cells_of_lw):
        return self.account.check(self.sectors(cells_of_lw)).lost

    def test_the_last_completed_save_must_come_back(self):
        self.assertEqual(self.account.check(self.sectors({0: 5})), (128 + 256 + 256, 1, []))
        self.assertEqual(self.lost({}), ["sector 0 of LW is neither the last saved one nor the one being saved"])

    def test_sectors_of_the_save_under_way_may_come_back(self):
        self.assertEqual(self.lost({0: 5, 1: 6, 510: 7, 511: 264}), [])
        self.assertEqual(self.lost({0: 5, 510: 7, 511: 264}), [])

    def test_a_missing_sector_is_found(self):
        log = self.sectors({0: 5})
        del log.sectors["RWI", 255]
        self.assertEqual(self.account.check(log).lost, ["sector 255 of RWI was not restored"])

    def test_a_start_that_was_cut_is_judged_as_far_as_it_came(self):
        log = StartLog(sectors={("LB", 0): self.sectors({}).sectors["LB", 0]})
        self.assertEqual(self.account.check(log), (1, 0, []))

    def test_a_mixture_inside_a_sector_is_found(self):
        self.assertEqual(len(self.lost({0: 5, 510: 7})), 1)

    def test_the_next_start_must_restore_the_mixture_that_this_one_restored(self):
        self.account.take(self.sectors({0: 5, 510: 7, 511: 264}))
        self.assertEqual(self.lost({0: 5, 510: 7, 511: 264}), [])
        self.assertEqual(len(self.lost({0: 5})), 1)
        self.assertEqual(len(self.lost({0: 5, 1: 6, 510: 7, 511: 264})), 1)


class ProjectTest(unittest.TestCase):
    def test_the_retained_cells_are_those_of_the_project_in_the_order_of_the_file(self):
        places = Project(ROOM / "retained_cells.xml").places
        self.assertEqual({area: len(cells) for area, cells in places.items()}, {"LB": 968, "LW": 3016, "RWI": 701})
        self.assertEqual(places["LB"][60:63], [("LB", 63), ("LB", 100), ("LB", 101)])

    def test_files_are_read_cell_by_cell(self):
        log = Project(ROOM / "retained_cells.xml").start_on(
            {"maintenance-bit.dat": b"\x02" + bytes(6) + b"\x20", "maintenance-word.dat": b"\x01\x80\x02"})
        self.assertEqual({cell for cell, value in log.cells.items() if value},
                         {("LB", 4), ("LB", 100), ("LW", 10), ("LW", 11)})
        self.assertEqual((log.cells["LW", 10], log.cells["LW", 11]), (0x8001, 2))
        self.assertEqual(log.lengths["maintenance-RWI.dat"], -1)
        self.assertTrue(log.restored)

    def places(self, *entries):
        """Of a project with these entries: (index, number of cells) of LW."""
        text = "".join(f"<object name='e'><property name='addressLength'>{count}</property>"
                       f"<object name='sourceAddress'><property name='Block'>LW</property>"
                       f"<property name='index'>{index}</property></object></object>" for index, count in entries)
        with tempfile.NamedTemporaryFile("w") as file:
            file.write("<object><object name='DataRetention'><property name='open Save all'>0</property>"
                       f"{text}</object></object>")
            file.flush()
            return Project(file.name).places["LW"]

    def test_entries_are_sorted_and_may_not_overlap(self):
        self.assertEqual(self.places((20, 1), (5, 2)), [("LW", 5), ("LW", 6), ("LW", 20)])
        with self.assertRaises(ValueError):
            self.places((5, 3), (7, 1))

    def test_an_image_that_is_shorter_than_its_area_is_all_zero(self):
        start_on = Project(ROOM / "whole_areas.xml").start_on
        self.assertEqual(start_on({"maintenance-bit.dat": b"\x01" * 65535}).sectors, start_on({}).sectors)

    def test_what_lies_behind_an_image_is_nothing(self):
        start_on = Project(ROOM / "whole_areas.xml").start_on
        self.assertEqual(start_on({"maintenance-bit.dat": bytes(65536) + b"\x01"}).sectors, start_on({}).sectors)


class StartLogTest(unittest.TestCase):
    def test_lines_of_the_kernel_are_passed_over(self):
        self.assertEqual(start_log("[    1.5] EXT4-fs (vda): mounted\nBooting"), StartLog())

    def test_a_damaged_line_is_not_taken_for_a_good_one(self):
        for line in ("panel chan", "panel change 1 LW 3", "panel change 2 LW 0 1 5 0", "panel synced 1 2 3",
                     "panel length other.dat 3", "panel cells LW 10 zz"):
            with self.subTest(line), self.assertRaises(UnreadableLog):
                start_log(line)

    def test_a_bit_gets_the_lowest_bit(self):
        log = start_log("panel change 1 LB 0 3 2 1")
        self.assertEqual(log.changes[0].values(), [0, 1, 0])

    def test_a_word_gets_the_lowest_sixteen_bits(self):
        self.assertEqual(start_log("panel change 1 LW 0 2 65535 1").changes[0].values(), [65535, 0])

    def test_sectors_are_numbered_from_the_first_of_their_line(self):
        self.assertEqual(start_log("panel sectors LW 3 aa bb").sectors, {("LW", 3): "aa", ("LW", 4): "bb"})

    def test_a_guest_that_cannot_go_on_says_why(self):
        self.assertEqual(start_log("panel failed: no storage").failure, "no storage")

    def test_the_log_as_it_was_earlier_knows_nothing_of_later_lines(self):
        log = start_log("panel restored\npanel change 1 LW 0 1 5 0\npanel synced 1 0 0 0")
        self.assertEqual(log.until(3), log)
        self.assertEqual((len(log.until(2).changes), log.until(2).synced), (1, 0))


if __name__ == "__main__":
    unittest.main()
