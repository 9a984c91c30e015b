# SPDX-License-Identifier: MIT
"""Works out which cells a project retains and what retention files say about them, without the module and the guest."""
import xml.etree.ElementTree as ElementTree
from hashlib import md5

from serial_log import FILES, StartLog

SECTOR_BYTES = 512
CELLS = 65536
BYTES_PER_CELL = {"LB": 1, "LW": 2, "RWI": 2}  # of an area's memory and of its image in a file
AREAS = tuple(BYTES_PER_CELL)


class Project:
    """`places`: (area, address) of every retained cell in the order of its file; None with whole areas."""

    def __init__(self, path):
        retention = ElementTree.parse(path).find("object[@name='DataRetention']")
        self.places = None
        if int(retention.find("property[@name='open Save all']").text) == 0:
            self.places = {area: [] for area in AREAS}
            for area, first, count in sorted(map(_entry, retention.findall("object"))):
                if self.places[area] and first <= self.places[area][-1][1]:
                    raise ValueError(f"{path}: entries that overlap have rules of their own, which are not kept here")
                self.places[area] += [(area, address) for address in range(first, first + count)]

    def cells(self):
        """Every retained cell."""
        return {cell for places in self.places.values() for cell in places}

    def start_on(self, files):
        """What a panel whose memory is zero restores from these files (name: bytes)."""
        log = StartLog(restored=True)
        for area, name in zip(AREAS, FILES):
            log.lengths[name] = len(files[name]) if name in files else -1
            stored = files.get(name, b"")
            if self.places is None:
                size = CELLS * BYTES_PER_CELL[area]
                log.sectors.update(digests(area, stored[:size] if len(stored) >= size else bytes(size)))
            else:
                log.cells.update(zip(self.places[area], _values(area, stored, len(self.places[area]))))
        return log


def digests(area, image):
    """(area, sector): digest, of each sector of an area's image."""
    return {(area, at // SECTOR_BYTES): md5(image[at : at + SECTOR_BYTES]).hexdigest()
            for at in range(0, len(image), SECTOR_BYTES)}


def _entry(entry):
    source = entry.find("object[@name='sourceAddress']")
    return (source.find("property[@name='Block']").text,
            int(source.find("property[@name='index']").text),
            int(entry.find("property[@name='addressLength']").text))


def _values(area, stored, count):
    """The first values of a file of packed cells; what lies past its end is 0."""
    stored += bytes(max(0, 2 * count - len(stored)))
    if area == "LB":
        return [stored[i // 8] >> i % 8 & 1 for i in range(count)]
    return [int.from_bytes(stored[2 * i : 2 * i + 2], "little") for i in range(count)]
