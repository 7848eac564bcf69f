#!/usr/bin/env python3
"""promises.py PROMISES.tsv RESULTS.xml: the closing table of ./check: each promise with the number of its tests that passed, and
what they say that they counted. A promise none of whose tests ran is told as not shown, and one that failed as broken;
tests of no promise are named below."""
import re
import sys
import xml.etree.ElementTree as tree

COUNTED = re.compile(r"\b(\d+) (functions|calls|faults planted|findings|files the same|results|values|inputs|exports|samples)\b")
FUZZED = re.compile(r"Done (\d+) runs")


def counted(cases):
    sums = {}
    for case in cases:
        said = case.findtext("system-out") or ""
        for number, what in COUNTED.findall(said):
            sums[what] = max(sums.get(what, 0), int(number)) if what == "functions" else sums.get(what, 0) + int(number)
        for number in FUZZED.findall(said):
            sums["inputs"] = sums.get("inputs", 0) + int(number)
    return ", ".join(f"{number} {what}" for what, number in sums.items())


cases = tree.parse(sys.argv[2]).getroot().findall("testcase")
rows = [line.rstrip("\n").split("\t") for line in open(sys.argv[1]) if line.strip() and not line.startswith("#")][1:]
print("\nWhat was shown:")
broken = 0
for promise, pattern in rows:
    own = [case for case in cases if re.search(pattern, case.get("name"))]
    ran = [case for case in own if case.get("status") == "run"]
    failed = [case for case in own if case.get("status") == "fail"]
    broken += bool(failed)
    word = "BROKEN" if failed else f"{len(ran)} tests" if ran else "not shown"
    print(f"  {promise:<66} {word:>10}  {counted(ran)}")
for case in cases:
    if not any(re.search(pattern, case.get("name")) for _, pattern in rows):
        print(f"  of no promise: {case.get('name')}")
sys.exit(1 if broken else 0)
