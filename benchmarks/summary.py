#!/usr/bin/env python3
"""Sums the benchmarks' times up in one table of ratios.

usage: benchmarks/summary.py RUN.json... [--json FILE] [--markdown FILE]

Each RUN.json is what one run of the benchmark programs has written with --table (several programs: join their objects).
A ratio is a contestant's median time over ours, or ours over a yardstick's (copying, reading, a steady call). Every
ratio is the median of the runs; a row shows the worst of its groups, the median of them and the spread over the runs.
"""
import argparse
import collections
import json
import re
import statistics
import sys

# What a row compares: "faster" is the best contestant's time over ours (large is good), "cost" is ours over the best
# contestant's (small is good).
Row = collections.namedtuple("Row", "operation masks groups against kind bound aim ours", defaults=("qel",))

SIZES = {"576p": "768x576", "1080p": "1920x1080", "4K": "3840x2160"}
LEPTONICA, OPENCV = "leptonica.*", "opencv.*"


def labelling_rows():
    rows = []
    label = "8-way labelling with boxes and areas"
    for masks, pattern, leptonica, opencv in (
        ("motion masks of the demo video", "demo-.*", (6, 9), (15, 40)),
        ("text pages", "text", (6, 10), (8, 10)),
        ("noise 10 to 50 %", "noise-(10|30|50)", (4, 7), (2.8, 4)),
        *((name, pattern, (4, 20), (4, 20)) for name, pattern in (
            ("noise 70 %", "noise-70"), ("noise 90 %", "noise-90"), ("checkerboard", "checkerboard"),
            ("all ones", "full"), ("serpentine", "serpentine"), ("spiral", "spiral"))),
    ):
        for name, against, (bound, aim) in (("Leptonica", LEPTONICA, leptonica), ("OpenCV", OPENCV, opencv)):
            rows.append(Row(label, f"{masks}, against {name}", f"Connect8Way/.*/{pattern}", against, "faster",
                            bound, aim))
    rows.append(Row(label, "empty, times reading it", "Connect8Way/.*/empty", "read", "cost", 1.6, 1.2))
    motion = "motion masks of the demo video, against "
    rows.append(Row("4-way labelling", motion + "Leptonica", "Connect4Way/.*/demo-.*", LEPTONICA, "faster", 4, 6))
    rows.append(Row("4-way labelling", motion + "OpenCV", "Connect4Way/.*/demo-.*", OPENCV, "faster", 13, 20))
    rows.append(Row("first call on a fresh object", "1080p, times a steady call", "Connect8Way/1920x1080/demo-.*", "qel",
                    "cost", 5, 3, "qel-first-call"))
    rows.append(Row("line by line", "motion masks, against the reference", "LineByLine8Way/.*/demo-.*", "reference",
                    "faster", 2.2, 4))
    rows.append(Row("line by line", "motion masks, times whole-image labelling", "LineByLine8Way/.*/demo-.*",
                    "whole-image", "cost", 2.5, 1.5))
    return rows


def bit_mask_rows():
    rows = []
    for size, bound, aim in (("576p", 14, 1.5), ("1080p", 22, 1.2), ("4K", 13, 1.0)):
        groups = f"(Dilate|Erode)8Way/{SIZES[size]}/.*"
        rows.append(Row("dilate, erode", f"{size}, against the best peer", groups, f"{LEPTONICA}|{OPENCV}", "faster",
                        bound, None))
        rows.append(Row("dilate, erode", f"{size}, times memcpy", groups, "memcpy", "cost", None, aim))
    rows.append(Row("Union, Difference, Intersection", "any, times memcpy", "(Union|Difference|Intersection)/.*",
                    "memcpy", "cost", 1.15, 1.0))
    rows.append(Row("flood fill", "motion blobs, against the best peer", "FloodFill8Way/.*/demo-.*",
                    f"{LEPTONICA}|{OPENCV}", "faster", 3.5, 5))
    for masks, pattern in (("noise", "noise-.*"), ("inverted text", "inverted-text"), ("full", "full"),
                           ("serpentine", "serpentine")):
        groups = f"FloodFill8Way/.*/{pattern}"
        rows.append(Row("flood fill", f"{masks}, against Leptonica's binary fill", groups, "leptonica-binary", "faster",
                        4, 10))
        rows.append(Row("flood fill", f"{masks}, against OpenCV", groups, OPENCV, "faster", 15, 50))
    rows.append(Row("flood fill", "spiral, against OpenCV", "FloodFill8Way/.*/spiral", OPENCV, "faster", 2.5, 4))
    one = "FillPolygonSet/.*/(octagon|convex-.*|star-.*)"
    rows.append(Row("polygon set", "one polygon, against OpenCV", one, OPENCV, "faster", 1.4, 2))
    rows.append(Row("polygon set", "one polygon, against plain Boost", one, "boost", "faster", 2, 5))
    for count, boost in ((50, 60), (200, 300)):
        groups = f"FillPolygonSet/.*/octagons-{count}"
        rows.append(Row("polygon set", f"{count} octagons, against plain Boost", groups, "boost", "faster", boost, None))
        rows.append(Row("polygon set", f"{count} octagons, against OpenCV", groups, OPENCV, "faster", 1.4, None))
    rows.append(Row("threshold into a mask", "any, against the best scalar loop", "Threshold/.*", "scalar", "faster", 4,
                    None))
    return rows


