#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Opens the page of "report" in a headless Chromium, as its reader would, and prints what is wrong with it.

  check_page.py INSPECTOR SOURCE_DIR SCRATCH [--pictures]

Makes a sample with tags and one with hostile names, and checks each: no message on the console; the filter shows the right
rows and no others; nothing is wider than a window of 390 or 1,400 pixels, light and dark; without script all rows are
there; on paper every page is A4, every word lies inside its page and every value is printed. With --pictures it leaves
pictures of all this in SCRATCH. Exit status: 0 fine, 1 findings, 77 no Chromium here.
"""
import argparse
import json
import pathlib
import re
import shutil
import subprocess
import sys

HOSTILE = '"><img src=x onerror=document.title=1><script>document.title=2</script>&amp;\'</title></table>'
LONG_NAME = "a_name_without_a_blank_" * 5 + ".xml"
# Measures what only a running page knows; added to a copy of the page without the ban on other scripts.
PROBE = """<script>
function shown() { return [...document.querySelectorAll('#values tbody tr')].filter(r => r.offsetHeight > 0).length }
var answer = {all: shown(), images: document.images.length, scripts: document.scripts.length,
  tooWide: document.documentElement.scrollWidth - document.documentElement.clientWidth,
  paper: getComputedStyle(document.body).backgroundColor, asked: []};
