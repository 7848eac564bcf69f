#!/usr/bin/env python3
"""The atlas in Chromium, from a file: atlas_test.py ATLAS.html BUILD

What the page shows of a function is what the reports of the build say, for choices made by hand and by address."""

import csv
import pathlib
import sys

from selenium import webdriver
from selenium.webdriver.common.by import By
from selenium.webdriver.support.ui import Select


def browser():
    options = webdriver.ChromeOptions()
    for option in ("--headless=new", "--no-sandbox", "--disable-gpu", "--disable-background-networking", "--no-first-run"):
        options.add_argument(option)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    return webdriver.Chrome(service=webdriver.chrome.service.Service("/usr/bin/chromedriver"), options=options)


def shown(page):
    """The rows of all tables by their name."""
    return {row.find_element(By.TAG_NAME, "th").text: row.find_element(By.TAG_NAME, "td").text
            for row in page.find_elements(By.CSS_SELECTOR, "#sheet tr")}


def choose(page, **choices):
    for name, text in choices.items():
        Select(page.find_element(By.ID, name)).select_by_value(text)


def expect(got, wanted, what):
    if got != wanted:
        sys.exit(f"{what}: {got!r}, not {wanted!r}")


def forms(build, function):
    """What the build's reports say of a kernel's form in each copy."""
    found = {}
    for path in (build / "reports").glob("*/*.tsv"):
        columns, *rows = (line.split("\t") for line in path.read_text(encoding="utf-8").splitlines() if not line.startswith("#"))
        if "form" in columns:
            found.update({f"form in {path.parent.name}": row[columns.index("form")] for row in rows if row[0] == function})
    return found


def main():
    atlas, build = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2])
    with open(build / "reports" / "audit_bodies.tsv", encoding="utf-8") as file:
        code = {row["function"]: row for row in csv.DictReader(file, delimiter="\t") if row["line"] != "unaligned"}
    copies = [folder.name for folder in (build / "reports").iterdir() if folder.is_dir()]
    expect(sorted(forms(build, "xfmgHartley_17_64f")), sorted(f"form in {copy}" for copy in copies), "copies with reports")
    page = browser()
    try:
        page.get(atlas.as_uri())
        for family, name, points in [("Hartley", "xfmgHartley_17_64f", 17), ("DFTInv_CToC", "xfmgDFTInv_CToC_60_64fc", 60),
                                     ("WHT", "xfmgWHT_13_64f", 8192)]:
            choose(page, family=family, precision="double")
            choose(page, points=str(points), metric="instructions")
            expect(page.find_element(By.TAG_NAME, "caption").text, name, "the function")
            rows = shown(page)
            for column, words in [("instructions", "instructions"), ("adds", "additions"), ("code_bytes", "bytes of code")]:
                expect(rows.get(words), code[name][column], f"{name}, {words}")
            expect({row: text for row, text in rows.items() if row.startswith("form in")}, forms(build, name), f"{name}, forms")
            line = page.find_element(By.CSS_SELECTOR, "#chart polyline").get_attribute("points").split()
            expect(len(line), 13 if family == "WHT" else 63, f"{name}, lengths in the chart")
        page.get("about:blank")
        page.get(atlas.as_uri() + "#DCT4/single/1024/error")
        expect(page.find_element(By.TAG_NAME, "caption").text, "xfmgDCT4_32f, 1024 points", "the function by address")
        expect(len(page.find_elements(By.CSS_SELECTOR, "#chart polyline")), 2, "lines of Xfm and FFTW")
        expect([entry["message"] for entry in page.get_log("browser")], [], "messages of the browser")
    finally:
        page.quit()
    print("the atlas shows what the reports say")


main()
