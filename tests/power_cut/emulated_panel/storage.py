# SPDX-License-Identifier: MIT
"""Reads the retention files in an image of an ext4 file system, as they are after its journal has been replayed."""
import os
import subprocess
import tempfile
from pathlib import Path

from serial_log import FILES

os.environ["PATH"] += ":/usr/sbin:/sbin"  # programs that only root's path has


class DamagedStorage(Exception):
    """The file system is damaged."""


def retention_files(image):
    """Names and bytes of the retention files. The image is unchanged; nothing is mounted."""
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        copy = folder / "image"
        copy.write_bytes(image)
        _run("e2fsck", "-y", "-E", "journal_only", copy, good=(0, 1))  # as a mount does
        _run("e2fsck", "-fn", copy)
        commands = folder / "commands"
        commands.write_text("".join(f"dump /{file} {folder / file}\n" for file in FILES), encoding="ascii")
        _run("debugfs", "-f", commands, copy)
        return {file: (folder / file).read_bytes() for file in FILES if (folder / file).exists()}


def _run(*command, good=(0,)):
    done = subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          errors="replace", check=False)
    if done.returncode not in good:
        raise DamagedStorage(f"{' '.join(map(str, command[:3]))} ends with status {done.returncode}: {done.stdout}")
