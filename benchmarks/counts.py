#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Compares the instructions and system calls of each operation of the module with the recorded counts.

qemu-user counts them on one fixed model of each processor, so that neither the machine's processor nor its load matters.
System calls with which the allocator gets memory are left out, because they depend on where the heap begins.
"""
import argparse
import concurrent.futures
import os
import pathlib
import re
import subprocess
import sys
import tempfile

RECORD = pathlib.Path(__file__).with_name("expected_counts.txt")
HEADER = """# What one operation of the module costs: processor, operation, instructions outside of the kernel, system calls.
# scripts/counts --update writes it, with the compiler and the libraries of Debian 12; scripts/counts compares.
"""
MARGIN = 0.03
# The limit from one size to the next, ten times larger one: the n log n of a sort passes, a nested loop does not.
MOST_GROWTH = 13
GROWING = ("start_up/", "change_among_blocks/", "address_list/")
PROCESSORS = {
    "amd64": (["qemu-x86_64", "-cpu", "qemu64"], "usr/include/x86_64-linux-gnu/asm/unistd_64.h"),
    "armhf": (["qemu-arm", "-cpu", "cortex-a9"], "usr/include/arm-linux-gnueabihf/asm/unistd-*.h"),
}
OF_THE_ALLOCATOR = {"brk", "mmap", "mmap2", "munmap", "mremap", "mprotect", "madvise"}
# Without per-thread caches, the allocator takes the same path whatever was allocated before, such as file names of another
# length.
ENVIRONMENT = {"QT_HASH_SEED": "0", "GLIBC_TUNABLES": "glibc.malloc.tcache_count=0"}
SIDES = ("module", "by-hand", "bare")


class Processor:
    def __init__(self, name, program, plugin, root):
        command, headers = PROCESSORS[name]
        self.name = name
        self.command = [*command, *(["-L", root] if root != "/" else []), "-plugin", plugin, program]
        self.calls = {}
        for header in pathlib.Path(root).glob(headers):
            for call, number in re.findall(r"#define __NR_(\w+)\s+\D*(\d+)\)?$", header.read_text(), re.M):
                self.calls[int(number)] = call
        if not self.calls:
            sys.exit(f"{root} has no {headers}, which names the system calls")

    def run(self, *words):
        done = subprocess.run([*self.command, *words], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                              env=ENVIRONMENT)
        if done.returncode != 0:
            sys.exit(f"{' '.join([*self.command, *words])} failed:\n{done.stderr[-2000:]}")
        return done

    def count(self, operation, side):
        """Instructions and {system call: number} of one operation."""
        size = re.search(r"/(\d+)$", operation)
        times = 20 if not size or int(size[1]) <= 1000 else 2
        with tempfile.TemporaryDirectory(dir="/tmp") as folder:
            text = self.run(folder, operation, side, str(times)).stderr
        instructions = re.search(r"^instructions: (\d+)$", text, re.M)
        if not instructions:
            sys.exit(f"{operation} was not counted:\n{text[-2000:]}")
        calls = {self.calls[int(number)]: int(count) / times for number, count in re.findall(r"^call (\d+): (\d+)$", text, re.M)}
        return round(int(instructions[1]) / times), {
            call: number for call, number in sorted(calls.items()) if call not in OF_THE_ALLOCATOR}


def count_all(processors, operations, sides):
    """{(processor, operation, side): (instructions, calls)}; nothing for a side that an operation does not have."""
    jobs = [(processor, operation, side) for processor in processors for operation, has in operations.items()
            for side in sides if side in has]
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        counts = pool.map(lambda job: job[0].count(*job[1:]), jobs)
        return {(job[0].name, *job[1:]): count for job, count in zip(jobs, counts)}


def read_record():
    record = {}
    for line in RECORD.read_text().splitlines() if RECORD.exists() else ():
        if line and not line.startswith("#"):
            processor, operation, instructions, *calls = line.split()
            record[processor, operation, "module"] = (
                int(instructions), {call: float(number) for call, number in (word.split(":") for word in calls)})
    return record


def write_record(counts):
    lines = [f"{processor}  {operation:26} {instructions:11}  {calls_text(calls)}".rstrip() + "\n"
             for (processor, operation, _), (instructions, calls) in counts.items()]
    RECORD.write_text(HEADER + "".join(lines))


def calls_text(calls):
    return " ".join(f"{call}:{number:.10g}" for call, number in calls.items())


def within(number, recorded):
    return abs(number - recorded) <= MARGIN * recorded


def differences(counts, record):
    for key in sorted(counts.keys() | record.keys()):
        where = f"{key[0]} {key[1]}"
        if key not in counts or key not in record:
            yield f"{where}: {'not recorded' if key in counts else 'recorded, but the operation no longer exists'}"
            continue
        (instructions, calls), (recorded, recorded_calls) = counts[key], record[key]
        if not within(instructions, recorded):
            yield (f"{where}: {instructions:,} instructions, but {recorded:,} are recorded "
                   f"({100 * (instructions / recorded - 1):+.1f} %)")
        for call in sorted(calls.keys() | recorded_calls.keys()):
            if not within(calls.get(call, 0), recorded_calls.get(call, 0)):
                yield f"{where}: {calls.get(call, 0):g} x {call}, but {recorded_calls.get(call, 0):g} are recorded"


def steep_growth(counts):
    for (processor, operation, side), (instructions, calls) in counts.items():
        name, _, size = operation.rpartition("/")
        small = counts.get((processor, f"{name}/{int(size) // 10}", side)) if operation.startswith(GROWING) else None
        if not small:
            continue
        if instructions > MOST_GROWTH * small[0]:
            yield (f"{processor} {operation}: {instructions / small[0]:.1f} times the instructions of a tenth of the "
                   f"size; more than {MOST_GROWTH} is not linear growth")
        if sum(calls.values()) > MOST_GROWTH * sum(small[1].values()):
            yield f"{processor} {operation}: more than {MOST_GROWTH} times the system calls of a tenth of the size"


def print_beside(counts):
    print(f"{'Instructions of one operation':33} {'module':>11} {'by hand':>11} {'bare':>11}  {'/ hand':>7} {'/ bare':>7}"
          "  the module's system calls")
    for (processor, operation, side), (instructions, calls) in counts.items():
        if side == "module":
            beside = [counts.get((processor, operation, other), (0,))[0] for other in SIDES[1:]]
            print(f"{processor} {operation:27} {instructions:11,}", *(f"{n:11,}" if n else f"{'-':>11}" for n in beside),
                  "", *(f"{instructions / n:7.3f}" if n else f"{'-':>7}" for n in beside), "", calls_text(calls))


def main():
    parser = argparse.ArgumentParser(prog="scripts/counts", description=__doc__)
    how = parser.add_mutually_exclusive_group()
    how.add_argument("--update", action="store_true", help="record the current counts")
    how.add_argument("--beside", action="store_true", help="also show what the same work costs without the module")
    for name in PROCESSORS:
        parser.add_argument(f"--{name}", nargs=3, metavar=("PROGRAM", "PLUGIN", "ROOT"), required=True, help=argparse.SUPPRESS)
    options = parser.parse_args()
    processors = [Processor(name, *vars(options)[name]) for name in PROCESSORS]
    operations = {}
    for line in processors[0].run("--rows").stdout.splitlines():
        operation, *sides = line.split()
        operations[operation] = sides
    counts = count_all(processors, operations, SIDES if options.beside else SIDES[:1])
    if options.beside:
        return print_beside(counts)
    findings = list(steep_growth(counts))
    if options.update and not findings:
        write_record(counts)
        print(f"{RECORD.name} has the counts of {len(counts)} operations.")
        return None
    findings += [] if options.update else differences(counts, read_record())
    for finding in findings:
        print(finding)
    if findings:
        sys.exit("FAILED: the costs of the module differ from the record. If this is intended: scripts/counts --update")
    print(f"OK: {len(counts)} operations match the record within {100 * MARGIN:.0f} %.")
    return None


if __name__ == "__main__":
    main()
