#!/usr/bin/env python3
"""report.py TEMPLATE RESULTS OUT.md OUT.svg: makes the page and its chart of the programs' lines.

RESULTS holds a file a program and round. The columns must have come to the same; where they have not, that is printed
and the exit status is 1.
"""
import math
import os
import pathlib
import platform
import re
import statistics
import subprocess
import sys
import time

OURS = "KivDSDataU"
COLOURS = {OURS: "#c0392b", "DCMTK": "#2980b9", "GDCM": "#27ae60", "vtk-dicom": "#8e44ad"}

# work, size, unit, label
WORKS = [
    ("build and fetch", 0, "element", "build, then read every value"),
    ("build", 0, "element", "build alone (values parsed here alone)"),
    ("look up", 0, "look-up", "look up a present tag, cold"),
    ("copy", 0, "element", "deep copy"),
    ("write", 0, "element", "length, then write"),
    ("read", 0, "element", "read the stream"),
    ("read and fetch", 0, "element", "read, then read every value"),
    ("compare", 0, "element", "compare two equal collections"),
    ("unite n", 1024, "element", "union of 1,024, half shared"),
    ("destroy", 0, "element", "destroy"),
    ("series", 2000, "image", "gather and flatten 2,000 images"),
    ("frames", 1000, "frame", "complete collections of 1,000 frames"),
    ("bytes build", 65536, "KiB", "64 MiB: build"),
    ("bytes copy", 65536, "KiB", "64 MiB: copy"),
    ("bytes write", 65536, "KiB", "64 MiB: write"),
    ("bytes read", 65536, "KiB", "64 MiB: read"),
    ("bytes compare", 65536, "KiB", "64 MiB: compare"),
]
GROWTH = [
    ("elements in a collection", "element", [("build n", "build"), ("look up n", "look up"), ("compare n", "compare"),
                                             ("unite n", "union")]),
    ("values in an attribute, built and read", "value", [("values " + vr, vr)
                                                         for vr in ("DS", "IS", "DA", "TM", "PN", "UI")]),
    ("images in a series", "image", [("series", "gather and flatten")]),
    ("frames", "frame", [("frames", "complete collection")]),
    ("KiB in a value", "KiB", [("bytes " + work, work) for work in ("build", "copy", "write", "read", "compare")]),
]
# label, work, size, {column: most of its time}
RATIOS = [
    ("build, every value parsed, and read each", "build and fetch", 0, {"vtk-dicom": 0.5, "DCMTK": 0.3}),
    ("look up a present tag, cold", "look up", 0, {"GDCM": 0.5}),
    ("deep copy", "copy", 0, {"DCMTK": 0.6, "GDCM": 0.55}),
    ("write, asking for the length first", "write", 0, {"GDCM": 0.33}),
    ("read", "read", 0, {"GDCM": 0.45}),
    ("read and fetch", "read and fetch", 0, {"GDCM": 0.35}),
    ("compare two equal collections", "compare", 0, {"GDCM": 0.65}),
    ("union, half shared, 1,024 elements", "unite n", 1024, {"GDCM": 0.5}),
    ("destroy", "destroy", 0, {"GDCM": 0.6}),
    ("gather and flatten 2,000 images", "series", 2000, {"DCMTK": 0.5}),
    ("complete collection of each of 1,000 frames", "frames", 1000, {"DCMTK": 0.35}),
]
# label, work, size, size it is compared with, most
FLAT = [
    ("compare: an element of 1,024 against one of 16", "compare n", 1024, 16, 1.25),
    ("union: an element of 16,384 against one of 256", "unite n", 16384, 256, 1.25),
    ("series: an image of 4,000 against one of 250", "series", 4000, 250, 1.2),
    ("frames: a frame of 4,000 against one of 10", "frames", 4000, 10, 1.5),
]
# label, work, baseline
BASELINES = [
    ("64 MiB: write against a warm memcpy", "bytes write", "memcpy warm"),
    ("64 MiB: compare against memcmp", "bytes compare", "memcmp"),
    ("64 MiB: build against memcpy into fresh memory", "bytes build", "memcpy fresh"),
    ("64 MiB: copy against the same", "bytes copy", "memcpy fresh"),
    ("64 MiB: read against the same", "bytes read", "memcpy fresh"),
]
# label, work, most blocks
BLOCKS = [
    ("heap blocks, building an attribute with one small value", "small build", 2),
    ("heap blocks, copying one", "small copy", 2),
    ("heap blocks, reading one from a stream", "small read", 3),
    ("heap blocks, writing", "write", 0),
]


