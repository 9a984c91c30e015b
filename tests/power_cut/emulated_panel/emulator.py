# SPDX-License-Identifier: MIT
"""The emulated machine: its power goes on, its serial line is read, its power goes away."""
import json
import queue
import socket
import subprocess
import threading
import time
from dataclasses import dataclass

from serial_log import StartLog

BOOT_SECONDS = 300  # far more than a busy machine needs; beyond it the emulator is stuck


class EmulatorFailure(Exception):
    """The emulated machine does not come as far as starting the panel."""


@dataclass(frozen=True)
class Machine:
    """A machine with the panel's storage in it. Its files lie in the folder of assembled parts."""

    storage: str  # the file system, and as the guest's PANEL_STORAGE
    medium: str  # as told to people
    blank_image: str  # a storage image with an empty file system
    console: str
    # What makes up the machine; {parts}, {image} and {write_log} are filled in.
    arguments: tuple
    # The flash chip of this emulator answers before its write is in the image file, and the logged disk before its write
    # is in the log; halting the machine first completes those writes. The other disk answers when they are complete.
    halt_before_cut: bool
    mark_device: str = ""  # where the guest makes its marks


DISK = Machine(
    "ext4", "disk", "blank.ext4", "ttyAMA0",
    ("-M", "virt", "-m", "256M",
     "-drive", "if=none,id=storage,format=raw,cache=writethrough,file={image}",
     "-device", "virtio-blk-device,drive=storage"),
    False,
)
CACHED_DISK = Machine(
    "ext4", "cached_disk", "blank.ext4", "ttyAMA0",
    ("-M", "virt", "-m", "256M",
     "-blockdev", "driver=file,node-name=medium,filename={image}",
     "-blockdev", "driver=file,node-name=log,filename={write_log}",
     "-blockdev", "driver=blklogwrites,node-name=storage,file=medium,log=log",
     "-device", "virtio-blk-device,drive=storage,write-cache=on"),
    True,
    "/dev/vda",
)
FLASH = Machine(
    "ubifs", "flash", "blank.ubifs", "ttyS4",
    ("-M", "ast2600-evb,fmc-model=m25p128", "-m", "512M", "-dtb", "{parts}/aspeed-ast2600-evb.dtb",
     "-drive", "if=mtd,format=raw,cache=writethrough,file={image}"),
    True,
)


def write_log_of(image):
    return image.with_suffix(".writes")


class Emulator:
    """A machine that was switched on. Leaving the `with` block kills what is still running."""

    def __init__(self, machine, parts, image, log_path, parameters):
        """`parameters` are for guest_init. A machine with marks logs all writes to its disk beside the image."""
        self.log = StartLog()
        self._machine = machine
        self._control, theirs = socket.socketpair()
        self._log_file = open(log_path, "wb", buffering=0)
        write_log = write_log_of(image)
        if machine.mark_device:
            write_log.write_bytes(b"")
        kernel_parameters = [
            f"console={machine.console}", "quiet", "loglevel=4", "panic=-1", f"PANEL_STORAGE={machine.storage}",
            f"PANEL_MARKS={machine.mark_device}", *(f'"{name}={value}"' for name, value in parameters.items()),
        ]
        with theirs:
            self._process = subprocess.Popen(
                # No emulator outlives a run that is killed.
                ["setpriv", "--pdeathsig", "KILL", "qemu-system-arm",
                 *(a.format(parts=parts, image=image, write_log=write_log) for a in machine.arguments),
                 "-nic", "none", "-display", "none", "-no-reboot", "-serial", "stdio",
                 "-chardev", f"socket,id=control,fd={theirs.fileno()}", "-mon", "chardev=control,mode=control",
                 "-kernel", f"{parts}/vmlinuz", "-initrd", f"{parts}/initramfs",
                 "-append", " ".join(kernel_parameters)],
                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=self._log_file,
                pass_fds=[theirs.fileno()])
        self._lines = queue.SimpleQueue()  # of the serial line; None after the last one
        self._booting = False
        self._cut = False
        self._ended = False
        # The machine stands still while its serial line is not read, so a thread does nothing else.
        self._reader = threading.Thread(target=self._read_serial_line)
        self._reader.start()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._process.kill()
        self._process.wait()
        self._reader.join()
        self._process.stdout.close()
        self._control.close()
        self._log_file.close()

    def run_until(self, reached, seconds=BOOT_SECONDS):
        """Goes on until `reached()`, for that many seconds or until the machine ends; true when it was reached."""
        deadline = time.monotonic() + seconds
        while not reached() and not self._ended:
            try:
                self._take(self._lines.get(timeout=max(0, deadline - time.monotonic())))
            except queue.Empty:
                break
        return reached()

    def boot(self):
        """Goes on until the guest is about to mount its storage."""
        if not self.run_until(lambda: self._booting):
            raise EmulatorFailure("the emulated machine did not come up")

    def cut_power(self):
        """Kills the machine; afterwards `log` holds all that it said."""
        if self._machine.halt_before_cut and self._process.poll() is None:
            self._halt()
        self._cut = self._process.poll() is None
        self._process.kill()
        while not self._ended:
            self._take(self._lines.get())

    def _read_serial_line(self):
        for line in self._process.stdout:
            self._log_file.write(line)
            if line.endswith(b"\n"):
                self._lines.put(line.decode("ascii", "replace").strip())
        self._lines.put(None)

    def _take(self, line):
        if line is None:
            self._ended = True
            if not self._cut:
                self.log.failure = self.log.failure or "the panel's machine stopped by itself"
        elif line == "panel booting":
            self._booting = True
        else:
            self.log.feed(line)

    def _halt(self):
        """Stops the processor; returns when every write that it has made is in the image file."""
        self._control.settimeout(BOOT_SECONDS)
        with self._control.makefile("rw", encoding="utf-8") as control:
            for command in ("qmp_capabilities", "stop"):
                control.write(json.dumps({"execute": command}) + "\n")
                control.flush()
                while '"return"' not in control.readline():
                    pass
