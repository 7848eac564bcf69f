#!/usr/bin/env python3
"""reference.py PLANS BODIES: the machine code of the base's kernels (rows of the audit's report) against the counts of the plan
tables, not against what the generators say of themselves.

Complex: a register of one complex number or less does exactly the additions of the row (`built A` where the row states a departure),
its products and those with the scale. Wider ones do at least as many in all lanes: some lanes are empty, and a lane may be
multiplied by 1 beside others; how many instructions that takes stands in the manifest.
Real and Hartley: additions in either precision, conversions, and products with those of the scale and of doubled bins.
Walsh-Hadamard: order * 2^order additions and 2^order products over the lanes, and shuffles up to the row's limit; from order 8
on those of one block of the first pass and of one column of each later one, the products in the last.
DCT-IV: a function that holds the stages of several lengths does the sums of their rows."""
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


def complex_faults(body, name, length, bits):
    lanes = LANES[body["form"], body["type"]]
    for column, due in complex_counts(complex_plans[length, bits], int(length)).items():
        yield column, lanes * done(body, column), due, "" if lanes <= 2 else "at least "


def real_faults(body, name, length, bits):
    for columns, due in real_counts(real[name, length], int(length), bits == "32").items():
        yield columns, done(body, columns), due, ""


def wht_faults(body, name, order, bits):
    row = wht[bits + "f", order]
    lanes, (first, *columns) = int(row["lanes"]), map(int, row["passes"].split())
    yield "adds", done(body, "adds"), first * 2**first // lanes + sum(p * 2**p for p in columns), ""
    yield "muls", done(body, "muls"), 2 ** columns[-1] if columns else 2**first // lanes, ""
    yield "shuffles+inserts", done(body, "shuffles+inserts"), int(wht[bits + "f", str(first)]["shuffles"]), "at most "


def dct4_faults(body, name, bits, stage):
    kinds, shortest = STAGES[stage or "env1"]
    held = [row for row in dct4 if row["kernel"] in kinds and bits + "f" in row["types"].split() and int(row["length"]) >= shortest]
    for column, counted in ("adds", "additions"), ("muls", "multiplications"):
        yield column, done(body, column), sum(int(row[counted]) for row in held), ""


def done(body, columns):
    return sum(int(body[column]) for column in columns.split("+"))


LANES = {("scalar", "32fc"): 1, ("128", "32fc"): 4, ("256", "32fc"): 8, ("128", "64fc"): 2, ("256", "64fc"): 4}
TABLES = {"DFTFwd_RTo": "real_forward_plans", "DFTInv_": "real_inverse_plans", "Hartley": "hartley_plans"}
STAGES = {"env5": ({"forward"}, 8), "env9_direct": ({"forward"}, 16), "env4": ({"synthesis"}, 8), "env8": ({"combine"}, 8),
          "env1": ({"rotation", "lifting", "straight"}, 2)}
# Names of functions, what holds them, and how many bodies there are of them.
FAMILIES = [
    (r"(?:xfmg|owng)(DFT(?:Fwd|Inv)_CToC)_(\d+)_(32|64)fc(?:_.*)?$", complex_faults, 252),
    (r"(?:xfmg|owng)(DFTFwd_RTo|DFTInv_(?!CToC)|Hartley).*?_(\d+)_(32|64)f", real_faults, 756 + 126),
    (r"(?:xfmg|owng)(WHT)_(\d+)_(32|64)f", wht_faults, 26),
    (r"(owngDCT4)_(32|64)fg9_(env(?:[148]|5|9_direct))_compute$", dct4_faults, 9),
    (r"(xfmgDCT4)_(64)f()$", dct4_faults, 1),
]
folder = sys.argv[1]
complex_plans = {(row["N"], row["precision"]): row for row in rows(folder + "/complex_plans.tsv")}
real = {(family, row["N"]): row for family, table in TABLES.items() for row in rows(f"{folder}/{table}.tsv")}
wht = {(row["type"], row["order"]): row for row in rows(folder + "/wht_plans.tsv") if row["target"] == "base"}
dct4 = rows(folder + "/dct4_kernels.tsv")
bad, compared = [], {faults: 0 for _, faults, _ in FAMILIES}
for body in rows(sys.argv[2]):
    for pattern, faults, _ in FAMILIES:
        if not (found := re.match(pattern, body["function"])):
            continue
        compared[faults] += 1
        for columns, got, due, relation in faults(body, *found.groups()):
            if not {"": got == due, "at least ": got >= due, "at most ": got <= due}[relation]:
                bad.append(f"{body['function']} {body['line']}: {columns} {got} times, the plan has {relation}{due}")
for _, faults, due in FAMILIES:
    if compared[faults] < due:
        bad.append(f"only {compared[faults]} bodies for {faults.__name__}")
print("\n".join(bad + [f"{sum(compared.values())} bodies compared with the plan tables"]))
sys.exit(1 if bad else 0)
