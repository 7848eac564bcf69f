#!/usr/bin/env python3
"""manifest.py check|renew MANIFEST REPORTS: one line for every public function. Of a kernel its plan, what its graph counts, and
the digest of the graph (manifest/graphs.cpp); of the others the digest of what they write for fixed inputs. Behind these, of its
machine code in the base, the instructions that add, that multiply and that change signs (logic), and the bytes of stack. `check`
names the lines that are no longer true; `renew` writes them."""
import csv
import pathlib
import sys

GRAPH = ["plan", "additions", "multiplications", "products", "digest"]
CODE = {"code adds": "adds", "code muls": "muls", "code logic": "logic", "stack": "frame_bytes"}


def rows(path):
    lines = [line for line in path.read_text().splitlines() if line and not line.startswith("#")]
    return list(csv.DictReader(lines, delimiter="\t", quoting=csv.QUOTE_NONE))


def manifest(reports):
    graphs = {row["function"]: row for row in rows(reports / "graphs.tsv")}
    bodies = {}
    for row in rows(reports / "audit_bodies.tsv"):
        bodies.setdefault(row["function"], row)
    lines = ["\t".join(["function", *GRAPH, *CODE])]
    for row in rows(reports / "result_digests.tsv"):
        name = row["function"]
        graph = graphs.get(name, {"digest": row["digest"]})
        cells = [graph.get(column, "-") for column in GRAPH] + [bodies[name][column] for column in CODE.values()]
        lines.append("\t".join([name, *cells]))
    return lines


def main():
    what, path, reports = sys.argv[1], *map(pathlib.Path, sys.argv[2:])
    lines = manifest(reports)
    if what == "renew":
        path.write_text("\n".join(lines) + "\n")
        return 0
    kept = path.read_text().splitlines()
    stale = sorted(set(kept) ^ set(lines))
    for line in stale[:40]:
        print(("manifest " if line in set(kept) else "built    ") + line)
    if stale or kept != lines:
        print(f"{len(stale)} lines differ; if they should: cmake --build BUILD --target manifest, and look at what changed")
        return 1
    print(f"{len(lines) - 1} functions as the manifest has them")
    return 0


sys.exit(main())
