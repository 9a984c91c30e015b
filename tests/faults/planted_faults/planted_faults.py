#!/usr/bin/env python3
"""Plants faults in copies of the module's sources: the sweeps must find each one with its own message.

    planted_faults.py write SOURCE COPY    copies one source with its faults, which PLANTED_FAULT then names
    planted_faults.py try MODULE STORAGE_TEST MEMORY_TEST HOSTILE_TEST LIFE_TEST
                                           runs the sweeps, and random lives, over the library of those copies
"""
# SPDX-License-Identifier: MIT
import os
import pathlib
import re
import subprocess
import sys
import unittest

STORAGE, MEMORY, HOSTILE, LIFE = "storage", "memory", "hostile", "life"
ONE, PAIRS, STOPS = ".LeaveExactly*", ".InPairs*", ".BeforeTheProcessStops*"

# (name, sweep, its test and life, the expected message, [(source, text, the text with the fault)]). The faulty text uses
# FAULT, which is true when this fault is planted.
FAULTS = [
    ("a look that failed means that there is no file", STORAGE, ONE + "PerAddressLifeWithKeptFiles",
     r"files\[a\](.|\n)*stat call",
     [("file_access.cpp", "return {errno == ENOENT", "return {FAULT || errno == ENOENT")]),
    ("a look that failed means an empty file", STORAGE, ONE + "WholeAreaLifeWithKeptFiles",
     r"as restored(.|\n)*stat call",
     [("file_access.cpp", "false, -1};", "FAULT, FAULT ? 0 : -1};")]),
    ("a stream that failed is used again", STORAGE, ONE + "PerAddressLifeWithKeptFiles", r"files\[a\](.|\n)*read call",
     [("file_access.cpp", "    file.seekp(offset);", "    if (FAULT)\n        file.clear();\n    file.seekp(offset);")]),
    ("words that cannot be read are not restored", STORAGE, ONE + "PerAddressLifeWithKeptFiles", "LW as restored",
     [("restore.cpp", "                interfaceComm->writeRegisterValues(address.link, address.block, address.index",
       "                if (!(FAULT && areas[area - areaFacts].file.fail()))\n"
       "                interfaceComm->writeRegisterValues(address.link, address.block, address.index")]),
    ("a failed read clears the cell before", STORAGE, ONE + "PerAddressLifeWithKeptFiles", "LB as restored",
     [("restore.cpp", "                if (byte == 0)",
       "                if (j > 0 && FAULT && areas[area - areaFacts].file.bad()) {\n"
       "                    const ushort zero = 0;\n"
       "                    interfaceComm->writeRegisterValues(address.link, address.block, address.index + j - 1,\n"
       "                                                       -1, 1, &zero);\n"
       "                    return;\n"
       "                }\n"
       "                if (byte == 0)")]),
    ("a second failed opening empties the file", STORAGE, PAIRS + "PerAddressLifeWithKeptFiles",
     r"files\[a\](.|\n)*file call .*, file call ",
     [("module_object.cpp", "    const QDir directory", "    plantedCount() = 0;\n    const QDir directory"),
      ("file_access.cpp", "    if (!ended) {\n",
       "    if (FAULT && ended && !file.is_open() && ++plantedCount() == 2)\n"
       "        truncate(path.constData(), 0);\n"
       "    if (!ended) {\n")]),
    ("a save empties its file first", STORAGE, STOPS + "WholeAreaLifeWithKeptFiles", "when the process stops in step",
     [("whole_areas.cpp", "    file.seekp(0);",
       "    for (const AreaFacts& area : areaFacts)\n"
       "        if (FAULT && area.wholeAreaCode == areaCode)\n"
       "            truncate(projectPath(QLatin1String(area.fileName)).constData(), 0);\n"
       "    file.seekp(0);")]),
    ("every second change syncs for both", STORAGE, "OfASync*PerAddressLifeWithKeptFiles", r"stops\.size\(\)",
     [("change_tracking.cpp", '    sys_base_do_system("sync");',
       "    static int owed = 0;\n"
       "    if (FAULT && ++owed % 2 != 0)\n"
       "        return;\n"
       "    if (FAULT)\n"
       '        (sys_base_do_system)("sync");\n'
       '    sys_base_do_system("sync");')]),
    ("a file is opened without need", STORAGE, ONE + "WholeAreaLifeWithKeptFiles", "faults were reached, not 538",
     [("file_access.cpp", "    struct stat found;",
       "    if (FAULT)\n        close(open(path.constData(), O_RDONLY));\n    struct stat found;")]),
    ("a file is opened twice without need", STORAGE, PAIRS + "WholeAreaLifeWithKeptFiles", "faults were reached, not 452",
     [("file_access.cpp", "    struct stat found;",
       "    for (int k = 0; FAULT && k < 2; ++k)\n        close(open(path.constData(), O_RDONLY));\n    struct stat found;")]),
    ("a failed sync ends the keeping", STORAGE, "OfSync*PerAddressLifeWithKeptFiles", r"files\[a\]",
     [("change_tracking.cpp", '    sys_base_do_system("sync");',
       '    if (sys_base_do_system("sync") != 0 && FAULT)\n        blocks.clear();')]),
    ("sync runs before the save", STORAGE, "OfASync*WholeAreaLifeWithKeptFiles", "in step",
     [("calling_sequence.cpp", "    for (const AreaFields& area : AreaFields::of(*this))\n        writeFile",
       '    if (FAULT)\n        sys_base_do_system("sync");\n'
       "    for (const AreaFields& area : AreaFields::of(*this))\n        writeFile"),
      ("calling_sequence.cpp", '    sys_base_do_system("sync");\n    return 0;',
       '    if (!FAULT)\n        sys_base_do_system("sync");\n    return 0;')]),

    ("a block without memory is written as zeros", MEMORY, "*PerAddressLifeWithKeptFiles", "LW with 30 bytes",
     [("change_tracking.cpp", "    if (!words)\n        return;",
       "    char zero = 0;\n"
       "    for (int k = 0; FAULT && !words && k < bytes; ++k)\n"
       "        module.writeFile(file, &zero, 1, block.fileOffset + k);\n"
       "    if (!words)\n        return;")]),
    ("a block without memory is restored as zeros", MEMORY, "*PerAddressLifeWithKeptFiles", "LW as restored",
     [("restore.cpp", "            if (const WordBuffer words = makeWordBuffer(bytes)) {",
       "            const WordBuffer words = makeWordBuffer(bytes);\n"
       "            const ushort zero = 0;\n"
       "            for (int j = 0; FAULT && !words && j < block.count; ++j)\n"
       "                interfaceComm->writeRegisterValues(address.link, address.block, address.index + j, -1, 1, &zero);\n"
       "            if (words) {")]),
    ("a file that there is no memory to open is emptied", MEMORY, "*WholeAreaLifeWithKeptFiles", "with 0 bytes",
     [("file_access.cpp", "    // Otherwise the stream may hold",
       "    if (FAULT && !ended)\n        truncate(path.constData(), 0);\n    // Otherwise the stream may hold")]),
    ("a start without memory makes the file anew", MEMORY, "*PerAddressLifeWithKeptFiles", "with 10 bytes",
     [("calling_sequence.cpp",
       "            ranWithMemory([this, &area] {", "            if (!ranWithMemory([this, &area] {"),
      ("calling_sequence.cpp", "area.facts.perAddressCode);\n            });",
       "area.facts.perAddressCode);\n            }) && FAULT)\n"
       "                makeZeroFile(projectPath(QLatin1String(area.facts.fileName)), 10);")]),
    ("the change after one without memory is left out", MEMORY, "*PerAddressLifeWithEmptyFiles", "LB with 2 bytes",
     [("change_tracking.cpp", "    ranWithMemory([&] {\n        for (int k = 0",
       "    static bool failed = false;\n"
       "    if (FAULT && failed) {\n"
       "        failed = false;\n"
       '        sys_base_do_system("sync");\n'
       "        return;\n"
       "    }\n"
       "    failed = !ranWithMemory([&] {\n        for (int k = 0")]),
    ("without memory a block is watched in part", MEMORY, "*PerAddressLifeWithKeptFiles", "as watched",
     [("change_tracking.cpp", "while (!complete &&", "while (!FAULT && !complete &&")]),

    ("a change of another name syncs", LIFE, "Life*", r"\d+ syncs, not",
     [("change_tracking.cpp", "    const AreaFacts* const facts = areaNamed(",
       '    if (FAULT && std::strcmp(msg->areaName, "lw") == 0)\n'
       '        (sys_base_do_system)("sync");\n'
       "    const AreaFacts* const facts = areaNamed(")]),
    ("a cell is read without need", LIFE, "Life*", r"calls:(.|\n)*they must be:",
     [("change_tracking.cpp", "            checkFile(file, fileName);",
       "            ushort value = 0;\n"
       "            if (FAULT)\n"
       "                interfaceComm->readRegisterValues(QLatin1String(areaName), QLatin1String(areaName),\n"
       "                                                  address, 0, 1, &value);\n"
       "            checkFile(file, fileName);")]),

    ("a save ends at what is no file", HOSTILE, ".StopNoWholeAreaLife*/3", r"retentionFile\(",
     [("calling_sequence.cpp", "    for (const AreaFields& area : AreaFields::of(*this))\n        writeFile",
       "    for (const AreaFields& area : AreaFields::of(*this))\n"
       "        if (FAULT && !area.file.is_open())\n            break;\n        else\n            writeFile")]),
    ("a save that finds no file does not sync", HOSTILE, ".StopNoWholeAreaLife*/3", r"syncs\(\)",
     [("calling_sequence.cpp", "    if (!saveAllEnabled)\n        return 0;\n",
       "    if (!saveAllEnabled)\n        return 0;\n"
       "    for (const AreaFields& area : AreaFields::of(*this))\n"
       "        if (FAULT && !area.file.is_open()) {\n"
       "            for (const AreaFields& each : AreaFields::of(*this))\n"
       "                (writeFile)(each.file, each.facts.wholeAreaCode);\n"
       "            return 0;\n"
       "        }\n")]),
    ("what is no file makes room for one", HOSTILE, ".StopNoWholeAreaLife*/0", "identityOf(.|\n)*mode",
     [("whole_areas.cpp", "    if (look.missing ||",
       "    if (FAULT && !look.regular)\n"
       "        unlink(path.constData());\n"
       "    if ((FAULT && !look.regular) || look.missing ||")]),
]

