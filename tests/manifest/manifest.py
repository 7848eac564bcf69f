#!/usr/bin/env python3
"""manifest.py check|renew MANIFEST PLANS REPORTS DIGESTS: one line for every public function: its plan, the additions and
multiplications of its machine code, the bytes of stack it takes, and a digest of all that it writes for fixed inputs. So a
change of arithmetic shows in review as changed lines. `check` names the lines that are no longer true; `renew` writes them."""
import csv
import pathlib
import re
import sys

COLUMNS = ["function", "plan", "additions", "multiplications", "stack", "digest"]


def rows(path):
    lines = [line for line in path.read_text().splitlines() if line and not line.startswith("#")]
    return list(csv.DictReader(lines, delimiter="\t", quoting=csv.QUOTE_NONE))


def plans_of(folder):
    """The plan by family and size, as the plan tables have it."""
    plans = {}
    tables = [("complex_plans.tsv", r"DFT(Fwd|Inv)_CToC"), ("real_forward_plans.tsv", r"DFTFwd_RTo"),
              ("real_inverse_plans.tsv", r"DFTInv_(CCS|Pack|Perm)ToR"), ("hartley_plans.tsv", "Hartley"), ("wht_plans.tsv", "WHT_")]
    for name, family in tables:
        for row in rows(folder / name):
            size = row.get("N") or row["order"]
            bits = row.get("precision") or (row["type"][:2] if "type" in row else "")
            if row.get("target", "base") == "base":
                plans[family, size, bits] = row.get("plan") or row.get("Plan") or row["passes"]
    return plans


def plan_of(function, plans):
    found = re.match(r"xfmg(.*)_(\d+)_(\d\d)fc?$", function)
    for (family, size, bits), plan in plans.items():
        if found and re.match(family, found[1] + "_") and size == found[2] and bits in ("", found[3]):
            return plan
    return "-"


def manifest(plans_folder, reports, digests):
    plans, bodies = plans_of(plans_folder), {}
    for row in rows(reports / "audit_bodies.tsv"):
        bodies.setdefault(row["function"], row)
    lines = ["\t".join(COLUMNS)]
    for row in rows(digests):
        name = row["function"]
        body = bodies[name]
        lines.append("\t".join([name, plan_of(name, plans), body["adds"], body["muls"], body["frame_bytes"], row["digest"]]))
    return lines


def main():
    what, path, plans, reports, digests = sys.argv[1], *map(pathlib.Path, sys.argv[2:])
    if what == "check" and not path.exists():
        print("skipped: no manifest is committed; cmake --build BUILD --target manifest writes it")
        return 77
    lines = manifest(plans, reports, digests)
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
