"""The measured times of docs/data/bench_*.json, as scripts/figures leaves them."""

import json
import re

DISPATCHER = re.compile(r"xfmg(\w+?)_(32fc|64fc|32f|64f)$")


def times(folder):
    """Records of family, type, points and ns by contestant ("base", "x86-64-v3", "FFTW" ...), and the processor's name."""
    records, processor = [], ""
    for path in sorted(folder.glob("bench_*.json")):
        document = json.loads(path.read_text(encoding="utf-8"))
        processor = document["processor"]
        for report in document["reports"]:
            records += measured(report)
    return records, processor


def measured(report):
    names = [c["name"] for c in report["columns"]]
    plotted = [(i, c["name"].removesuffix(" ns")) for i, c in enumerate(report["columns"]) if c["plotted"]]
    for row in report["rows"]:
        cells = dict(zip(names, row))
        if match := DISPATCHER.match(cells["function"]):
            yield {"family": match[1], "type": match[2], "points": cells["N"],
                   "ns": {name: row[i] for i, name in plotted if row[i] is not None}}
