#!/usr/bin/env python3
"""The manual's pictures: figures.py DATA OUTPUT makes them from docs/data; colours differ in grey, too."""

import csv
import pathlib
import sys

import matplotlib

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


main()
