#!/usr/bin/env python3
"""Prints ctest's outcome of each build folder given, then the sum of all of them as the last line."""
import pathlib
import sys
import xml.etree.ElementTree

total = {"tests": 0, "failures": 0, "skipped": 0}
for folder in map(pathlib.Path, sys.argv[1:]):
    suite = xml.etree.ElementTree.parse(folder / "ctest.xml").getroot()
    ran = {key: int(suite.get(key, "0")) for key in total}
    ran["skipped"] += int(suite.get("disabled", "0"))
    if ran["tests"] == 0:
        sys.exit(f"{folder}: no test ran")
    print(f"{folder.name}: {ran['tests']} tests, {ran['failures']} failed, {ran['skipped']} skipped")
    for key in total:
        total[key] += ran[key]
passed = total["tests"] - total["failures"] - total["skipped"]
print(f"{passed} passed, {total['failures']} failed, {total['skipped']} skipped")
sys.exit(1 if total["failures"] else 0)