for (const words of QUESTIONS) {
  const field = document.querySelector('.filter input');
  field.value = words; field.dispatchEvent(new Event('input'));
  answer.asked.push([words, shown(), document.querySelector('.filter span').textContent]);
}
const note = document.createElement('pre'); note.id = 'answer'; note.textContent = JSON.stringify(answer);
document.body.append(note);
</script></body>"""
findings = []


def expect(fact, words):
    if not fact:
        findings.append(words)


def chromium(page, *options):
    command = ["chromium", "--headless", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage", "--hide-scrollbars",
               f"--user-data-dir={page.parent}/profile", "--enable-logging=stderr", *options, page.as_uri()]
    run = subprocess.run(command, capture_output=True, text=True, timeout=120)
    if run.returncode != 0:
        print(f"{' '.join(command)}: {run.stderr}", file=sys.stderr)
        sys.exit(2)
    return run


def make(arguments, name, project, tags, values):
    page = arguments.scratch / f"{name}.html"
    folder = arguments.scratch / name
    for words in (["import", project, values, "--output", folder],
                  ["report", project, folder, "--tags", tags, "--medium", "emmc", "--output", page, "--title",
                   "Panel 7" if name == "sample" else HOSTILE]):
        run = subprocess.run([arguments.inspector, *map(str, words)], capture_output=True, text=True)
        if run.returncode == 2:
            print(run.stderr, file=sys.stderr)
            sys.exit(2)
    return page


def hostile_inputs(scratch):
    name = HOSTILE.replace("&", "&amp;").replace("<", "&lt;").replace('"', "&quot;")
    quoted = HOSTILE.replace('"', '""')
    (scratch / LONG_NAME).write_text(
        f'<object name="p"><object name="DataRetention"><object name="{name}">'
        '<property name="addressLength" type="int32">9</property><object name="sourceAddress">'
        '<property name="Block" type="string">LW</property><property name="index" type="int32">0</property>'
        "</object></object></object></object>")
    (scratch / "hostile_tags.csv").write_text(
        f'area,address,type,name,unit\nLW,0,int16,"{quoted}","{quoted}"\nLW,1,string:12,text,\n')
    (scratch / "hostile_values.csv").write_text(
        'area,address,type,value\nLW,0,int16,5\nLW,1,string:12,<i>&lt;\nLW,8,uint16,7\n')


def answers(page, questions, *options):
    probed = page.with_name(page.stem + "_probed.html")
    text = re.sub(r"<meta http-equiv[^>]*>", "", page.read_text(), count=1)
    probed.write_text(text.replace("</body>", PROBE.replace("QUESTIONS", json.dumps(questions)), 1))
    dom = chromium(probed, *options, "--dump-dom").stdout
    found = re.search(r'<pre id="answer">(.*?)</pre>', dom, re.S)
    expect(found, f"{page.name}: the page with the probe does not run")
    return json.loads(found[1].replace("&amp;", "&").replace("&lt;", "<").replace("&gt;", ">"))


def check(arguments, page, rows, questions, printed, widths=(390, 1400)):
    plain = chromium(page, "--dump-dom")
    console = [line for line in plain.stderr.splitlines() if "CONSOLE" in line]
    expect(not console, f"{page.name}: on the console: {console}")
    expect(plain.stdout.count("<script") == 1 and "<img" not in plain.stdout, f"{page.name}: an element from a name")
    expect("http:" not in page.read_text().replace("http://www.w3.org/", ""), f"{page.name}: names the network")
    paper = set()
    for width in widths:
        for dark in (False, True):
            theme = [f"--window-size={width},1200", f"--blink-settings=preferredColorScheme={0 if dark else 1}"]
            answer = answers(page, [words for words, _ in questions], *theme)
            what = f"{page.name} at {width} pixels"
            paper.add((dark, answer["paper"]))
            expect(answer["tooWide"] <= 0, f"{what}: {answer['tooWide']} pixels are cut")
            expect(answer["all"] == rows, f"{what}: {answer['all']} rows instead of {rows}")
            expect(answer["images"] == 0 and answer["scripts"] == 2, f"{what}: an element from a name")
            for (words, wanted), (_, shown, told) in zip(questions, answer["asked"]):
                expect(shown == wanted, f'{what}: the filter "{words}" shows {shown} rows instead of {wanted}')
                expect(told == f"{wanted} of {rows}", f'{what}: the filter says "{told}"')
            if arguments.pictures:
                picture = arguments.scratch / f"{page.stem}_{width}{'_dark' if dark else ''}.png"
                chromium(page, *theme, f"--screenshot={picture}")
    expect(len(paper) == 2, f"{page.name}: light and dark are {paper}")

    pdf = page.with_suffix(".pdf")
    chromium(page, "--no-pdf-header-footer", f"--print-to-pdf={pdf}")
    boxes = subprocess.run(["pdftotext", "-bbox", pdf, "-"], capture_output=True, text=True, check=True).stdout
    pages = re.findall(r'<page width="([\d.]+)" height="([\d.]+)">(.*?)</page>', boxes, re.S)
    expect(pages, f"{pdf.name}: no page")
    for number, (width, height, words) in enumerate(pages, 1):
        expect(abs(float(width) - 595) < 2 and abs(float(height) - 842) < 2, f"{pdf.name}:{number}: not A4")
        for box in re.findall(r'<word xMin="([-\d.]+)" yMin="([-\d.]+)" xMax="([-\d.]+)" yMax="([-\d.]+)">', words):
            left, top, right, bottom = map(float, box)
            expect(left >= 20 and top >= 20 and right <= 575 and bottom <= 822,
                   f"{pdf.name}:{number}: a word at {box} is cut or in the margin")
    text = subprocess.run(["pdftotext", "-layout", pdf, "-"], capture_output=True, text=True, check=True).stdout
    for words in printed:
        expect(words in text, f"{pdf.name}: {words} is not printed")
    if arguments.pictures:
        subprocess.run(["pdftoppm", "-r", "60", "-png", pdf, pdf.with_suffix("")], check=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("inspector", type=pathlib.Path)
    parser.add_argument("source", type=pathlib.Path)
    parser.add_argument("scratch", type=pathlib.Path)
    parser.add_argument("--pictures", action="store_true")
    arguments = parser.parse_args()
    if not shutil.which("chromium") or not shutil.which("pdftotext"):
        print("needs chromium and pdftotext: scripts/bootstrap report_page")
        sys.exit(77)
    arguments.scratch = arguments.scratch.resolve()
    shutil.rmtree(arguments.scratch, ignore_errors=True)
    arguments.scratch.mkdir(parents=True)
    examples = arguments.source / "examples"

    sample = make(arguments, "sample", examples / "address_ranges.xml", examples / "address_ranges_tags.csv",
                  examples / "address_ranges_values.csv")
    check(arguments, sample, 10, [("temp", 1), ("LW pcs", 2), ("nothing of this", 0), ("BIT", 3), ("", 10)],
          ["temperature", "21.5", "Mix 7", "Flash wear", "123456"])
    hostile_inputs(arguments.scratch)
    hostile = make(arguments, "hostile", arguments.scratch / LONG_NAME, arguments.scratch / "hostile_tags.csv",
                   arguments.scratch / "hostile_values.csv")
    check(arguments, hostile, 3, [("<script>", 2), ("<i>&lt;", 1)], ["<i>&lt;"], [390])
    for finding in findings:
        print(finding)
    print(f"{'FAILED' if findings else 'OK'}: {len(findings)} findings about 2 pages.")
    sys.exit(1 if findings else 0)


if __name__ == "__main__":
    main()
