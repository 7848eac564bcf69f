#!/usr/bin/env python3
"""reference.py PLANS BODIES: the machine code of the complex kernels (rows of the audit's report) against the reference counts
of the plan table, not against what the generator says of itself. A register that holds one complex number or less does
exactly the additions of the row (`built A` where the row states a departure); wider ones do at least as many in all lanes,
and no more than lanes left empty explain. Products are those of the row and of the scale, and more where a value is
multiplied by a constant and by its quarter turn, which the row counts once, or by 1 and -1 to turn it, which the row does not."""
import re
import sys


def rows(path):
    lines = [line.rstrip("\n").split("\t") for line in open(path) if line.strip() and not line.startswith("#")]
    return [dict(zip(lines[0], line)) for line in lines[1:]]


LANES = {("scalar", "32fc"): 1, ("128", "32fc"): 4, ("256", "32fc"): 8, ("128", "64fc"): 2, ("256", "64fc"): 4}
plans = {(row["N"], row["precision"]): row for row in rows(sys.argv[1] + "/complex_plans.tsv")}
compared, bad = 0, []
for body in rows(sys.argv[2]):
    found = re.match(r"(?:xfmg|owng)DFT(?:Fwd|Inv)_CToC_(\d+)_(32|64)fc", body["function"])
    if not found or body["line"] == "whole":
        continue
    row = plans[found[1], found[2]]
    lanes = LANES[body["form"], body["type"]]
    due = int(row["A"] if row["built A"] == "-" else row["built A"])
    products = int(row["M"] if row["built M"] == "-" else row["built M"]) + 2 * int(found[1])
    adds, muls = lanes * int(body["adds"]), lanes * int(body["muls"])
    exact = lanes <= 2
    if adds != due if exact else not due <= adds <= 1.5 * due + 2 * lanes:
        bad.append(f"{body['function']} {body['line']}: {adds} additions in its lanes, the plan has {due}")
    if not products <= muls <= (1.13 * products + 4 if exact else 2.2 * products + 4 * lanes):
        bad.append(f"{body['function']} {body['line']}: {muls} multiplications in its lanes, the plan has {products} with the scale")
    compared += 1
print("\n".join(bad + [f"{compared} results compared with the plan table"]))
sys.exit(1 if bad or compared < 252 else 0)
