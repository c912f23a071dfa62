#!/usr/bin/env python3
"""Times the simulator's start-up from outside, as a user sees it: `varnix-sim run DOC --type
StartUp --cycles 1` on documents from bench/gen_program.py (N float64 ports, N scale connectors with
a `gain` each), and, for the floor under every run, `varnix-sim --version` (the process, its
libraries and their loading, no program).

Each figure is the median of --runs runs (wall time, user and system CPU of the child); the
commands take turns, one run each per round. Peak memory
is not taken here: a child of this script starts as a copy of the Python interpreter, whose pages the
kernel's peak for the child already counts. Writes JSON to --output (standard output by default) for scripts/bench_report.py.

Usage: bench/sim_startup.py --sim PATH [--sizes 1,1000,10000] [--runs 11] [--output FILE]
"""
import argparse
import json
import os
import pathlib
import statistics
import subprocess
import sys
import tempfile
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))
import gen_program  # noqa: E402


def timed(command):
    """Runs `command` once; its wall time, user and system CPU (seconds)."""
    started = time.perf_counter()
    child = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
    _, status, usage = os.wait4(child.pid, 0)
    wall = time.perf_counter() - started
    error = child.stderr.read().decode(errors="replace")
    child.stderr.close()
    code = os.waitstatus_to_exitcode(status)
    if code != 0:
        raise SystemExit(f"bench/sim_startup.py: {' '.join(command)} ended with {code}:\n{error}")
    return wall, usage.ru_utime, usage.ru_stime


def measure(commands, runs):
    """Runs every command `runs` times, in turns (each command once per round), so that a slow
    minute of a shared machine weighs on every figure alike instead of on the one measured then."""
    samples = [[] for _ in commands]
    for _ in range(runs):
        for index, command in enumerate(commands):
            samples[index].append(timed(command))
    figures = []
    for command, taken in zip(commands, samples):
        columns = list(zip(*taken))
        figures.append({
            "command": " ".join(pathlib.Path(c).name if i == 0 else c for i, c in enumerate(command)),
            "runs": runs,
            "wall_s": statistics.median(columns[0]),
            "wall_min_s": min(columns[0]),
            "user_s": statistics.median(columns[1]),
            "system_s": statistics.median(columns[2]),
        })
    return figures


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--sim", required=True, help="the varnix-sim to time")
    parser.add_argument("--sizes", default="1,1000,10000", help="program sizes N, comma-separated")
    parser.add_argument("--runs", type=int, default=11, help="runs per figure (their median is kept)")
    parser.add_argument("--output", help="JSON file to write (default: standard output)")
    arguments = parser.parse_args()
    if not os.access(arguments.sim, os.X_OK):
        raise SystemExit(f"bench/sim_startup.py: {arguments.sim} is not an executable; build varnix-sim first")
    sizes = [int(size) for size in arguments.sizes.split(",") if size]

    with tempfile.TemporaryDirectory(prefix="varnix-sim-startup-") as folder:
        commands = [[arguments.sim, "--version"]]
        for size in sizes:
            path = pathlib.Path(folder) / f"startup-{size}.prog.config"
            path.write_text(gen_program.document(size, "StartUp"))
            commands.append([arguments.sim, "run", str(path), "--type", "StartUp", "--cycles", "1"])
        floor, *programs = measure(commands, arguments.runs)
    result = {"floor": floor, "programs": []}
    print(f"{'floor':>12}: {floor['wall_s'] * 1e3:7.1f} ms wall, {floor['user_s'] * 1e3:6.1f} ms user",
          file=sys.stderr)
    for size, figure in zip(sizes, programs):
        figure["items"] = size
        figure["command"] = f"varnix-sim run startup-{size}.prog.config --type StartUp --cycles 1"
        result["programs"].append(figure)
        print(f"{size:>6} items: {figure['wall_s'] * 1e3:7.1f} ms wall, "
              f"{figure['user_s'] * 1e3:6.1f} ms user", file=sys.stderr)
    text = json.dumps(result, indent=2) + "\n"
    if arguments.output:
        pathlib.Path(arguments.output).write_text(text)
    else:
        sys.stdout.write(text)


if __name__ == "__main__":
    main()
