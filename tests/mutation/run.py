#!/usr/bin/env python3
# Builds the module with one mutation at a time, runs the tests over each, and names the mutants that all of them pass.
# SPDX-License-Identifier: MIT
import argparse
import concurrent.futures
import glob
import hashlib
import json
import os
import re
import resource
import shlex
import shutil
import subprocess
import sys
import threading
import time

import mutants

BUILD = "build/release"
WORK = "build/mutation"
LIBRARY = "poweroff_protect/libpoweroff_protect.so"
TABLE = "tests/mutation/survivors.txt"
# What the other programs find is also found by these, or does not concern the module.
PROGRAMS = ["tests/*_test", "tests/small_worlds/*_test", "tests/faults/*_test"]
NOT_THE_MODULE = {"panel_simulator_test", "path_mapping_test", "project_reader_test", "simulated_panel_test"}
# The largest sizes of small worlds: the smaller ones find the same mutants.
LEFT_OUT = "-EveryList.OfFour*:EveryList.OfThree*:*EverySequence.OfMore*"
# These take long, and in pure rules find only what the others find.
SWEEPS = {"memory_faults_test", "storage_faults_test"}
PURE_RULES = re.compile(r"define_header/|/(area_facts|maintenance_file_info|partition|placement|retention_settings|wrapping)\.")


def run(command, seconds=600, **options):
    """Exit status and output; None after that many seconds. Limits runaway mutants to 4 GB of memory and 1 GB per file."""

    def limit():
        resource.setrlimit(resource.RLIMIT_AS, (4 << 30, 4 << 30))
        resource.setrlimit(resource.RLIMIT_FSIZE, (1 << 30, 1 << 30))

    process = subprocess.Popen(
        command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, errors="replace", preexec_fn=limit,
        start_new_session=True, **options)
    try:
        output, _ = process.communicate(timeout=seconds)
        return process.returncode, output
    except subprocess.TimeoutExpired:
        os.killpg(process.pid, 9)
        process.communicate()
        return None, ""


class Builder:
    """The compiler's and linker's commands, taken from the release build of the module."""

    def __init__(self):
        top = os.getcwd()
        database = json.loads(self.ninja("compdb"))
        objects = shlex.split(self.ninja("commands", "-s", LIBRARY).replace(": && ", "").replace(" && :", ""))
        self.link = objects
        self.objects = [word for word in objects if word.endswith(".o")]
        self.compile = {}
        for entry in database:
            if entry.get("output") in self.objects and " -c " in entry["command"]:
                command = shlex.split(entry["command"])
                # No launcher: mutants would only fill its cache. A mutant may compile with warnings.
                command = command[next(k for k, word in enumerate(command) if word.endswith("/c++")) :]
                self.compile[entry["output"]] = [word for word in command if word != "-Werror"] + ["-w"]
        if set(self.compile) != set(self.objects):
            sys.exit("The build's commands could not be read.")
        self.source = {name: os.path.relpath(command[command.index("-c") + 1], top)
                       for name, command in self.compile.items()}
        self.headers = {name: self.headers_of(name) for name in self.objects}

    @staticmethod
    def ninja(*words):
        return subprocess.run(["ninja", "-C", BUILD, "--quiet", "-t", *words], check=True, capture_output=True, text=True).stdout

    def headers_of(self, name):
        """What the object's source includes, also through precompiled headers."""
        command = self.alone(self.compile[name])
        command = command[: command.index("-o")] + ["-MM", "-MF", "-", command[command.index("-c") + 1]]
        text = subprocess.run(command, check=True, capture_output=True, text=True, cwd=BUILD).stdout
        return {os.path.relpath(os.path.join(BUILD, word)) for word in text.replace("\\\n", " ").split()[1:]}

    @staticmethod
    def alone(command):
        """The command without precompiled headers and lists of dependencies."""
        result = []
        words = iter(command)
        for word in words:
            if word in ("-include", "-MT", "-MF"):
                next(words)
            elif word not in ("-Winvalid-pch", "-MD"):
                result.append(word)
        return result

    def object_of(self, name, folder, output):
        """Compiles an object with the folder's sources instead of the tree's; None when it does not compile."""
        mutated = os.path.join(folder, self.source[name])
        command = self.compile[name]
        if not os.path.exists(mutated):  # then the mutant is in a header
            command = self.alone(command)
            mutated = self.source[name]
        command = list(command)
        command[command.index("-o") + 1] = output
        command[command.index("-c") + 1] = os.path.abspath(mutated)
        if "-MF" in command:
            command[command.index("-MF") + 1] = output + ".d"
        command[1:1] = ["-I" + folder]
        status, _ = run(command, cwd=BUILD)
        if status != 0:
            return None
        with open(output, "rb") as file:
            return file.read()

    def library(self, folder, path, text, originals):
        """Builds the library with that text for that file. Returns its path, or a word when there is nothing to test."""
        os.makedirs(os.path.join(folder, os.path.dirname(path)), exist_ok=True)
        with open(os.path.join(folder, path), "w", encoding="utf-8") as file:
            file.write(text)
        try:
            replaced = {}
            for number, name in enumerate(self.objects):
                if path != self.source[name] and path not in self.headers[name]:
                    continue
                replaced[name] = os.path.join(folder, f"{number}.o")
                made = self.object_of(name, folder, replaced[name])
                if made is None:
                    return "does not compile"
                if made == originals[name, path.endswith(".h")]:
                    del replaced[name]
            if not replaced:
                return "same code"
            library = os.path.join(folder, "libpoweroff_protect.so")
            command = [replaced.get(word, word) for word in self.link]
            command[command.index("-o") + 1] = library
            status, output = run(command, cwd=BUILD)
            if status != 0:
                sys.exit(f"The library could not be linked.\n{output}")
            return library
        finally:
            os.remove(os.path.join(folder, path))


