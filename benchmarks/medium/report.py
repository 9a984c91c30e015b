#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Turns the counts of measure.py into a table and a plot, and reports where the module costs more than a transactional store.
Reads results.json from FOLDER; writes report.txt and plot.svg there and prints the report."""
import json
import subprocess
import sys
from pathlib import Path

NAMES = {"module": "module", "module_files": "module, its files", "sqlite": "SQLite", "lmdb": "LMDB", "qsettings": "QSettings",
         "two_files": "two files", "fdatasync": "fdatasync", "dsync": "O_DSYNC"}
TRANSACTIONAL = ("sqlite", "lmdb", "qsettings", "two_files")
HEADER = f"{'':15} {'':21} " + " ".join(f"{name:>17}" for name in NAMES.values()) + "  more than"


def title(row):
    what = f"{row['cells']:,} cell{'s' if row['cells'] > 1 else ''}" if row["cells"] else "save"
    return what + (", log" if row["log"] else "") + (", now and then" if row["pause"] else "")


def cell(row):
    """Bytes, requests and flushes; on flash bytes, programmed pages and erasures."""
    if row is None:
        return "-"
    size = f"{row['bytes'] / 1024:.1f}K" if row["bytes"] >= 1000 else f"{row['bytes']:.0f}"
    return f"{size}/{row['requests']:.1f}/{row['erasures'] if 'erasures' in row else row['flushes']:.2f}"


def costlier(module, peer):
    """A flush is one that is not waited for now and then, which is left out."""
    waits = "erasures" if "erasures" in module else "flushes"
    return module["bytes"] > peer["bytes"] or module[waits] > peer[waits] + 0.5


def table(groups):
    for (storage, what), stores in groups.items():
        peers = [NAMES[peer] for peer in TRANSACTIONAL if peer in stores and costlier(stores["module"], stores[peer])]
        yield f"{storage:19} {what:17} " + " ".join(f"{cell(stores.get(store)):>17}" for store in NAMES) + f"  {', '.join(peers)}"


PLOT = """set terminal svg size 1100,560 dynamic background rgb 'white' font 'sans-serif,13'
set output '{folder}/plot.svg'
set title 'Bytes that reach the medium for one change of one of 10 cells'
set style data histogram
set style histogram clustered gap 1
set style fill solid 0.8 border -1
set logscale y
set ylabel 'bytes'
set grid ytics
set xtics rotate by -30 nomirror
set key outside right
plot for [i=2:{last}] '{folder}/plot.dat' using i:xtic(1) title columnheader(i)
"""


def draw(groups, folder):
    lines = ["storage " + " ".join(f'"{name}"' for name in NAMES.values())]
    lines += [f'"{storage}" ' + " ".join(f"{stores[store]['bytes']:.0f}" if store in stores else "?" for store in NAMES)
              for (storage, what), stores in groups.items() if what == "10 cells"]
    (folder / "plot.dat").write_text("\n".join(lines) + "\n")
    subprocess.run(["gnuplot"], input=PLOT.format(folder=folder, last=len(NAMES) + 1), text=True, check=True)


def main():
    folder = Path(sys.argv[1])
    groups = {}
    for row in json.loads((folder / "results.json").read_text()):
        groups.setdefault((row["storage"], title(row)), {})[row["store"]] = row
    text = "\n".join((
        "What one change of one of so many cells, or one save of three images, writes: bytes/requests/flushes;",
        "on UBIFS bytes/programmed pages/erasures of 256 KiB.", "", HEADER, *table(groups), "",
        "log: another program's log gets a line of 128 bytes before each change. now and then: a change each 1.2 s,",
        "otherwise one after the other. more than: peers that keep whole transactions with fewer bytes, flushes or erasures."))
    (folder / "report.txt").write_text(text + "\n")
    print(text)
    draw(groups, folder)


if __name__ == "__main__":
    main()
