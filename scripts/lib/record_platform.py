#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes what was built and run for a platform into its row of docs/supported_platforms.md.

  record_platform.py PLATFORM --built TEXT --how TEXT [--results FILE...] [--outcome TEXT]

FILE is the output of ctest --output-junit; several are added up. TEXT replaces the numbers of tests where there is no test
runner. The rows are between "<!-- results -->" and "<!-- end of results -->"; a new platform's comes last.
"""
import argparse
import datetime
import pathlib
import subprocess
import xml.etree.ElementTree

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
PAGE = ROOT / "docs" / "supported_platforms.md"
BEGIN, END = "<!-- results -->\n", "<!-- end of results -->\n"


def git(*arguments):
    return subprocess.run(["git", *arguments], cwd=ROOT, check=True, capture_output=True, text=True).stdout.strip()


def numbers(files):
    """The totals of all test runs: passed of run, and skipped."""
    run = failed = skipped = 0
    for file in files:
        if not pathlib.Path(file).exists():
            raise SystemExit(f"{file}: missing, so the tests did not finish; nothing was recorded.")
        suite = xml.etree.ElementTree.parse(file).getroot()
        run += int(suite.get("tests"))
        failed += int(suite.get("failures"))
        skipped += int(suite.get("skipped")) + int(suite.get("disabled", 0))
    if run == 0:
        raise SystemExit(f"{', '.join(files)}: no tests were run; nothing was recorded.")
    return f"{run - failed - skipped} of {run}" + (f", {skipped} skipped" if skipped else "")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("platform")
    parser.add_argument("--built", required=True)
    parser.add_argument("--how", required=True)
    parser.add_argument("--results", nargs="+")
    parser.add_argument("--outcome")
    arguments = parser.parse_args()

    outcome = arguments.outcome or numbers(arguments.results)
    # Building changes nothing in the repository, so any change was made by hand and is mentioned.
    changed = git("status", "--porcelain", "--untracked-files=no", "--", ".", f":!{PAGE.relative_to(ROOT)}")
    when = f"{datetime.date.today()}, {git('rev-parse', '--short=8', 'HEAD')}" + (" with changes" if changed else "")
    cells = [arguments.platform, arguments.built, outcome, arguments.how, when]
    row = "| " + " | ".join(cells) + " |\n"

    before, rest = PAGE.read_text().split(BEGIN)
    table, after = rest.split(END)
    rows = table.splitlines(keepends=True)
    for number, old in enumerate(rows):
        if old.startswith(f"| {arguments.platform} |"):
            rows[number] = row
            break
    else:
        rows.append(row)
    PAGE.write_text(before + BEGIN + "".join(rows) + END + after)
    print(f"{arguments.platform}: {outcome}. Recorded in {PAGE.relative_to(ROOT)}.")


main()
