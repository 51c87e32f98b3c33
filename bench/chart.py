#!/usr/bin/env python3
"""Turns the harness's results.tsv into a bar chart (SVG) and, with --readme, rewrites the
results section of bench/README.md (between its results markers) from the same figures.

    chart.py RESULTS.tsv CHART.svg [--scale F] [--readme README.md]
"""
import argparse
import csv
import re

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt  # noqa: E402

TARGETS = [
    ("reader / expat", "qz-reader", "expat", 3.0),
    ("reader through views / pugixml", "qz-views", "pugixml", 1.0),
    ("event parser / reader", "qz-events", "qz-reader", 0.9),
    ("strict reader / lenient reader", "qz-strict", "qz-reader", 0.85),
    ("strict / lenient, through views", "qz-strict-views", "qz-views", 0.85),
    ("writer / xmlTextWriter", "qz-writer", "libxml2-writer", 3.0),
]


def read_rows(path):
    with open(path, newline="", encoding="utf-8") as f:
        rows = list(csv.DictReader(f, delimiter="\t"))
    for row in rows:
        row["mb_per_s"] = float(row["mb_per_s"])
        row["writes"] = row["writes"] == "1"
    return rows


def ordered(values):
    return list(dict.fromkeys(values))


def speed(rows, corpus, workload):
    for row in rows:
        if row["corpus"] == corpus and row["workload"] == workload and row["mb_per_s"] > 0:
            return row["mb_per_s"]
    return None


def draw(rows, path, scale):
    corpora = ordered(r["corpus"] for r in rows)
    groups = [("Reading", [r for r in rows if not r["writes"]]),
              ("Writing the same events", [r for r in rows if r["writes"]])]
    groups = [(title, members) for title, members in groups if members]
    fig, axes = plt.subplots(len(groups), 1, figsize=(12, 4.5 * len(groups)), squeeze=False)
    for axis, (title, members) in zip(axes[:, 0], groups):
        workloads = ordered(r["workload"] for r in members)
        labels = {r["workload"]: r["label"] for r in members}
        width = 0.8 / len(workloads)
        for i, workload in enumerate(workloads):
            heights = [speed(members, c, workload) or 0 for c in corpora]
            positions = [c + (i - (len(workloads) - 1) / 2) * width for c in range(len(corpora))]
            hatch = "" if workload.startswith("qz-") else "//"
            axis.bar(positions, heights, width, label=labels[workload], hatch=hatch)
        axis.set_xticks(range(len(corpora)), corpora)
        # Logarithmic, so that the slow corpora stay readable beside the text corpus.
        axis.set_yscale("log")
        axis.set_ylabel("MB/s (median of warm passes, log scale)")
        axis.set_title(f"{title}, corpus scale {scale}")
        axis.grid(axis="y", alpha=0.3)
        axis.legend(fontsize="small", ncol=2)
    fig.tight_layout()
    fig.savefig(path)


def peak(row):
    return "-" if row is None or int(row["peak_kib"]) < 0 else row["peak_kib"]


def markdown(rows, scale):
    corpora = ordered(r["corpus"] for r in rows)
    sizes = {r["corpus"]: int(r["bytes"]) / 1e6 for r in rows}
    header = "| workload | " + " | ".join(f"{c} ({sizes[c]:.1f} MB)" for c in corpora) + " |"
    rule = "|---|" + "---:|" * len(corpora)
    lines = [f"Corpus scale {scale}. MB/s, with the ratio to expat in brackets:", "",
             header, rule]
    workloads = ordered(r["workload"] for r in rows)
    labels = {r["workload"]: r["label"] for r in rows}
    by_key = {(r["corpus"], r["workload"]): r for r in rows}
    for workload in workloads:
        cells = []
        for c in corpora:
            row = by_key.get((c, workload))
            cells.append("-" if row is None or row["mb_per_s"] <= 0
                         else f"{row['mb_per_s']:.0f} ({row['ratio_to_expat']})")
        lines.append(f"| {labels[workload]} | " + " | ".join(cells) + " |")
    lines += ["", "Peak extra heap of one pass, KiB (document already in memory):", "",
              "| workload | " + " | ".join(corpora) + " |", rule]
    for workload in workloads:
        cells = [peak(by_key.get((c, workload))) for c in corpora]
        lines.append(f"| {labels[workload]} | " + " | ".join(cells) + " |")
    lines += ["", "Targets (ratios of MB/s; the last row in KiB):", "",
              "| target | wanted | " + " | ".join(corpora) + " |",
              "|---|---:|" + "---:|" * len(corpora)]
    for title, ours, theirs, wanted in TARGETS:
        cells = []
        for c in corpora:
            a, b = speed(rows, c, ours), speed(rows, c, theirs)
            cells.append("-" if not a or not b else
                         f"{a / b:.2f}" + (" ✓" if a / b >= wanted else " ✗"))
        lines.append(f"| {title} | ≥ {wanted:g} | " + " | ".join(cells) + " |")
    # The memory target holds for UTF-8 read in place; a transcoded document is a copy.
    cells = []
    for c in corpora:
        row = by_key.get((c, "qz-reader"))
        if row is None or c.endswith("utf16") or int(row["peak_kib"]) < 0:
            cells.append("-")
        else:
            cells.append(row["peak_kib"] + (" ✓" if int(row["peak_kib"]) <= 1024 else " ✗"))
    lines.append("| reader peak extra heap, KiB (UTF-8 in place) | ≤ 1024 + deepest path | " +
                 " | ".join(cells) + " |")
    return "\n".join(lines)


def update_readme(path, table):
    with open(path, encoding="utf-8") as f:
        text = f.read()
    pattern = re.compile(r"(<!-- results -->\n).*?(\n<!-- /results -->)", re.S)
    if not pattern.search(text):
        raise SystemExit(f"{path}: no <!-- results --> section")
    with open(path, "w", encoding="utf-8") as f:
        f.write(pattern.sub(lambda m: m.group(1) + table + m.group(2), text))


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("results")
    parser.add_argument("chart")
    parser.add_argument("--scale", default="?")
    parser.add_argument("--readme")
    args = parser.parse_args()
    rows = read_rows(args.results)
    draw(rows, args.chart, args.scale)
    if args.readme:
        update_readme(args.readme, markdown(rows, args.scale))


if __name__ == "__main__":
    main()
