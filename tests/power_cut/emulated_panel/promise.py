# SPDX-License-Identifier: MIT
"""Judges what a start restores, given everything that the panel reported before the power cut."""
from collections import namedtuple

from project import AREAS, BYTES_PER_CELL, CELLS, SECTOR_BYTES, digests

# `checked` values (cells, or sectors of whole areas) were compared; `at_stake` of them had been changed and kept since the
# previous start; `lost` has a line for every wrong one.
Verdict = namedtuple("Verdict", "checked at_stake lost")


class Account:
    """Everything that is promised to one panel."""

    def __init__(self, project):
        self._lengths = {}  # of each file, after the last return of the module
        self._values = WholeAreas() if project.places is None else RetainedCells(project.cells())

    def check(self, log):
        """Judges what a start restored, as far as it got."""
        verdict = self._values.check(log)
        short = [f"{name} is {length} bytes long, after the last sync it had {self._lengths[name]}"
                 for name, length in log.lengths.items() if length < self._lengths.get(name, -1)]
        return verdict._replace(lost=short + verdict.lost)

    def take(self, log):
        """From now on, the next start must restore what this one restored and changed."""
        self._lengths.update(log.synced_lengths)
        if log.restored:  # otherwise nothing was changed after this start
            self._values.take(log)


class RetainedCells:
    """Per-address mode: a cell comes back with its last synced value or a later one."""

    def __init__(self, cells):
        self._given = {cell: [(0, 0)] for cell in cells}  # [(change number, value)], the last synced one first
        self._changed = set()

    def check(self, log):
        lost = [f"{area} {address} is not retained and came back as {value}"
                for (area, address), value in log.cells.items() if (area, address) not in self._given]
        judged = self._given.keys() if log.restored else self._given.keys() & log.cells.keys()
        for area, address in judged:
            value = log.cells.get((area, address), 0)
            possible = [given for _, given in self._given[area, address]]
            if value not in possible:
                lost.append(f"{area} {address} came back as {value}, possible were {possible}")
        return Verdict(len(judged), len(self._changed & judged), lost)

    def take(self, log):
        self._given = {cell: [(0, log.cells.get(cell, 0))] for cell in self._given}
        for change in log.changes:
            for i, value in enumerate(change.values()):
                self._given[change.area, change.address + i].append((change.number, value))
        self._changed = set()
        for cell, given in self._given.items():
            last_synced = max(i for i, (number, _) in enumerate(given) if number <= log.synced)
            if given[last_synced][1] != given[0][1]:
                self._changed.add(cell)
            self._given[cell] = given[last_synced:]


class WholeAreas:
    """Whole-area mode: every sector comes from the last completed save or from one in progress."""

    def __init__(self):
        self._saved = {area: bytearray(CELLS * width) for area, width in BYTES_PER_CELL.items()}
        self._under_way = None  # like _saved; None when no save was cut
        self._changed = set()

    def check(self, log):
        saved, under_way = _digests(self._saved), _digests(self._under_way or self._saved)
        lost = [f"sector {sector} of {area} is neither the last saved one nor the one being saved"
                for (area, sector), digest in log.sectors.items()
                if digest not in (saved[area, sector], under_way[area, sector])]
        if log.restored:
            lost += [f"sector {sector} of {area} was not restored" for area, sector in saved.keys() - log.sectors]
        return Verdict(len(log.sectors), len(self._changed & log.sectors.keys()), lost)

    def take(self, log):
        saved = _digests(self._saved)
        for (area, sector), digest in log.sectors.items():
            if self._under_way and digest != saved[area, sector]:
                self._saved[area][_span(sector)] = self._under_way[area][_span(sector)]
        restored = _digests(self._saved)
        self._under_way = None
        for change in log.changes:
            if change.number > log.synced and self._under_way is None:
                self._under_way = {area: bytearray(image) for area, image in self._saved.items()}
            _apply(change, self._under_way or self._saved)
        self._changed = {at for at, digest in _digests(self._saved).items() if digest != restored[at]}


def _digests(images):
    return {at: digest for area in AREAS for at, digest in digests(area, images[area]).items()}


def _span(sector):
    return slice(sector * SECTOR_BYTES, (sector + 1) * SECTOR_BYTES)


def _apply(change, image):
    width = BYTES_PER_CELL[change.area]
    content = b"".join(value.to_bytes(width, "little") for value in change.values())
    start = change.address * width
    image[change.area][start : start + len(content)] = content
