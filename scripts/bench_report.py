#!/usr/bin/env python3
"""Turns the JSON files of Google Benchmark in one folder into a markdown report that puts every
figure beside its baseline (the benchmark of the same name with "_Baseline" after the figure's
name) and their ratio, then the counters of figures that report some, the machine, and the
findings kept by hand in bench/findings.md.

When the runs were repeated (--benchmark_repetitions), each figure is the median of its
repetitions. Times are CPU times, except for figures measured in real time or timed by hand (their names end
in "/real_time" or "/manual_time"). Figures that count items (items per second) also show the time
per item: per connector, per port, per cycle, as the suite says."""
import json
import pathlib
import platform
import sys

UNITS = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}
STANDARD_KEYS = {
    "name", "family_index", "per_family_instance_index", "run_name", "run_type", "repetitions",
    "repetition_index", "threads", "iterations", "real_time", "cpu_time", "time_unit",
    "items_per_second", "bytes_per_second", "label", "error_occurred", "error_message",
    "aggregate_name", "aggregate_unit",
}


def split_name(name):
    head, _, args = name.partition("/")
    return head, args


def time_ns(bench):
    """The time of one iteration in nanoseconds: real time for real-time and hand-timed figures,
    CPU time for the rest."""
    key = "real_time" if bench["name"].endswith(("/real_time", "/manual_time")) else "cpu_time"
    return bench[key] * UNITS[bench["time_unit"]]


def item_ns(bench):
    rate = bench.get("items_per_second")
    return 1e9 / rate if rate else None


def show(ns):
    if ns is None:
        return "-"
    if ns < 0:
        # A difference of two medians can fall below zero on a noisy machine.
        return "-" + show(-ns)
    if ns >= 1e9:
        return f"{ns / 1e9:.2f} s"
    if ns >= 1e6:
        return f"{ns / 1e6:.2f} ms"
    if ns >= 1e3:
        return f"{ns / 1e3:.2f} us"
    return f"{ns:.2f} ns"


def cpu_model():
    try:
        for line in pathlib.Path("/proc/cpuinfo").read_text().splitlines():
            if line.startswith("model name"):
                return line.split(":", 1)[1].strip()
    except OSError:
        pass
    return platform.processor() or "?"


def print_simulator_startup(data):
    """The simulator's start-up timed from outside (bench/sim_startup.py): each program beside the
    floor, the same process without a program."""
    floor = data["floor"]
    print("\n## The simulator's start-up, from outside\n")
    print("`bench/sim_startup.py` runs the built `varnix-sim` as a user does, on documents of N float64")
    print("ports and N scale connectors with a `gain` each (bench/gen_program.py), one cycle. Wall time,")
    print(f"user and system CPU of the process, median of {floor['runs']} runs; the commands take turns, one run")
    print("each per round, so that a slow minute of the shared machine weighs on all of them alike. The floor")
    print("is `varnix-sim --version`: starting the process and loading its libraries, no program.\n")
    print("| command | wall | fastest | user CPU | system CPU | wall above the floor | per item |")
    print("|---|---|---|---|---|---|---|")
    print(f"| `{floor['command']}` (the floor) | {show(floor['wall_s'] * 1e9)} | {show(floor['wall_min_s'] * 1e9)} "
          f"| {show(floor['user_s'] * 1e9)} | {show(floor['system_s'] * 1e9)} | - | - |")
    for figure in data["programs"]:
        above = figure["wall_s"] - floor["wall_s"]
        per_item = show(above / figure["items"] * 1e9) if figure["items"] >= 100 else "-"
        print(f"| `{figure['command']}` | {show(figure['wall_s'] * 1e9)} | {show(figure['wall_min_s'] * 1e9)} "
              f"| {show(figure['user_s'] * 1e9)} | {show(figure['system_s'] * 1e9)} | {show(above * 1e9)} "
              f"| {per_item} |")


