#!/usr/bin/env python3
"""The atlas, one page without a server: make_atlas.py BUILD DATA TEMPLATE OUTPUT

BUILD is the build tree (its reports and generated units), DATA the folder of measured figures, docs/data.
"""

import csv
import json
import pathlib
import re
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent))
import speed_data  # noqa: E402

FAMILIES = {
    "DFTFwd_CToC": "complex DFT, forward", "DFTInv_CToC": "complex DFT, inverse", "DFTFwd_RToCCS": "real DFT to CCS",
    "DFTFwd_RToPack": "real DFT to Pack", "DFTFwd_RToPerm": "real DFT to Perm", "DFTInv_CCSToR": "real DFT from CCS, inverse",
    "DFTInv_PackToR": "real DFT from Pack, inverse", "DFTInv_PermToR": "real DFT from Perm, inverse", "Hartley": "Hartley",
    "WHT": "Walsh-Hadamard", "DCT4": "DCT-IV",
}
# Columns of the audit's report that the page shows, and their words.
COLUMNS = {
    "instructions": "instructions", "code_bytes": "bytes of code", "frame_bytes": "bytes of stack", "vector_bits": "bits of a register",
    "adds": "additions", "muls": "multiplications", "shuffles": "shuffles", "inserts": "inserts", "broadcasts": "broadcasts",
    "blends": "blends", "logic": "logic", "widen": "float to double", "narrow": "double to float", "src_loads": "loads of src",
    "dst_stores": "stores to dst", "constant_loads": "loads of constants", "reloads": "loads from the stack", "spills": "stores to the stack",
}
NOTE = re.compile(r"^// xfmg(\w+): (.*)$", re.M)
COUNTS = re.compile(r"(?P<plan>.*?); (?:(?P<form>.*); )?(?P<a>\d+) additions, (?P<m>\d+) multiplications")


def table(path):
    with open(path, encoding="utf-8") as file:
        return list(csv.DictReader((line for line in file if not line.startswith("#")), delimiter="\t"))


def number(text):
    return None if text in ("-", "") else float(text)


def key_of(function):
    """Family, type and length or order of a kernel's name without its prefix."""
    match = re.fullmatch(r"(\w+?)_(\d+)_(32fc|64fc|32f|64f)", function)
    return match and (match[1], match[3], int(match[2]))


def records(build):
    """A record for every kernel, and for every measured length of the DCT-IV."""
    found = {}
    for row in table(build / "reports" / "functions.tsv"):
        if row["kind"] == "kernel":
            family, kind, size = key_of(row["name"].removeprefix("xfmg"))
            points = 2**size if family == "WHT" else size
            found[family, kind, points] = {"name": row["name"], "family": family, "precision": "single" if kind[:2] == "32" else "double",
                                           "points": points}
    return found


def add_notes(found, build):
    for unit in sorted(build.glob("*/pgen*.cpp")):
        for function, note in NOTE.findall(unit.read_text(encoding="utf-8")):
            key = key_of(function)
            if key is None:
                continue
            record = found[key[0], key[1], 2 ** key[2] if key[0] == "WHT" else key[2]]
            counts = COUNTS.fullmatch(note)
            record["plan"] = counts["plan"] if counts else note
            if counts:
                record.update(additions=int(counts["a"]), multiplications=int(counts["m"]))
                if counts["form"]:
                    record["form"] = counts["form"]


def add_forms(found, build):
    """What the copies for newer processors make of a kernel, where they pack it."""
    by_name = {record["name"]: record for record in found.values()}
    for report in sorted((build / "reports").glob("*/*.tsv")):
        rows = table(report)
        for row in rows if rows and "form" in rows[0] else ():
            if row.get("name", row.get("function")) in by_name:
                by_name[row.get("name", row.get("function"))].setdefault("copies", {})[report.parent.name] = row["form"]


def add_code(found, build):
    by_name = {record["name"]: record for record in found.values()}
    for row in table(build / "reports" / "audit_bodies.tsv"):
        # Of a kernel with two bodies, that for aligned data.
        if row["line"] != "unaligned" and row["function"] in by_name:
            by_name[row["function"]]["code"] = {column: int(row[column]) for column in COLUMNS}


def add_accuracy(found, data):
    for row in table(data / "accuracy.tsv"):
        points, kind = int(row["points"]), row["type"]
        figures = {name: number(row[name]) for name in ("error", "worst", "fftw")}
        key = row["family"], kind, points
        if key[0] == "DCT4":
            found[key] = {"name": f"xfmgDCT4_{kind}, {points} points", "family": "DCT4",
                          "precision": "single" if kind == "32f" else "double", "points": points, "accuracy": figures}
        else:
            found[key]["accuracy"] = figures


def add_speed(found, data):
    for measured in speed_data.times(data)[0]:
        record = found.get((measured["family"], measured["type"], measured["points"]))
        if record is not None:
            record["ns"] = measured["ns"]


def main():
    if len(sys.argv) != 5:
        sys.exit("usage: make_atlas.py BUILD DATA TEMPLATE OUTPUT")
    build, data, template, output = map(pathlib.Path, sys.argv[1:])
    found = records(build)
    add_notes(found, build)
    add_forms(found, build)
    add_code(found, build)
    add_accuracy(found, data)
    add_speed(found, data)
    order = list(FAMILIES)
    for record in found.values():
        if record["family"] != "DCT4" and not {"plan", "code"} <= record.keys():
            sys.exit(f"{record['name']}: no plan or code in the build")
    functions = sorted(found.values(), key=lambda r: (order.index(r["family"]), r["precision"] == "double", r["points"]))
    text = json.dumps({"families": list(FAMILIES.items()), "columns": COLUMNS, "functions": functions}, separators=(",", ":"))
    page = template.read_text(encoding="utf-8").replace("@data@", text.replace("</", "<\\/"))
    output.parent.mkdir(parents=True, exist_ok=True)
    output.write_text(page, encoding="utf-8")
    print(f"{output}: {len(functions)} functions, {len(page)} bytes")


main()