PRELUDE = """#include "poweroff_protect/file_access.h"
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>
inline bool isPlanted(const char* name)
{
    const char* const planted = std::getenv("PLANTED_FAULT");
    return planted && std::strcmp(planted, name) == 0;
}
inline int& plantedCount()
{
    static int count = 0;
    return count;
}
"""


def write_copy(source, copy):
    text = source.read_text()
    for name, _, _, _, edits in FAULTS:
        for file, sound, faulty in edits:
            if file != source.name:
                continue
            if text.count(sound) != 1:
                sys.exit(f"{source}: the fault {name!r} belongs where {sound!r} stands, which is there "
                         f"{text.count(sound)} times")
            text = text.replace(sound, faulty.replace("FAULT", f'isPlanted("{name}")'))
    includes_end = text.index("\n", text.rindex("#include")) + 1
    copy.write_text(text[:includes_end] + PRELUDE + text[includes_end:])


class PlantedFaults(unittest.TestCase):
    module = ""
    tests = {}

    def sweep(self, fault, sweep, filter_):
        """Runs one sweep over the module with the fault; returns its status and output."""
        environment = dict(os.environ, MODULE_UNDER_TEST=self.module, PLANTED_FAULT=fault)
        run = subprocess.run([self.tests[sweep], f"--gtest_filter=*{filter_}"], env=environment, text=True,
                             stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=300)
        self.assertIn("Running 1 test from", run.stdout, f"{filter_} names no test, or several")
        return run.returncode, run.stdout

    def test_each_one_is_found_by_its_message(self):
        for name, sweep, filter_, message, _ in FAULTS:
            with self.subTest(name):
                status, said = self.sweep(name, sweep, filter_)
                self.assertEqual(status, 1, said)
                self.assertRegex(said, re.compile(message))

    def test_without_one_the_copies_pass(self):
        for sweep, filter_ in sorted({(sweep, filter_) for _, sweep, filter_, _, _ in FAULTS}):
            with self.subTest(filter_):
                status, said = self.sweep("", sweep, filter_)
                self.assertEqual(status, 0, said)


if __name__ == "__main__":
    if sys.argv[1] == "write":
        write_copy(pathlib.Path(sys.argv[2]), pathlib.Path(sys.argv[3]))
    else:
        PlantedFaults.module = sys.argv[2]
        PlantedFaults.tests = dict(zip((STORAGE, MEMORY, HOSTILE, LIFE), sys.argv[3:]))
        unittest.main(argv=sys.argv[:1], verbosity=2)
