#!/usr/bin/env python3
"""reference.py PLANS BODIES: the machine code of the base's complex, real and Hartley kernels (rows of the audit's report) against
the counts of the plan tables, not against what the generators say of themselves. (Those of the Walsh-Hadamard kernels stand in
audit/wht_counts.tsv.)

Complex: a register of one complex number or less does exactly the additions of the row (`built A` where the row states a departure),
its products and those with the scale. Wider ones do at least as many in all lanes: some lanes are empty, and a lane may be
multiplied by 1 beside others; how many instructions that takes stands in the manifest.
Real and Hartley: additions in either precision, conversions, and products with those of the scale and of doubled bins."""
import re
import sys


def rows(path):
    lines = [line.rstrip("\n").split("\t") for line in open(path) if line.strip() and not line.startswith("#")]
    return [dict(zip(lines[0], line)) for line in lines[1:]]


def complex_counts(row, length):
    """Additions, products."""
    additions, products = (int(row[c] if row["built " + c] == "-" else row["built " + c]) for c in "AM")
    return {"adds": additions, "muls": products + 2 * length}


def real_counts(row, length, single):
    products = int(row["Mul"]) + int(row.get("Doublings", 0)) + length
    if not single:
        return {"vaddsd+vsubsd": int(row["Add"]), "vmulsd": products, "vaddss+vsubss+vmulss+vcvtss2sd+vcvtsd2ss": 0}
    narrow = int(row["Narrow"]) if "Narrow" in row else int(row["Narrow, inner"]) + int(row["Narrow, last"])
    return {"vaddss+vsubss": int(row["32f single add"]), "vaddsd+vsubsd": int(row["32f double add"]), "vmulss+vmulsd": products,
            "vcvtss2sd": int(row["Widen"]), "vcvtsd2ss": narrow}


LANES = {("scalar", "32fc"): 1, ("128", "32fc"): 4, ("256", "32fc"): 8, ("128", "64fc"): 2, ("256", "64fc"): 4}
TABLES = {"DFTFwd_RTo": "real_forward_plans", "DFTInv_": "real_inverse_plans", "Hartley": "hartley_plans"}
plans = {(row["N"], row["precision"]): row for row in rows(sys.argv[1] + "/complex_plans.tsv")}
real = {(family, row["N"]): row for family, table in TABLES.items() for row in rows(f"{sys.argv[1]}/{table}.tsv")}
compared, bad = 0, []
for body in rows(sys.argv[2]):
    found = re.match(r"(?:xfmg|owng)(DFT(?:Fwd|Inv)_CToC|DFTFwd_RTo|DFTInv_|Hartley).*?_(\d+)_(32|64)f", body["function"])
    if not found or body["size"] == "-":
        continue
    family, length, bits = found.groups()
    if family.endswith("CToC"):
        lanes = LANES[body["form"], body["type"]]
        due = complex_counts(plans[length, bits], int(length))
    else:
        lanes, due = 1, real_counts(real[family, length], int(length), bits == "32")
    for columns, count in due.items():
        got = lanes * sum(int(body[column]) for column in columns.split("+"))
        if got != count if lanes <= 2 else got < count:
            bad.append(f"{body['function']} {body['line']}: {columns} {got} times in all lanes, the plan has {count}")
    compared += 1
print("\n".join(bad + [f"{compared} bodies compared with the plan tables"]))
sys.exit(1 if bad or compared < 252 + 756 + 126 else 0)