def main():
    folder = pathlib.Path(sys.argv[1])
    findings = pathlib.Path(sys.argv[2]) if len(sys.argv) > 2 else None
    rows = []
    counter_rows = []
    counter_names = []
    context = None
    for path in sorted(folder.glob("*.json")):
        text = path.read_text()
        if not text.strip():
            # A suite of which --filter selected no figure writes an empty file.
            continue
        data = json.loads(text)
        context = context or data.get("context", {})
        benches = {}
        medians = {}
        for bench in data.get("benchmarks", []):
            if bench.get("error_occurred"):
                continue
            if bench.get("run_type", "iteration") == "iteration":
                benches.setdefault(bench["name"], bench)
            elif bench.get("aggregate_name") == "median":
                medians[bench["run_name"]] = dict(bench, name=bench["run_name"])
        # With repetitions, a figure is the median of its runs, so that one noisy run does not decide.
        benches.update(medians)
        suite = path.stem.removeprefix("bench_")
        for name, bench in benches.items():
            extra = {k: v for k, v in bench.items() if k not in STANDARD_KEYS and isinstance(v, (int, float))}
            if extra:
                for key in extra:
                    if key not in counter_names:
                        counter_names.append(key)
                counter_rows.append((suite, name, extra))
            head, args = split_name(name)
            if head.endswith("_Baseline"):
                continue
            base = benches.get(head + "_Baseline" + ("/" + args if args else ""))
            value, per_item = time_ns(bench), item_ns(bench)
            base_value = (item_ns(base) or time_ns(base)) if base else None
            mine = per_item if (base and item_ns(base)) or (not base and per_item) else value
            ratio = f"{mine / base_value:.2f}" if base_value else "-"
            rows.append((suite, f"`{name}`", show(value), show(per_item), show(base_value), ratio))

    print("# Benchmarks\n")
    print("Written by `scripts/bench`. Each figure is measured beside a hand-written baseline in the same")
    print("binary and the same run. \"time\" is one iteration; \"per item\" divides it by the items the")
    print("figure counts (connectors, ports, cycles, jobs, subscribers). The baseline column shows the")
    print("baseline's time per item when it counts items, else per iteration, and the ratio compares")
    print("like with like (1.00 = as fast as by hand). CPU time, except for figures measured in real")
    print("time or timed by hand (names ending in `/real_time` or `/manual_time`). Each figure is the")
    print("median of its repetitions when the run was repeated (`scripts/bench` repeats each 5 times).\n")
    if context:
        caches = ", ".join(f"L{c['level']} {c['type'].lower()} {c['size'] // 1024} KiB"
                           for c in context.get("caches", []))
        load = ", ".join(f"{x:.2f}" for x in context.get("load_avg", []))
        print("## Machine\n")
        print(f"- Host `{context.get('host_name', '?')}`: {cpu_model()}, {context.get('num_cpus', '?')} CPUs "
              f"at {context.get('mhz_per_cpu', '?')} MHz; caches {caches or '?'}")
        print(f"- {platform.system()} {platform.release()}, load average at the start {load or '?'} "
              "(the machine is shared: ratios hold better than absolute times)")
        print(f"- Optimised build (`-DCMAKE_BUILD_TYPE=Release`); run on {context.get('date', '?')}\n")
    print("## Figures\n")
    print("| suite | figure | time | per item | baseline | ratio |")
    print("|---|---|---|---|---|---|")
    for row in rows:
        print("| " + " | ".join(row) + " |")
    # The start-up's phases in the order they happen, any other counter after them.
    order = ["construct", "publish", "event"]
    first_seen = list(counter_names)
    counter_names.sort(key=lambda k: (order.index(k) if k in order else len(order), first_seen.index(k)))
    if counter_rows:
        print("\n## Counters\n")
        print("Counters that figures and baselines report beside their time (for the start-up:")
        print("nanoseconds per item in each phase).\n")
        print("| suite | figure | " + " | ".join(counter_names) + " |")
        print("|---|---|" + "---|" * len(counter_names))
        for suite, name, extra in counter_rows:
            cells = [show(extra[k]) if k in extra else "-" for k in counter_names]
            print(f"| {suite} | `{name}` | " + " | ".join(cells) + " |")
    startup = folder / "cli" / "startup.json"
    if startup.exists():
        print_simulator_startup(json.loads(startup.read_text()))
    if findings and findings.exists():
        print()
        print(findings.read_text().rstrip())


if __name__ == "__main__":
    main()