class Results:
    def __init__(self, folder):
        fastest, medians, self.blocks, self.came, self.versions = {}, {}, {}, {}, {}
        for path in sorted(pathlib.Path(folder).glob("*.tsv")):
            lines = path.read_text().splitlines()
            name, version = lines[0][2:].split("\t")
            self.versions[name] = version
            for line in lines[1:]:
                work, size, fast, median, blocks, came = line.split("\t")
                key = work, int(size), name
                fastest.setdefault(key, []).append(float(fast))
                medians.setdefault(key, []).append(float(median))
                self.blocks[key] = float(blocks)
                self.came.setdefault(key[:2], {})[name] = came
        self.times = {key: min(values) for key, values in fastest.items()}
        self.medians = {key: statistics.median(values) for key, values in medians.items()}
        self.rounds = max(map(len, fastest.values()))
        self.spread = statistics.median(self.medians[key] / time for key, time in self.times.items() if time > 1)
        self.columns = [name for name in COLOURS if name in self.versions]
        self.peers = [name for name in self.columns if name != OURS]

    def time(self, work, size, column=OURS):
        return self.times.get((work, size, column))

    def ratio(self, work, size, column):
        ours, other = self.time(work, size), self.time(work, size, column)
        return ours / other if ours is not None and other else None

    def median_ratio(self, work, size, column):
        return self.medians[work, size, OURS] / self.medians[work, size, column]

    def sizes(self, work):
        return sorted(size for w, size, column in self.times if w == work and column == OURS)

    def disagreements(self):
        return [(key, came) for key, came in self.came.items() if len(set(came.values())) > 1]


def nanoseconds(value):
    if value is None:
        return "–"
    return f"{value:,.0f}" if value >= 100 else f"{value:.3g}"


def ratio_text(value):
    return f"{value:.2f}" if value < 100 else "above 100"


def table(head, rows):
    lines = ["| " + " | ".join(head) + " |", "|---" + "|---:" * (len(head) - 1) + "|"]
    return "\n".join(lines + ["| " + " | ".join(row) + " |" for row in rows])


def times_table(results):
    rows = []
    for work, size, unit, label in WORKS:
        best = min((p for p in results.peers if results.time(work, size, p)),
                   key=lambda p: results.time(work, size, p), default=None)
        rows.append([f"{label} (ns {'an' if unit[0] in 'aei' else 'a'} {unit})"] +
                    [nanoseconds(results.time(work, size, c)) for c in results.columns] +
                    [f"{ratio_text(results.ratio(work, size, best))} ({best})" if best else "–"] +
                    [ratio_text(results.median_ratio(work, size, best)) if best else "–"])
    return table(["work"] + results.columns + ["ours / best other", "of medians"], rows)


def blocks_table(results):
    works = [("small build", "build, one small value each"), ("small copy", "copy of these"),
             ("small read", "read of these"), ("build", "build, as files have them"), ("copy", "copy"), ("write", "write"),
             ("read", "read")]
    rows = [[label] + [f"{results.blocks.get((work, 0, c), 0):.2f}" for c in results.columns] for work, label in works]
    return table(["blocks an element"] + results.columns, rows)


def targets_table(results):
    rows = []

    def add(label, target, value, met, of_medians=""):
        rows.append([label, target, value, of_medians, "met" if met else "**missed**"])

    for label, work, size, limits in RATIOS:
        for column, most in limits.items():
            ratio = results.ratio(work, size, column)
            if ratio is not None:
                add(label, f"≤ {most:g} of {column}", f"{ratio:.2f}", ratio <= most,
                    f"{results.median_ratio(work, size, column):.2f}")
    for label, work, size, small, most in FLAT:
        if results.time(work, size) and results.time(work, small):
            ratio = results.time(work, size) / results.time(work, small)
            add(label, f"≤ {most:g}", f"{ratio:.2f}", ratio <= most)
    for label, work, baseline in BASELINES:
        if results.time(work, 65536):
            ratio = results.time(baseline, 65536) / results.time(work, 65536)
            add(label, "≥ 0.95 of its speed", f"{ratio:.2f}", ratio >= 0.95)
    for label, work, most in BLOCKS:
        blocks = results.blocks[work, 0, OURS]
        add(label, f"≤ {most}", f"{blocks:.2f}", blocks <= most + 0.05)  # the collection itself has a few blocks
    return table(["work", "target", "measured", "of medians", ""], rows)


