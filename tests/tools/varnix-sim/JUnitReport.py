#!/usr/bin/env python3
"""`varnix-sim test --junit`: the report validates against the JUnit schema kept beside this file
and reads, with Python's standard library, as a CI server reads it: one testsuite per scenario, one
testcase per row of expectations, a failure with expected and actual for each one that did not
hold, and totals that add up.

Usage: JUnitReport.py SIMULATOR SOURCE_DIR WORK_DIR
Exit status 77 (skipped) with a message when xmllint is missing."""
import os
import shutil
import subprocess
import sys
import xml.etree.ElementTree as ET

sim, source, work = sys.argv[1:4]
here = os.path.dirname(os.path.abspath(__file__))
schema = os.path.join(here, "junit.xsd")
os.makedirs(work, exist_ok=True)
report = os.path.join(work, "report.xml")

document = "examples/tank/TankProgram.prog.config"
failing = "tests/tools/varnix-sim/documents/tank.failing.scenario.csv"
passing = "examples/tank/tank.scenario.csv"


def check(condition, message):
    if not condition:
        print("FAILED: " + message)
        sys.exit(1)


if shutil.which("xmllint") is None:
    print("SKIPPED: xmllint is not installed (apt-get install libxml2-utils, or run scripts/setup)")
    sys.exit(77)

if os.path.exists(report):
    os.remove(report)
run = subprocess.run([sim, "test", document, failing, passing, "--junit", report], cwd=source,
                     capture_output=True, text=True, timeout=120)
check(run.returncode == 1, f"exit status {run.returncode}, expected 1\n{run.stdout}{run.stderr}")

lint = subprocess.run(["xmllint", "--noout", "--schema", schema, report], capture_output=True, text=True,
                      timeout=60)
check(lint.returncode == 0, "the report does not validate against junit.xsd:\n" + lint.stderr)

root = ET.parse(report).getroot()
check(root.tag == "testsuites", f"root element {root.tag}")
suites = root.findall("testsuite")
check([s.get("name") for s in suites] == [failing, passing], f"testsuites {[s.get('name') for s in suites]}")

bad, good = suites
bad_cases = bad.findall("testcase")
check(len(bad_cases) == int(bad.get("tests")) == 3, f"{len(bad_cases)} testcases, tests={bad.get('tests')}")
check(bad.get("failures") == "2", f"failures={bad.get('failures')}")
check(bad_cases[0].get("name") == "line 4 (cycle 1): level, level.quality, level.time, display",
      f"testcase name {bad_cases[0].get('name')!r}")
check(bad_cases[0].get("classname") == "tank.failing.scenario", f"classname {bad_cases[0].get('classname')!r}")
check(bad_cases[0].find("failure") is None, "the first row passed")
failures = [f for case in bad_cases for f in case.findall("failure")]
check([f.get("message") for f in failures] == [
    "cycle 3: level: expected 25.5~0.1, got 25",
    "cycle 9: level.quality: expected Bad Overrange, got Good",
    "cycle 9: level.time: expected T#90ms, got T#80ms",
], f"failure messages {[f.get('message') for f in failures]}")
check("expected: Bad Overrange\nactual: Good" in failures[1].text, f"failure text {failures[1].text!r}")
check(failing + ":6: cycle 9" in failures[1].text, "the failure text names the file and line")

good_cases = good.findall("testcase")
check(len(good_cases) == int(good.get("tests")) == 8, f"{len(good_cases)} passing testcases")
check(good.get("failures") == "0" and all(c.find("failure") is None for c in good_cases), "the tank scenario passes")

cases = bad_cases + good_cases
check(int(root.get("tests")) == len(cases) == 11, f"total tests {root.get('tests')}")
check(int(root.get("failures")) == 2 and root.get("errors") == "0", f"total failures {root.get('failures')}")
for element in [root] + suites + cases:
    check(float(element.get("time")) >= 0, f"time of {element.tag}")
check(abs(float(root.get("time")) - sum(float(s.get("time")) for s in suites)) < 1e-5, "total time")
properties = {p.get("name"): p.get("value") for p in good.find("properties")}
check(properties == {"cycles": "20", "expectations": "32"}, f"properties {properties}")

# All passing: status 0 and a report without failures.
run = subprocess.run([sim, "test", document, passing, "--junit", report], cwd=source, capture_output=True,
                     text=True, timeout=120)
check(run.returncode == 0, f"exit status {run.returncode} for the passing scenario\n{run.stdout}{run.stderr}")
root = ET.parse(report).getroot()
check(root.get("failures") == "0" and root.get("tests") == "8", "the passing report's totals")
print("the JUnit report validates and reads as expected")
