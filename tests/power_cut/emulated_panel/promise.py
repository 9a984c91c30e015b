# SPDX-License-Identifier: MIT
"""What the next start may restore, given all that the panel said before the power was cut."""
from collections import namedtuple
from hashlib import md5

SECTOR_BYTES = 512
BYTES_PER_CELL = {"LB": 1, "LW": 2, "RWI": 2}
CELLS = 65536

# `checked` values (cells, or sectors of whole areas) were compared; every one that must not be is a line of `lost`.
Verdict = namedtuple("Verdict", "checked lost")


class FileLengths:
    """No retention file is shorter than it was after the last "sync"."""

    def __init__(self):
        self._least = {}

    def check(self, log):
        lost = [
            f"{name} is {length} bytes long, after the last sync it had {self._least[name]}"
            for name, length in log.lengths.items()
            if length < self._least.get(name, -1)
        ]
        return Verdict(0, lost)

    def take(self, log):
        self._least.update(log.synced_lengths)


class RetainedCells:
    """Per-address mode: a cell comes back with its last synced value or one that was given to it later."""

    def __init__(self):
        self._given = {}  # (area, address): [(change number, value)], the last synced one first

    def check(self, log):
        lost = []
        for cell, value in log.cells.items():
            given = [possible for _, possible in self._given.get(cell, [(0, 0)])]
            if value not in given:
                lost.append(f"{cell[0]} {cell[1]} came back as {value}, possible were {given}")
        if log.restored:
            lost += [f"{area} {address} is not retained any more" for area, address in self._given.keys() - log.cells]
        return Verdict(len(log.cells), lost)

    def take(self, log):
        if not log.restored:  # nothing was changed in this start
            return
        self._given = {cell: [(0, value)] for cell, value in log.cells.items()}
        for change in log.changes:
            for i, value in enumerate(change.values()):
                self._given[change.area, change.address + i].append((change.number, value))
        for cell, given in self._given.items():
            last_synced = max(i for i, (number, _) in enumerate(given) if number <= log.synced)
            self._given[cell] = given[last_synced:]


class WholeAreas:
    """Whole-area mode: every sector is that of the last completed save or that of a save that was under way."""

    def __init__(self):
        self._saved = {area: bytearray(CELLS * width) for area, width in BYTES_PER_CELL.items()}
        self._under_way = None  # like _saved; None when no save was cut

    def check(self, log):
        lost = [
            f"sector {sector} of {area} is neither the last saved one nor the one being saved"
            for (area, sector), digest in log.sectors.items()
            if self._image_with(area, sector, digest) is None
        ]
        if log.restored:
            for area, image in self._saved.items():
                for sector in range(len(image) // SECTOR_BYTES):
                    if (area, sector) not in log.sectors:
                        lost.append(f"sector {sector} of {area} was not restored")
        return Verdict(len(log.sectors), lost)

    def take(self, log):
        if not log.restored:
            return
        for (area, sector), digest in log.sectors.items():
            image = self._image_with(area, sector, digest) or self._saved
            self._saved[area][_span(sector)] = image[area][_span(sector)]
        self._under_way = None
        for change in log.changes:
            if change.number > log.synced and self._under_way is None:
                self._under_way = {area: bytearray(image) for area, image in self._saved.items()}
            _apply(change, self._under_way or self._saved)

    def _image_with(self, area, sector, digest):
        for image in filter(None, (self._saved, self._under_way)):
            if md5(image[area][_span(sector)]).hexdigest() == digest:
                return image
        return None


def _span(sector):
    return slice(sector * SECTOR_BYTES, (sector + 1) * SECTOR_BYTES)


def _apply(change, image):
    width = BYTES_PER_CELL[change.area]
    content = b"".join(value.to_bytes(width, "little") for value in change.values())
    start = change.address * width
    image[change.area][start : start + len(content)] = content
