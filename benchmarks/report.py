#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Turns the results of a run into readable tables and a plot. Reads side_by_side.json, memory.json and, if present,
waits.json from FOLDER; writes report.txt, plot.dat and plot.svg there and prints the report. gnuplot draws the plot."""
import json
import pathlib
import subprocess
import sys

TITLES = {
    "whole_area_save": "whole-area save, 327,680 bytes", "whole_area_restore": "whole-area restore",
    "bit_change": "one bit change", "word_change/10": "one word change, block of 10",
    "word_change/1000": "one word change, block of 1,000", "bit_restore/4096": "bit restore, 4,096 addresses",
    "bit_restore/65536": "bit restore, 65,536 addresses", "word_restore/65536": "word restore, block of 65,536",
    "address_list/1000": "address list, 1,000 entries", "address_list/10000": "address list, 10,000 entries",
    "watch_list/1000": "watch list, 1,000 addresses", "watch_list/65536": "watch list, 65,536 addresses",
}
STORES = {"module": "module", "module_files": "module, its files", "sqlite": "SQLite", "lmdb": "LMDB", "qsettings": "QSettings",
          "two_files": "two files", "fdatasync": "fdatasync", "dsync": "O_DSYNC", "module_shell": "module, sync by a shell"}


def read_json(path):
    try:
        return json.loads(path.read_text())
    except (OSError, ValueError) as error:
        sys.exit(f"{path}: {error}; run scripts/bench from the start")


def medians(results):
    """Per row: the medians over the repetitions, its label, and the ratios of all repetitions."""
    rows = {}
    for result in results["benchmarks"]:
        name = result["run_name"].split("/iterations:")[0]
        row = rows.setdefault(name, {"runs": []})
        if result["run_type"] == "iteration":
            row["runs"].append(result)
            if len(row["runs"]) == 1:
                row.update(result)
        elif result["aggregate_name"] == "median":
            row.update(result)
    return rows


def time_text(nanoseconds):
    for unit, size in (("ms", 1e6), ("us", 1e3)):
        if nanoseconds >= size:
            return f"{nanoseconds / size:.2f} {unit}"
    return f"{nanoseconds:.0f} ns"


def table(header, rows):
    rows = [header, *rows]
    widths = [max(len(row[at]) for row in rows) for at in range(len(header))]
    lines = ["  ".join(cell.ljust(width) if at == 0 or at == len(header) - 1 else cell.rjust(width)
                       for at, (cell, width) in enumerate(zip(row, widths))).rstrip() for row in rows]
    return "\n".join([lines[0], "-" * len(lines[0]), *lines[1:]])


def main_table(rows):
    lines = []
    for name, title in TITLES.items():
        row = rows["cpu/" + name]
        by_hand, bare = row["label"].split(";")
        spread = sorted(run["ratio"] for run in row["runs"])
        lines.append([title, time_text(row["module_ns"]), time_text(row["by_hand_ns"]), f"{row['ratio']:.2f}",
                      f"{spread[0]:.2f}-{spread[-1]:.2f}", f"{row['target']:.2f}",
                      "met" if row["ratio"] <= row["target"] else "NOT MET",
                      f"{row['ratio_bare']:.2f}" if bare else "-", f"{by_hand}; {bare}" if bare else by_hand])
    return table(["CPU time of one operation", "module", "by hand", "ratio", "runs", "target", "", "to bare",
                  "by hand; bare"], lines)


def growth_table(rows):
    lines = []
    for name, title in (("start_up", "start-up"), ("change_among_blocks", "one change, last block")):
        times = [rows[f"cpu/{name}/{count}"]["module_ns"] for count in (10, 100, 1000, 10000)]
        lines.append([title, *map(time_text, times), f"{times[-1] / times[0]:.0f} times"])
    return table(["CPU time, by number of entries", "10", "100", "1,000", "10,000", "10 to 10,000"], lines)


def waits_table(waits):
    def at(times, share):
        return time_text(1000 * sorted(times)[min(len(times) - 1, int(share * len(times)))])
    lines = [[title, load, *(at(waits[load][store], share) for share in (0.5, 0.95, 0.999, 1)), ""]
             for load in waits for store, title in STORES.items()]
    return table(["Wall time of a change until it is kept", "", "median", "95 %", "99.9 %", "longest", ""], lines)


def memory_table(memory):
    lines = [[title, *(f"{memory[store][job] - memory['none'][job]} KiB" for job in ("cells", "images")), ""]
             for store, title in STORES.items() if store in memory]
    return table(["Peak memory of the store itself", "100 changes", "100 saves", ""], lines)


PLOT = """set terminal svg size 1000,560 dynamic background rgb 'white' font 'sans-serif,13'
set output '{folder}/plot.svg'
set title 'CPU time of the module, as a ratio to the same calls by hand ({date})'
set style fill solid 0.8 border -1
set boxwidth 0.6
set yrange [0:*]
set offsets 0, 0, 0.2, 0
set grid ytics
set ylabel 'ratio'
set xtics rotate by -35 nomirror
set bmargin 10
set rmargin 20
set key top right
plot '{folder}/plot.dat' using 0:2:xtic(1) with boxes lc rgb '#4477aa' title 'measured', \\
     '' using 0:3 with points pt 9 ps 1.4 lc rgb '#cc3311' title 'target'
"""


def draw(rows, folder, date):
    lines = [f"\"{title}\" {rows['cpu/' + name]['ratio']} {rows['cpu/' + name]['target']}"
             for name, title in TITLES.items()]
    (folder / "plot.dat").write_text("\n".join(lines) + "\n")
    subprocess.run(["gnuplot"], input=PLOT.format(folder=folder, date=date), text=True, check=True)


def main():
    if len(sys.argv) != 2:
        print(f"usage: {sys.argv[0]} FOLDER", file=sys.stderr)
        sys.exit(2)
    folder = pathlib.Path(sys.argv[1])
    results = read_json(folder / "side_by_side.json")
    rows = medians(results)
    date = results["context"]["date"][:10]
    parts = [main_table(rows), growth_table(rows)]
    if (folder / "waits.json").exists():
        parts.append(waits_table(read_json(folder / "waits.json")))
    parts.append(memory_table(read_json(folder / "memory.json")))
    report = f"Measured on {date}. Medians; 'runs' is from the lowest to the highest repetition.\n\n" + "\n\n".join(parts)
    (folder / "report.txt").write_text(report + "\n")
    print(report)
    draw(rows, folder, date)
    print(f"\nPlot: {folder}/plot.svg")


if __name__ == "__main__":
    main()