ROWS = labelling_rows() + bit_mask_rows()


def best(times, pattern):
    """The least median time of the contestants whose names match."""
    medians = [statistics.median(values) for name, values in times.items() if re.fullmatch(pattern, name)]
    return min(medians, default=None)


def ratio(row, times):
    """A group's ratio in one run; None when a contestant is missing."""
    ours, theirs = best(times, row.ours), best(times, row.against)
    if ours is None or theirs is None:
        return None
    return theirs / ours if row.kind == "faster" else ours / theirs


def measure(row, runs):
    """The row with its figures; without any when no run has measured it."""
    groups = sorted({name for run in runs for name in run if re.fullmatch(row.groups, name)})
    figures = {}
    for name in groups:
        values = [value for run in runs if name in run if (value := ratio(row, run[name])) is not None]
        if values:
            figures[name] = (statistics.median(values), min(values), max(values))
    result = {"operation": row.operation, "masks": row.masks, "kind": row.kind, "bound": row.bound, "aim": row.aim}
    if not figures:
        return result
    pick = min if row.kind == "faster" else max
    worst = pick(figures, key=lambda name: figures[name][0])
    value, least, most = figures[worst]
    result.update(worst=value, least=least, most=most, at=worst,
                  median=statistics.median(middle for middle, _, _ in figures.values()))
    if row.bound is not None:
        result["reached"] = value >= row.bound if row.kind == "faster" else value <= row.bound
    return result


def markdown(rows):
    lines = ["| operation | masks | worst | spread | median | wanted | aim | |", "|---|---|--:|--:|--:|--:|--:|---|"]
    for row in rows:
        sign = ">=" if row["kind"] == "faster" else "<="
        wanted, aim = (f"{sign} {value:g}" if value is not None else "" for value in (row["bound"], row["aim"]))
        if "worst" in row:
            verdict = {True: "reached", False: "short"}.get(row.get("reached"), "")
            figures = f"{row['worst']:.2f} | {row['least']:.2f} to {row['most']:.2f} | {row['median']:.2f}"
        else:
            figures, verdict = " | | ", "not measured"
        lines.append(f"| {row['operation']} | {row['masks']} | {figures} | {wanted} | {aim} | {verdict} |")
    return "\n".join(lines) + "\n"


def main(arguments):
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("runs", nargs="+", metavar="RUN.json")
    parser.add_argument("--json", metavar="FILE")
    parser.add_argument("--markdown", metavar="FILE")
    options = parser.parse_args(arguments)
    runs = []
    for name in options.runs:
        with open(name, encoding="utf-8") as file:
            runs.append(json.load(file))
    rows = [measure(row, runs) for row in ROWS]
    table = markdown(rows)
    if options.json:
        with open(options.json, "w", encoding="utf-8") as file:
            json.dump({"runs": len(runs), "rows": rows}, file, indent=1)
            file.write("\n")
    if options.markdown:
        with open(options.markdown, "w", encoding="utf-8") as file:
            file.write(table)
    sys.stdout.write(table)


if __name__ == "__main__":
    main(sys.argv[1:])
