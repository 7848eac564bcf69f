#!/usr/bin/env python3
"""not_run.py RESULTS.xml: the tests that the runner did not run, or that skipped themselves, each with its reason: the
line that begins with "skipped:", or what a GoogleTest case says, or else the runner's own word."""
import re
import sys
import xml.etree.ElementTree as tree


def reason(case):
    said = case.findtext("system-out") or ""
    found = re.search(r"^skipped: (.*)$", said, re.M) or re.search(r": Skipped\n(.+)$", said, re.M)
    if found:
        return found.group(1)
    skipped = case.find("skipped")
    return skipped.get("message") if skipped is not None and skipped.get("message") else case.get("status")


cases = tree.parse(sys.argv[1]).getroot().findall("testcase")
rows = [(case.get("name"), reason(case)) for case in cases if case.get("status") not in ("run", "fail")]
print("\nNot run:" if rows else "\nNot run: none of those chosen")
for name, why in rows:
    print(f"  {name}: {why}")
