# SPDX-License-Identifier: MIT
"""Reads what was written to the emulated disk, in order, and what a disk with a volatile cache may hold after a power cut.

The log is that of QEMU's block driver "blklogwrites", in the format of the kernel's dm-log-writes: a sector with the log's
sector size, then for each request a sector with its place, its length and its flags, and the sectors that it wrote. A
request is logged when it is complete and before the guest is told.
"""
import struct
from dataclasses import dataclass

SECTOR_BYTES = 512
_MAGIC = 0x6A736677736872
_FLUSH = 1
# ext4's superblock: 1024 bytes with one checksum. Torn between its two sectors it is lost, and with it a file system as
# small as this one, which has no copy of it. ext4 has no remedy, so that here both arrive or neither.
_SUPERBLOCK_SECTORS = (2, 3)


class UnreadableWriteLog(Exception):
    """Not a log written by QEMU."""


@dataclass(frozen=True)
class Request:
    """A flush, after which everything before it is on the medium, or a write."""

    flush: bool
    sector: int = 0
    content: bytes = b""


@dataclass(frozen=True)
class CutState:
    """`requests` have happened; `arrived`: the sectors (number, content) written since the last flush that survive."""

    requests: int
    durable: int  # requests up to and including the last flush
    arrived: list


def read_write_log(path):
    """The requests of a log. Everything after an incompletely logged request never happened."""
    log = path.read_bytes()
    if len(log) < 2 * SECTOR_BYTES:
        return []
    magic, version, _, sector_bytes = struct.unpack_from("<QQQI", log)
    if (magic, version, sector_bytes) != (_MAGIC, 1, SECTOR_BYTES):
        raise UnreadableWriteLog(f"{path}: magic {magic:x}, version {version}, sectors of {sector_bytes} bytes")
    requests, at = [], SECTOR_BYTES
    while at + SECTOR_BYTES <= len(log):
        sector, count, flags, _ = struct.unpack_from("<QQQQ", log, at)
        at += SECTOR_BYTES
        if flags == _FLUSH and count == 0:
            requests.append(Request(True))
        elif flags == 0 and 0 < count * SECTOR_BYTES <= len(log) - at:
            requests.append(Request(False, sector, log[at : at + count * SECTOR_BYTES]))
            at += count * SECTOR_BYTES
        elif flags == 0 and (count == 0 or at + count * SECTOR_BYTES > len(log)):
            break
        else:
            raise UnreadableWriteLog(f"{path}: a request with flags {flags} and {count} sectors")
    return requests


def sectors_of(requests):
    """(sector, content) in the order in which they were written."""
    for request in requests:
        for at in range(0, len(request.content), SECTOR_BYTES):
            yield request.sector + at // SECTOR_BYTES, request.content[at : at + SECTOR_BYTES]


def cut_state(requests, done, chance):
    """A state in which a cut after `done` requests can leave the disk."""
    durable = max((i + 1 for i in range(done) if requests[i].flush), default=0)
    pending = list(sectors_of(requests[durable:done]))
    place = chance.randrange(len(pending)) if pending else 0
    arrives = chance.choice((
        lambda i: True, lambda i: False, lambda i: i < place, lambda i: i >= place, lambda i: i == place,
        lambda i: i != place, lambda i: chance.random() < 0.5))
    arrived = [arrives(i) for i in range(len(pending))]
    for i in range(1, len(pending)):
        if (pending[i - 1][0], pending[i][0]) == _SUPERBLOCK_SECTORS:
            arrived[i] = arrived[i - 1]
    return CutState(done, durable, [sector for sector, there in zip(pending, arrived) if there])


def apply_sectors(image, sectors):
    for number, content in sectors:
        image[number * SECTOR_BYTES : (number + 1) * SECTOR_BYTES] = content