def growth_tables(results):
    parts = []
    for title, unit, works in GROWTH:
        sizes = sorted({size for work, _ in works for size in results.sizes(work)})
        rows = []
        for work, label in works:
            for column in results.columns:
                times = [results.time(work, size, column) for size in sizes]
                if column == OURS or len(works) == 1 or label in ("look up", "compare", "DS", "IS"):
                    rows.append([f"{label}, {column}"] + [nanoseconds(value) for value in times])
        article = "an" if unit[0] in "aei" else "a"
        parts.append(f"### {title[0].upper() + title[1:]}\n\n" +
                     table([f"ns {article} {unit}"] + [f"{size:,}" for size in sizes], rows))
    return "\n\n".join(parts)


def chart(results):
    """A row a work, a dot a toolkit; the further right, the longer it takes, as a multiple of this library's time."""
    works = [w for w in WORKS if results.time(w[0], w[1])]
    left, width, step, top = 270, 520, 26, 62
    height = top + step * len(works) + 34
    ratios = [results.time(w, s, c) / results.time(w, s) for w, s, _, _ in works for c in results.peers
              if results.time(w, s, c)]
    low, high = min(ratios + [0.5]) / 1.2, min(max(ratios + [2]) * 1.2, 100)

    def x(ratio):
        return left + width * (math.log(min(max(ratio, low), high) / low) / math.log(high / low))

    svg = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{left + width + 40}" height="{height}" '
           'font-family="sans-serif" font-size="12">', '<rect width="100%" height="100%" fill="white"/>',
           f'<text x="12" y="20" font-size="14">Time, as a multiple of {OURS}\'s (logarithmic)</text>']
    for i, column in enumerate(results.columns):
        svg.append(f'<circle cx="{left + i * 120}" cy="38" r="5" fill="{COLOURS[column]}"/>'
                   f'<text x="{left + 10 + i * 120}" y="42">{column}</text>')
    for mark in (0.01, 0.02, 0.05, 0.1, 0.2, 0.5, 1, 2, 5, 10, 20, 50, 100):
        if low <= mark <= high:
            svg.append(f'<line x1="{x(mark):.1f}" x2="{x(mark):.1f}" y1="{top - 8}" y2="{height - 30}" '
                       f'stroke="{"#c0392b" if mark == 1 else "#dddddd"}"/>'
                       f'<text x="{x(mark):.1f}" y="{height - 14}" text-anchor="middle">{mark:g}</text>')
    for row, (work, size, _, label) in enumerate(works):
        y = top + step * row + step / 2
        svg.append(f'<text x="{left - 14}" y="{y + 4}" text-anchor="end">{label}</text>')
        for column in results.columns[::-1]:
            time_ = results.time(work, size, column)
            if time_:
                svg.append(f'<circle cx="{x(time_ / results.time(work, size)):.1f}" cy="{y}" r="5" '
                           f'fill="{COLOURS[column]}"><title>{column}: {nanoseconds(time_)} ns</title></circle>')
    return "\n".join(svg + ["</svg>", ""])


def machine():
    cpu = platform.machine()
    info = pathlib.Path("/proc/cpuinfo")
    if info.exists():
        found = re.search(r"model name\s*: (.*)", info.read_text())
        cpu = found.group(1) if found else cpu
    system = platform.freedesktop_os_release().get("PRETTY_NAME", platform.system())
    compiler = subprocess.run(["c++", "--version"], capture_output=True, text=True).stdout.split("\n")[0]
    return f"{cpu}, {system}, {compiler}, Release (-O3)"


def load():
    """How busy the machine is: other work on it takes caches and memory from what is measured."""
    average, processors = os.getloadavg()[1], os.cpu_count()
    text = f"{processors} processors, load average {average:.1f} (the measuring itself is 1)."
    if average > 0.75 * processors + 0.5:
        text += " **The machine was busy with other work: the numbers are rough, and ratios near a limit say nothing.**"
    return text


def main():
    template, folder, page, picture = sys.argv[1:]
    results = Results(folder)
    values = {
        "date": time.strftime("%Y-%m-%d"),
        "machine": machine(),
        "versions": ", ".join(f"{name} {version}" for name, version in results.versions.items()),
        "load": load(),
        "rounds": str(results.rounds),
        "spread": f"{results.spread:.1f}",
        "times": times_table(results),
        "blocks": blocks_table(results),
        "targets": targets_table(results),
        "growth": growth_tables(results),
        "chart": pathlib.Path(picture).name,
    }
    text = pathlib.Path(template).read_text()
    pathlib.Path(page).write_text(re.sub(r"@(\w+)@", lambda found: values[found.group(1)], text))
    pathlib.Path(picture).write_text(chart(results))
    wrong = results.disagreements()
    for (work, size), came in wrong:
        print(f"{work} ({size}): the columns do not agree: {came}", file=sys.stderr)
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