class Tests:
    """The test programs: first the one that found the file's last mutant, then the others, quickest first."""

    def __init__(self):
        self.programs = sorted(
            program for pattern in PROGRAMS for program in glob.glob(os.path.join(BUILD, pattern))
            if os.path.basename(program) not in NOT_THE_MODULE)
        if not self.programs:
            sys.exit("There are no test programs: scripts/mutation builds them.")
        self.seconds = {}
        self.last = {}

    def run_one(self, program, library, folder):
        environment = dict(os.environ, MODULE_UNDER_TEST=library, LD_LIBRARY_PATH=os.path.dirname(library),
                           TMPDIR=folder, TEST_LIVES="30")
        seconds = 20 + 10 * self.seconds.get(program, 60)
        return run([os.path.abspath(program), "--gtest_fail_fast", "--gtest_brief=1", "--gtest_filter=" + LEFT_OUT], seconds,
                   cwd=folder, env=environment)

    def measure(self, library, folder):
        """Checks that all of them pass on the unchanged module."""
        for program in self.programs:
            begin = time.monotonic()
            status, output = self.run_one(program, library, folder)
            self.seconds[program] = time.monotonic() - begin
            if status != 0:
                sys.exit(f"{program} fails on the unchanged module:\n{output[-3000:]}")
        self.order = sorted(self.programs, key=self.seconds.get)

    def finder(self, path, library, folder):
        """The first failing test, with its program; None when all pass."""
        first = [self.last[path]] if path in self.last else []
        for program in dict.fromkeys(first + self.order):
            if PURE_RULES.search(path) and os.path.basename(program) in SWEEPS:
                continue
            status, output = self.run_one(program, library, folder)
            if status != 0:
                self.last[path] = program
                failed = re.search(r"\[  FAILED  \] (\S+)", output)
                why = failed.group(1) if failed else "no end" if status is None else f"status {status}"
                return f"{os.path.basename(program)}: {why}"
        return None


def key_of(mutant):
    return f"{mutant.path}\n- {mutant.before}\n+ {mutant.after}" + (f"\n# {mutant.number}" if mutant.number > 1 else "")


def read_table():
    """The reason for each mutant in the table; several mutants may share the reason that follows them."""
    reasons = {}
    waiting = []
    path = None
    with open(TABLE, encoding="utf-8") as file:
        for line in file.read().splitlines():
            if line.startswith("- "):
                waiting.append(f"{path}\n{line}")
            elif line.startswith(("+ ", "# ")) and waiting:
                waiting[-1] += "\n" + line
            elif line.startswith("= "):
                reasons |= dict.fromkeys(waiting, line)
                waiting = []
            elif line and not line.startswith("#"):
                path = line
    if waiting:
        sys.exit(f"{TABLE}: the last mutants have no reason.")
    return reasons


def fingerprint(paths):
    digest = hashlib.sha256()
    for path in sorted(paths):
        with open(path, "rb") as file:
            digest.update(hashlib.sha256(file.read()).digest())
    return digest.hexdigest()


def earlier_results(sources, programs, again):
    """The results of a stopped run, if neither the module nor the tests have changed since. With `again`, only the module
    must be the same, and survivors are tried once more."""
    path = os.path.join(WORK, "results")
    marks = [fingerprint(sources), fingerprint(programs)]
    results = {}
    if os.path.exists(path):
        with open(path, encoding="utf-8") as file:
            before, *lines = [json.loads(line) for line in file]
        if before == marks or (again and before[0] == marks[0]):
            results = {key: result for key, result in lines if not (again and result == "survives")}
    with open(path, "w", encoding="utf-8") as file:
        file.writelines(json.dumps(item) + "\n" for item in [marks, *map(list, results.items())])
    return results


