#!/usr/bin/env python3
"""The manual's pictures: figures.py DATA OUTPUT makes them from docs/data; colours differ in grey, too."""

import csv
import math
import pathlib
import sys

import matplotlib

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent))
import speed_data  # noqa: E402

matplotlib.use("svg")
matplotlib.rcParams.update({"svg.hashsalt": "xfm", "font.size": 9, "axes.grid": True, "grid.alpha": 0.3})
import matplotlib.pyplot as plt  # noqa: E402

FAMILIES = {
    "DFTFwd_CToC": "complex DFT, forward", "DFTInv_CToC": "complex DFT, inverse", "DFTFwd_RToCCS": "real DFT, forward",
    "DFTInv_CCSToR": "real DFT, inverse", "Hartley": "Hartley", "WHT": "Walsh-Hadamard", "DCT4": "DCT-IV",
}


def rows(path):
    with open(path, encoding="utf-8") as file:
        return list(csv.DictReader(file, delimiter="\t"))


def save(figure, path):
    figure.savefig(path, metadata={"Date": None})
    plt.close(figure)
    print(path)


def layouts(output):
    """The cells of the three layouts for 8 and for 7 points."""
    figure, axes = plt.subplots(2, 1, figsize=(8, 4.6))
    for axis, n in zip(axes, (8, 7)):
        pairs = [f"{part}{k}" for k in range(1, (n + 1) // 2) for part in "RI"]
        nyquist = [f"R{n // 2}"] if n % 2 == 0 else []
        cells = {"CCS": ["R0", "0", *pairs, *nyquist, *(["0"] if nyquist else [])], "Pack": ["R0", *pairs, *nyquist],
                 "Perm": ["R0", *nyquist, *pairs]}
        for row, (name, names) in enumerate(cells.items()):
            axis.text(-0.2, -row, name, ha="right", va="center", fontweight="bold")
            for column, text in enumerate(names):
                shade = "#d9d9d9" if text == "0" else "#9ecae1" if text in ("R0", *nyquist) else "white"
                axis.add_patch(plt.Rectangle((column, -row - 0.4), 1, 0.8, facecolor=shade, edgecolor="black"))
                axis.text(column + 0.5, -row, text[0] + (f"$_{{{text[1:]}}}$" if len(text) > 1 else ""), ha="center", va="center")
        axis.set(xlim=(-1, 10.2), ylim=(-2.6, 0.9), title=f"N = {n}")
        axis.axis("off")
    figure.tight_layout()
    save(figure, output / "layouts.svg")


def accuracy(data, output):
    """Errors over the length, one picture a precision, FFTW's beside."""
    measured = rows(data / "accuracy.tsv")
    for single, name in ((True, "single"), (False, "double")):
        figure, axes = plt.subplots(3, 2, figsize=(9, 8))
        shown = [f for f in FAMILIES if f != "WHT"]
        for axis, family in zip(axes.flat, shown):
            of_family = [r for r in measured if r["family"] == family and r["type"].startswith("32") == single]
            points = [int(r["points"]) for r in of_family]
            axis.plot(points, [float(r["error"]) for r in of_family], "-", color="black", label="Xfm")
            axis.plot(points, [float(r["fftw"]) for r in of_family], "--", color="tab:orange", label="FFTW")
            axis.set(title=FAMILIES[family], xlabel="points", ylabel="error / epsilon", ylim=(0, None))
            if family == "DCT4":
                axis.set_xscale("log", base=2)
            axis.legend(loc="lower right")
        figure.tight_layout()
        save(figure, output / f"accuracy-{name}.svg")


COPIES = ("base", "x86-64-v3", "x86-64-v4")
# The copies in full lines, rivals broken.
STYLES = {"base": ("-", "black"), "x86-64-v3": ("-", "tab:blue"), "x86-64-v4": ("-", "tab:green"), "FFTW": ("--", "tab:orange"),
          "half-length": ("--", "tab:orange"), "REDFT11": (":", "tab:red"), "plain loop": ("--", "tab:red")}


def drawn(axis, records, values):
    """One line a contestant."""
    for name in dict.fromkeys(n for r in records for n in r["ns"]):
        line, colour = STYLES.get(name, ("-.", "grey"))
        shown = [(r["points"], values(r, name)) for r in records if name in r["ns"]]
        axis.plot(*zip(*shown), line, color=colour, label=name, linewidth=1.2)
    if records[-1]["points"] > 64:
        axis.set_xscale("log", base=2)


def performance(data, output):
    """Times over the length, and their ratio to the quickest rival, a picture for each family."""
    records, _ = speed_data.times(data)
    for family, title in FAMILIES.items():
        figure, axes = plt.subplots(2, 2, figsize=(9, 6.4))
        for column, single in enumerate((True, False)):
            of_family = sorted((r for r in records if r["family"] == family and r["type"].startswith("32") == single), key=lambda r: r["points"])
            drawn(axes[0][column], of_family, lambda r, name: r["ns"][name])
            drawn(axes[1][column], of_family, lambda r, name: r["ns"][name] / rival_of(r))
            axes[0][column].set(title=f"{title}, {'single' if single else 'double'}", ylabel="ns", yscale="log")
            axes[1][column].set(xlabel="points", ylabel="time / quickest rival's", ylim=(0, 2.2))
            axes[0][column].legend(loc="upper left", fontsize=7)
        figure.tight_layout()
        save(figure, output / f"speed-{family}.svg")


def rival_of(record):
    """The time of the quickest that is not a copy of this library."""
    return min(ns for name, ns in record["ns"].items() if name not in COPIES)


def performance_means(data, output):
    """The table of the performance page: geometric means of the ratio to the quickest rival, and the lengths behind it."""
    records, processor = speed_data.times(data)
    copies = [c for c in COPIES if any(c in r["ns"] for r in records)]
    with open(output / "speed-means.csv", "w", encoding="utf-8") as file:
        file.write("transform,precision," + ",".join(f"{c},slower at" for c in copies) + "\n")
        for family, title in FAMILIES.items():
            for single, name in ((True, "single"), (False, "double")):
                of_family = [r for r in records if r["family"] == family and r["type"].startswith("32") == single]
                cells = []
                for copy in copies:
                    ratios = [(r["points"], r["ns"][copy] / rival_of(r)) for r in of_family]
                    mean = math.exp(sum(math.log(x) for _, x in ratios) / len(ratios))
                    behind = [str(n) for n, x in ratios if x > 1]
                    cells += [f"{mean:.2f}", "none" if not behind else " ".join(behind) if len(behind) <= 6 else f"{len(behind)} lengths"]
                file.write(f"\"{title}\",{name}," + ",".join(cells) + "\n")
    print(processor)


def accuracy_means(data, output):
    """The table of the accuracy page: root mean squares over the lengths of a family."""
    measured = rows(data / "accuracy.tsv")
    with open(output / "accuracy-means.csv", "w", encoding="utf-8") as file:
        file.write("transform,precision,Xfm,FFTW,worst output of Xfm\n")
        for family, title in FAMILIES.items():
            for single, name in ((True, "single"), (False, "double")):
                of_family = [r for r in measured if r["family"] == family and r["type"].startswith("32") == single]
                mean = {c: (sum(float(r[c]) ** 2 for r in of_family) / len(of_family)) ** 0.5 if of_family[0][c] != "-" else None
                        for c in ("error", "fftw")}
                worst = max(float(r["worst"]) for r in of_family)
                fftw = "-" if mean["fftw"] is None else f"{mean['fftw']:.2f}"
                file.write(f"\"{title}\",{name},{mean['error']:.2f},{fftw},{worst:.1f}\n")


def main():
    if len(sys.argv) != 3:
        sys.exit("usage: figures.py DATA OUTPUT")
    data, output = map(pathlib.Path, sys.argv[1:])
    output.mkdir(parents=True, exist_ok=True)
    layouts(output)
    accuracy(data, output)
    accuracy_means(data, output)
    performance(data, output)
    performance_means(data, output)


main()
