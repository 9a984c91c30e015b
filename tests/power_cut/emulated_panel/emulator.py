# SPDX-License-Identifier: MIT
"""Runs the emulated machine: switches it on, reads its serial line, cuts its power."""
import json
import queue
import shutil
import socket
import subprocess
import threading
import time
from dataclasses import dataclass

from serial_log import StartLog

STUCK_SECONDS = 3600  # far more than anything takes on a busy machine


class EmulatorFailure(Exception):
    """The emulated machine did not get as far as starting the panel."""


@dataclass(frozen=True)
class Machine:
    """A machine with the panel's storage. Its files are in the folder of assembled parts."""

    storage: str  # the file system, as in the guest's PANEL_STORAGE
    medium: str  # for people
    blank_image: str  # a storage image with an empty file system
    console: str
    # The machine's options; {parts}, {image} and {write_log} are filled in.
    arguments: tuple
    # This emulator's flash chip answers before its write is in the image file, and the logged disk before its write is in
    # the log; halting the machine first completes those writes. The other disk answers when they are complete.
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
    """A running machine. Leaving the `with` block kills it."""

    def __init__(self, machine, parts, image, log_path, state=None):
        """With `state`, a file from save(), it continues from there. A machine with marks logs all writes to its disk next to
        the image."""
        self.log = StartLog()
        self._machine = machine
        self._control, theirs = socket.socketpair()
        self._control.settimeout(STUCK_SECONDS)
        self._replies = self._control.makefile("r", encoding="utf-8")
        self._log_file = open(log_path, "wb", buffering=0)
        write_log = write_log_of(image)
        if machine.mark_device:
            write_log.write_bytes(b"")
        with theirs:
            self._process = subprocess.Popen(
                # Ends the emulator when the run is killed.
                ["setpriv", "--pdeathsig", "KILL", "qemu-system-arm",
                 *(a.format(parts=parts, image=image, write_log=write_log) for a in machine.arguments),
                 "-nic", "none", "-display", "none", "-no-reboot", "-serial", "stdio",
                 "-chardev", f"socket,id=control,fd={theirs.fileno()}", "-mon", "chardev=control,mode=control",
                 "-kernel", f"{parts}/vmlinuz", "-initrd", f"{parts}/initramfs",
                 "-append", f"console={machine.console} quiet loglevel=4 panic=-1",
                 *(("-incoming", f"exec:cat {state}") if state else ())],
                stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=self._log_file, pass_fds=[theirs.fileno()])
        self._lines = queue.SimpleQueue()  # of the serial line; None after the last one
        self._waiting = False  # the guest waits for its parameters
        self._cut = False
        self._ended = False
        # The machine stalls while its serial line is not read, so a thread only reads it.
        self._reader = threading.Thread(target=self._read_serial_line)
        self._reader.start()
        self._command("qmp_capabilities")
        if state:
            self._poll("query-status", lambda status: status["status"] == "running")
        elif not self.run_until(lambda: self._waiting):
            self.__exit__()
            raise EmulatorFailure("the emulated machine did not come up")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._process.kill()
        self._process.wait()
        self._reader.join()
        self._process.stdin.close()
        self._process.stdout.close()
        self._replies.close()
        self._control.close()
        self._log_file.close()

    def save(self, state):
        """Saves the machine, but not its storage, while it waits for its parameters."""
        self._command("migrate", uri=f"exec:cat >{state}")
        self._poll("query-migrate", lambda migration: migration["status"] == "completed")

    def start_panel(self, parameters):
        """Makes the guest mount its storage and start the panel. `parameters` are for guest_init."""
        words = {"PANEL_STORAGE": self._machine.storage, "PANEL_MARKS": self._machine.mark_device, **parameters}
        line = " ".join(f"{name}='{value}'" for name, value in words.items())
        self._process.stdin.write(line.encode("ascii") + b"\n")
        self._process.stdin.flush()

    def run_until(self, reached, seconds=STUCK_SECONDS):
        """Waits until `reached()`, for that many seconds or until the machine ends; true when it was reached."""
        deadline = time.monotonic() + seconds
        while not reached() and not self._ended:
            try:
                self._take(self._lines.get(timeout=max(0, deadline - time.monotonic())))
            except queue.Empty:
                break
        return reached()

    def cut_power(self):
        """Kills the machine; afterwards `log` has all its output."""
        if self._machine.halt_before_cut and self._process.poll() is None:
            self._command("stop")  # returns when every write that the processor has made is in the image file
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
        elif line == "panel waiting":
            self._waiting = True
        else:
            self.log.feed(line)

    def _command(self, name, **arguments):
        """Runs a command of the emulator's monitor and returns the answer."""
        self._control.sendall(json.dumps({"execute": name, "arguments": arguments}).encode("ascii") + b"\n")
        for line in self._replies:
            reply = json.loads(line)
            if "error" in reply:
                raise EmulatorFailure(f"{name}: {reply['error']['desc']}")
            if "return" in reply:
                return reply["return"]
        raise EmulatorFailure(f"{name}: the emulator has ended")

    def _poll(self, query, is_good):
        answer = self._command(query)
        while not is_good(answer):
            if answer.get("status") == "failed":
                raise EmulatorFailure(f"{query}: {answer.get('error-desc', answer)}")
            time.sleep(0.02)
            answer = self._command(query)


def waiting_state(machine, parts):
    """The state of a machine that has booted and waits for its parameters, saved once for all starts with these parts."""
    state = parts / f"{machine.medium}.state"
    if not state.exists():
        image = parts / f"{machine.medium}.boot.img"
        shutil.copyfile(parts / machine.blank_image, image)
        with Emulator(machine, parts, image, parts / f"{machine.medium}.boot.log") as emulator:
            emulator.save(state.with_suffix(".new"))
        state.with_suffix(".new").rename(state)
    return state
