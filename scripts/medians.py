#!/usr/bin/env python3
"""medians.py OUTPUT RUN...: results of several runs of one benchmark (`xfm bench --json`) as one, each number the median of theirs.
Addresses that a run happens to have move single lengths for as long as it lasts. The notes, means of one run, are left out."""
import json
import pathlib
import statistics
import sys


def merged(cells):
    return statistics.median(cells) if all(isinstance(cell, (int, float)) for cell in cells) else cells[0]


def main():
    output, *paths = map(pathlib.Path, sys.argv[1:])
    runs = [json.loads(path.read_text()) for path in paths]
    for reports in zip(*(run["reports"] for run in runs), strict=True):
        keys = [[row[:2] for row in report["rows"]] for report in reports]
        if any(other != keys[0] for other in keys):
            sys.exit(f"{reports[0]['benchmark']}: the runs have other rows")
        reports[0]["rows"] = [[merged(cells) for cells in zip(*rows)] for rows in zip(*(report["rows"] for report in reports))]
        reports[0]["notes"] = []
    output.write_text(json.dumps(runs[0]))


main()
