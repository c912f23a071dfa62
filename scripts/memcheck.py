#!/usr/bin/env python3
"""Runs the test suite of a build under valgrind's memcheck (scripts/test --valgrind).

  scripts/memcheck.py BUILD SUPPRESSIONS [--jobs N] [--filter REGEX]

Every GoogleTest test runs under memcheck. A test suite (all tests of one `Suite.`) runs as one
process, which keeps valgrind's start-up (several seconds for the libraries' debug information) to
once per suite instead of once per test; a suite whose tests need a process of their own (one
that fails as a group but not under memcheck's error status) is run again test by test. The
simulator's command-line tests (VarnixSimCli.*) run with the simulator itself under memcheck.

Left out, and why: the package tests (they run cmake, dpkg and a compiler, not the library), the
hostile documents (they bound time and memory, which memcheck multiplies; the plain and sanitized
builds run them) and the tests that drive the simulator from Python clients or a browser (the
Modbus server and the HTML report are run under memcheck by their GoogleTest tests).

Any memcheck error or leak that tests/valgrind.supp does not accept fails, and its report is
printed. Exit status 0 when everything passed, 1 otherwise.
"""
import argparse
import concurrent.futures
import json
import os
import re
import subprocess
import sys
import time

MEMCHECK_STATUS = 97

# Tests that cannot run under memcheck at all, with the reason; the plain and sanitized builds run them.
LEFT_OUT = {
    "ProcessTest.AFailingExeclThrowsInTheChildCopy":
        "its child copy's execl fails on purpose, and valgrind cannot go on in a process whose execve failed",
    "ProcessTest.AWorkingDirectoryThatDoesNotExistFailsOnlyInTheChildCopy":
        "its child copy of the test process leaves by _exit from inside the test, and the copy's own leak "
        "check reports what the frames it never returns to still hold; the parent, the test itself, is clean",
    "ThreadPoolQueueTest.AJobThatCapturesMoreThanTheSmallBufferTakesAHeapBlock":
        "it counts allocations through its own operator new, which valgrind replaces with its own",
}


def memcheck_command(suppressions):
    return ["valgrind", f"--error-exitcode={MEMCHECK_STATUS}", "--leak-check=full",
            "--show-leak-kinds=definite,indirect,possible",
            "--errors-for-leak-kinds=definite,indirect,possible", "--num-callers=50",
            "--read-inline-info=no", f"--suppressions={suppressions}", "-q"]


def gtest_groups(tests):
    """(executable, working directory, environment, suite) -> full test names, in ctest's order."""
    groups = {}
    for test in tests:
        command = test.get("command") or []
        filters = [a for a in command if a.startswith("--gtest_filter=")]
        if not command or not filters:
            continue
        name = filters[0][len("--gtest_filter="):]
        suite = name.split(".", 1)[0]
        properties = {p["name"]: p["value"] for p in test.get("properties", [])}
        environment = tuple(properties.get("ENVIRONMENT", []))
        key = (command[0], properties.get("WORKING_DIRECTORY", os.getcwd()), environment, suite)
        groups.setdefault(key, []).append(name)
    return groups


def run(command, cwd, environment, timeout):
    env = dict(os.environ)
    for entry in environment:
        name, _, value = entry.partition("=")
        env[name] = value
    started = time.monotonic()
    try:
        done = subprocess.run(command, cwd=cwd, env=env, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              timeout=timeout)
        return done.returncode, done.stdout.decode("utf-8", "replace"), time.monotonic() - started
    except subprocess.TimeoutExpired as expired:
        output = (expired.stdout or b"").decode("utf-8", "replace")
        return None, output + f"\n(stopped after {timeout} s)", time.monotonic() - started


def run_suite(key, names, suppressions, timeout):
    """Returns [(label, passed, output)] for one suite: as a group, or test by test."""
    executable, cwd, environment, suite = key
    base = memcheck_command(suppressions) + [executable, "--gtest_also_run_disabled_tests"]
    left_out = [name for name in names if name in LEFT_OUT]
    names = [name for name in names if name not in LEFT_OUT]
    if not names:
        return []
    group = f"--gtest_filter={suite}.*" + ("-" + ":".join(left_out) if left_out else "")
    status, output, seconds = run(base + [group], cwd, environment, timeout)
    label = f"{os.path.basename(executable)} {suite}.* ({len(names)} tests, {seconds:.0f} s)"
    if status == 0:
        return [(label, True, "")]
    if status == MEMCHECK_STATUS or status is None:
        return [(label, False, output)]
    # A test failed as part of the group: the suite's tests may need a fresh process each.
    results = []
    for name in names:
        status, output, seconds = run(base + [f"--gtest_filter={name}"], cwd, environment, timeout)
        results.append((f"{os.path.basename(executable)} {name} ({seconds:.0f} s, alone)", status == 0, output))
    return results


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build")
    parser.add_argument("suppressions")
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--filter", default="", help="only suites whose name matches this regular expression")
    parser.add_argument("--timeout", type=int, default=3600, help="seconds for one process")
    arguments = parser.parse_args()
    arguments.build = os.path.abspath(arguments.build)
    arguments.suppressions = os.path.abspath(arguments.suppressions)

    listing = subprocess.run(["ctest", "--test-dir", arguments.build, "--show-only=json-v1"], check=True,
                             stdout=subprocess.PIPE).stdout
    tests = json.loads(listing)["tests"]
    groups = gtest_groups(tests)
    if arguments.filter:
        pattern = re.compile(arguments.filter)
        groups = {key: names for key, names in groups.items() if pattern.search(key[3])}
    total = sum(len(names) for names in groups.values())
    print(f"memcheck: {total} tests in {len(groups)} suites, {arguments.jobs} at a time", flush=True)
    for name, reason in LEFT_OUT.items():
        print(f"memcheck: leaves out {name}: {reason}", flush=True)

    failed = []
    finished = 0
    started = time.monotonic()
    with concurrent.futures.ThreadPoolExecutor(max_workers=arguments.jobs) as pool:
        futures = {pool.submit(run_suite, key, names, arguments.suppressions, arguments.timeout): key
                   for key, names in groups.items()}
        for future in concurrent.futures.as_completed(futures):
            finished += 1
            for label, passed, output in future.result():
                print(f"[{finished}/{len(groups)}] {'ok    ' if passed else 'FAILED'} {label}", flush=True)
                if not passed:
                    failed.append(label)
                    print(output, flush=True)

    cli = []
    if not arguments.filter:
        # The command-line tests, with the simulator under memcheck (RunCli.cmake puts the wrapper
        # in front of it).
        wrapper = ";".join(memcheck_command(arguments.suppressions))
        env = dict(os.environ, VARNIX_TEST_WRAPPER=wrapper)
        done = subprocess.run(["ctest", "--test-dir", arguments.build, "-R", r"^VarnixSimCli\.",
                               "-j", str(arguments.jobs), "--output-on-failure", "--timeout", "1800"], env=env)
        cli = ["VarnixSimCli.* (see above)"] if done.returncode != 0 else []

    minutes = (time.monotonic() - started) / 60
    print(f"memcheck: {total} GoogleTest tests in {len(groups)} suites and the command-line tests, "
          f"{minutes:.1f} minutes; {len(failed) + len(cli)} failed", flush=True)
    for label in failed + cli:
        print(f"  FAILED {label}")
    return 1 if failed or cli else 0


if __name__ == "__main__":
    sys.exit(main())
