#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Turns the results of a run into tables that a person can read, and into a plot.
Reads side_by_side.json, counts.json and memory.json from FOLDER; writes report.txt, plot.dat and plot.svg there and
prints the report. gnuplot draws."""
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
PEERS = {"sqlite": "SQLite", "lmdb": "LMDB", "qsettings": "QSettings"}


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
        bare, other = row["label"].split(";")
        beside = f"; {row['ratio_other']:.2f} against {other}" if other else ""
        spread = sorted(run["ratio"] for run in row["runs"])
        lines.append([title, time_text(row["module_ns"]), time_text(row["bare_ns"]), f"{row['ratio']:.3f}",
                      f"{spread[0]:.2f}-{spread[-1]:.2f}", f"{row['target']:.2f}",
                      "met" if row["ratio"] <= row["target"] else "NOT MET", f"{bare}{beside}"])
    return table(["CPU time of one operation", "module", "bare", "ratio", "runs", "target", "", "bare calls"], lines)


def growth_table(rows):
    lines = []
    for name, title in (("start_up", "start-up"), ("change_among_blocks", "one change, last block")):
        times = [rows[f"cpu/{name}/{count}"]["module_ns"] for count in (10, 100, 1000, 10000)]
        lines.append([title, *map(time_text, times), f"{times[-1] / times[0]:.0f} times"])
    return table(["CPU time, by number of entries", "10", "100", "1,000", "10,000", "10 to 10,000"], lines)


def durable_table(rows):
    lines = []
    for name, title in (("word_change", "one word change"), ("whole_area_save", "whole-area save")):
        row = rows["durable/" + name]
        ratios = [f"{row['ratio_' + peer]:.2f} (at most {max(run['ratio_' + peer] for run in row['runs']):.2f})"
                  for peer in PEERS]
        lines.append([title, time_text(1000 * row["module_us"]), *ratios, time_text(1000 * row["module_shell_us"])])
    return table(["Wall time, synced; module / peer", "module", *PEERS.values(), "with a shell started for sync"], lines)


def memory_table(memory):
    lines = [[title, *(f"{memory[store][job] - memory['none'][job]} KiB" for store in ("module", *PEERS))]
             for job, title in (("cells", "100 word changes"), ("images", "100 whole-area saves"))]
    return table(["Peak memory beyond an idle process", "module", *PEERS.values(), ""],
                 [[*line, ""] for line in lines])


def counts_table(counts):
    lines = []
    for name, sides in counts.items():
        module, bare = sides["module"], sides["bare"]
        calls = " ".join(f"{call}:{number:g}" for call, number in sorted(module.get("calls", {}).items()))
        number = lambda side, key: f"{side[key]:,.0f}" if key in side else "-"
        ratio = f"{module['armhf'] / bare['armhf']:.2f}" if "armhf" in module else "-"
        lines.append([TITLES[name], number(module, "instructions"), number(bare, "instructions"),
                      number(module, "armhf"), number(bare, "armhf"), ratio, calls or "-"])
    return table(["Instructions of one operation", "module", "bare", "armhf module", "armhf bare", "ratio",
                  "the module's system calls"], lines)


PLOT = """set terminal svg size 1000,560 dynamic background rgb 'white' font 'sans-serif,13'
set output '{folder}/plot.svg'
set title 'CPU time of the module, as a ratio to the bare calls ({date})'
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
    parts = [main_table(rows), growth_table(rows), durable_table(rows), memory_table(read_json(folder / "memory.json")),
             counts_table(read_json(folder / "counts.json"))]
    report = f"Measured on {date}. Medians; 'runs' is from the lowest to the highest repetition.\n\n" + "\n\n".join(parts)
    (folder / "report.txt").write_text(report + "\n")
    print(report)
    draw(rows, folder, date)
    print(f"\nPlot: {folder}/plot.svg")


if __name__ == "__main__":
    main()
