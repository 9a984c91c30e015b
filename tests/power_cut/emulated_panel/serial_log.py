# SPDX-License-Identifier: MIT
"""Parses what the panel program in the emulator prints on the serial line, from one start to the next cut."""
from dataclasses import dataclass, field

FILES = ("maintenance-bit.dat", "maintenance-word.dat", "maintenance-RWI.dat")


class UnreadableLog(Exception):
    """A line of the panel that does not follow the grammar."""


@dataclass(frozen=True)
class Change:
    """Cell i of `count` from `address` on gets the low bits of start + i * step."""

    number: int
    area: str
    address: int
    count: int
    start: int
    step: int

    def values(self):
        mask = 1 if self.area == "LB" else 0xFFFF
        return [(self.start + i * self.step) & mask for i in range(self.count)]


@dataclass
class StartLog:
    """One start of the panel, as far as it got. guest_panel.cpp describes the lines."""

    lines: list = field(default_factory=list)  # of the panel, as they came
    lengths: dict = field(default_factory=dict)  # file name: bytes before the start, -1 when missing
    cells: dict = field(default_factory=dict)  # (area, address): restored value; of those not named, 0
    sectors: dict = field(default_factory=dict)  # (area, sector): digest of the restored bytes
    restored: bool = False  # everything restored was listed
    changes: list = field(default_factory=list)
    synced: int = 0  # the module has returned from all changes up to this number
    synced_lengths: dict = field(default_factory=dict)  # file name: bytes after that return
    failure: str = ""  # why the panel could not go on

    def feed(self, line):
        """Takes the next whole line; skips lines of the kernel and the machine's firmware."""
        words = line.split()
        if not words or words[0] != "panel":
            return
        try:
            self._take(words[1:])
        except (IndexError, TypeError, ValueError) as error:
            raise UnreadableLog(f"unreadable line of the panel: {line!r}") from error
        self.lines.append(line)

    def until(self, lines):
        """The log as it was after that many lines."""
        log = StartLog()
        for line in self.lines[:lines]:
            log.feed(line)
        return log

    def _take(self, words):
        kind, rest = words[0], words[1:]
        if kind == "lengths":
            self.lengths = _lengths(rest)
        elif kind == "cell":
            self.cells[rest[0], int(rest[1])] = int(rest[2])
        elif kind == "sectors":
            for i, digest in enumerate(rest[2:]):
                self.sectors[rest[0], int(rest[1]) + i] = digest
        elif kind == "restored":
            self.restored = True
        elif kind == "change":
            change = Change(int(rest[0]), rest[1], *map(int, rest[2:6]))
            if change.number != len(self.changes) + 1:
                raise ValueError("a change is missing")
            self.changes.append(change)
        elif kind == "synced":
            self.synced = int(rest[0])
            self.synced_lengths = _lengths(rest[1:])
        elif kind == "failed:":
            self.failure = " ".join(rest)
        else:
            raise ValueError("unknown kind of line")


def _lengths(words):
    return dict(zip(FILES, map(int, words), strict=True))
