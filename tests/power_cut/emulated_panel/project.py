# SPDX-License-Identifier: MIT
"""The projects of the emulated panel, and what retention files say about their cells, without the module and the guest.

    project.py FOLDER    writes the project files
"""
import sys
from hashlib import md5
from pathlib import Path

from serial_log import FILES, StartLog

SECTOR_BYTES = 512
CELLS = 65536
BYTES_PER_CELL = {"LB": 1, "LW": 2, "RWI": 2}  # of an area's memory and of its image in a file
AREAS = tuple(BYTES_PER_CELL)

ENTRY = """<object name="entry">
 <property name="addressLength" type="int32">{count}</property>
 <object name="sourceAddress">
  <property name="Block" type="string">{area}</property>
  <property name="index" type="int32">{first}</property>
 </object>
</object>"""
PROJECT = """<?xml version="1.0" encoding="UTF-8"?>
<object name="project"><object name="DataRetention">
<property name="open Save all" type="uint32">{whole_areas}</property>
<property name="Save Time" type="uint32">1</property>
{entries}
</object></object>
"""


class Project:
    """`ranges`, each (area, first cell, number of cells), are sorted and do not overlap; without any, whole areas are retained.
    `places`: (area, address) of every retained cell in the order of its file; None with whole areas."""

    def __init__(self, name, ranges=()):
        self.name = name
        self.file = name.replace(" ", "_") + ".xml"
        self._ranges = ranges
        self.places = {area: [(area, address) for name, first, count in ranges if name == area
                              for address in range(first, first + count)] for area in AREAS} if ranges else None

    def xml(self):
        entries = "\n".join(ENTRY.format(area=area, first=first, count=count) for area, first, count in self._ranges)
        return PROJECT.format(whole_areas=int(self.places is None), entries=entries)

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


def _values(area, stored, count):
    """The first values of a file of packed cells; what lies past its end is 0."""
    stored += bytes(max(0, 2 * count - len(stored)))
    if area == "LB":
        return [stored[i // 8] >> i % 8 & 1 for i in range(count)]
    return [int.from_bytes(stored[2 * i : 2 * i + 2], "little") for i in range(count)]


RETAINED_CELLS = Project("retained cells", (
    ("LB", 3, 61), ("LB", 100, 7), ("LB", 2040, 900),  # bit blocks that share bytes
    ("LW", 10, 10), ("LW", 500, 3000), ("LW", 65530, 6),  # a block of several pages, and the end of the area
    ("RWI", 0, 1), ("RWI", 1000, 700)))
WHOLE_AREAS = Project("whole areas")
PROJECTS = (RETAINED_CELLS, WHOLE_AREAS)

if __name__ == "__main__":
    for each in PROJECTS:
        (Path(sys.argv[1]) / each.file).write_text(each.xml(), encoding="ascii")