def main():
    parser = argparse.ArgumentParser(prog="scripts/mutation")
    parser.add_argument("--jobs", type=int, default=os.cpu_count(), help="mutants at the same time")
    parser.add_argument("--again", action="store_true", help="keep earlier results, try only the survivors")
    parser.add_argument("--list", action="store_true", help="only name the mutants")
    parser.add_argument("files", nargs="*", help="only mutants of these files, or of FILE:LINE")
    arguments = parser.parse_args()

    paths = sorted(glob.glob("poweroff_protect/*.cpp") + glob.glob("poweroff_protect/*.h")
                   + glob.glob("define_header/*.cpp") + glob.glob("define_header/*.h"))
    paths = [path for path in paths if not path.endswith("_test.cpp")]
    texts = {path: open(path, encoding="utf-8").read() for path in paths}
    everything = [mutant for path in paths for mutant in mutants.mutants(path, texts[path])]
    chosen = [mutant for mutant in everything
              if not arguments.files or {mutant.path, f"{mutant.path}:{mutant.line}"} & set(arguments.files)]
    if not chosen:
        parser.error("there are no such mutants")
    if arguments.list:
        for mutant in chosen:
            print(f"{mutant.path}:{mutant.line}: {mutant.operator}\n- {mutant.before}\n+ {mutant.after}")
        print(len(chosen), "mutants")
        return 0

    reasons = read_table()
    builder = Builder()
    tests = Tests()
    os.makedirs(WORK, exist_ok=True)
    results = earlier_results(paths, tests.programs, arguments.again)
    # Last those that compile many objects: mutants of the headers that everything includes.
    compiles = {path: sum(path in {builder.source[name], *builder.headers[name]} for name in builder.objects) for path in paths}
    todo = sorted((mutant for mutant in chosen if key_of(mutant) not in results), key=lambda mutant: compiles[mutant.path])
    lock = threading.Lock()
    begin = time.monotonic()
    if todo:
        with concurrent.futures.ThreadPoolExecutor(arguments.jobs) as pool:
            first = os.path.abspath(os.path.join(WORK, "as_it_is"))
            shutil.rmtree(first, ignore_errors=True)
            os.makedirs(first)
            # The same commands on unchanged sources give the objects that "same code" is compared with.
            originals = {}

            def original(name, alone):
                folder = os.path.join(first, str(builder.objects.index(name)) + ("h" if alone else "c"))
                os.makedirs(folder)
                if not alone:
                    os.makedirs(os.path.join(folder, os.path.dirname(builder.source[name])))
                    shutil.copy(builder.source[name], os.path.join(folder, builder.source[name]))
                return builder.object_of(name, folder, os.path.join(folder, "original.o"))

            pairs = [(name, alone) for name in builder.objects for alone in (False, True)]
            for pair, made in zip(pairs, pool.map(lambda pair: original(*pair), pairs)):
                originals[pair] = made
            library = os.path.join(first, "libpoweroff_protect.so")
            shutil.copy(os.path.join(BUILD, LIBRARY), library)
            tests.measure(library, first)

            def judge(mutant):
                folder = os.path.abspath(os.path.join(WORK, str(threading.get_ident())))
                shutil.rmtree(folder, ignore_errors=True)
                os.makedirs(folder)
                text = texts[mutant.path]
                text = text[: mutant.start] + mutant.replacement + text[mutant.end :]
                result = builder.library(folder, mutant.path, text, originals)
                if result.startswith("/"):
                    found = tests.finder(mutant.path, result, folder)
                    result = f"found by {found}" if found else "survives"
                shutil.rmtree(folder, ignore_errors=True)
                with lock:
                    results[key_of(mutant)] = result
                    with open(os.path.join(WORK, "results"), "a", encoding="utf-8") as file:
                        file.write(json.dumps([key_of(mutant), result]) + "\n")
                    show(mutant, result)

            done = len(chosen) - len(todo)

            def show(mutant, result):
                nonlocal done
                done += 1
                line = f"[{done}/{len(chosen)}] {mutant.path}:{mutant.line}: {result}"
                if sys.stdout.isatty():
                    print("\r\033[K" + line[:79], end="", flush=True)
                elif done * 10 // len(chosen) > (done - 1) * 10 // len(chosen):
                    print(f"   {done} of {len(chosen)}", flush=True)

            for future in [pool.submit(judge, mutant) for mutant in todo]:
                future.result()
            if sys.stdout.isatty():
                print("\r\033[K", end="")

    # The table and what survives must be the same.
    survivors = [mutant for mutant in chosen if results[key_of(mutant)] == "survives"]
    new = [mutant for mutant in survivors if key_of(mutant) not in reasons]
    for mutant in new:
        print(f"{mutant.path}:{mutant.line}: survives, and {TABLE} gives no reason\n- {mutant.before}\n+ {mutant.after}"
              + (f"\n# {mutant.number}" if mutant.number > 1 else ""))
    known = {key_of(mutant): mutant for mutant in everything}
    stale = [key for key in reasons if key not in known or (key in results and results[key] != "survives")]
    for key in stale:
        print(f"{TABLE}: {results.get(key, 'no longer a mutant')}:\n{key}")
    counts = {word: sum(results[key_of(mutant)].startswith(word) for mutant in chosen)
              for word in ("found", "survives", "same code", "does not compile")}
    print(f"{len(chosen)} mutants: {counts['found']} found, {counts['survives']} survive "
          f"({counts['survives'] - len(new)} with a reason), {counts['same code']} compile to the same code, "
          f"{counts['does not compile']} do not compile; {time.monotonic() - begin:.0f} s")
    return 1 if new or stale else 0


if __name__ == "__main__":
    sys.exit(main())
