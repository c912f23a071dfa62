#!/usr/bin/env python3
"""Turns the JSON files of Google Benchmark in one folder into a markdown table that puts every
figure beside its baseline (the benchmark of the same name with "_Baseline" after the figure's
name) and their ratio."""
import json
import pathlib
import sys


def split_name(name):
    head, _, args = name.partition("/")
    return head, args


def main():
    folder = pathlib.Path(sys.argv[1])
    rows = []
    context = None
    for path in sorted(folder.glob("*.json")):
        data = json.loads(path.read_text())
        context = context or data.get("context", {})
        times = {}
        for bench in data.get("benchmarks", []):
            if bench.get("run_type", "iteration") != "iteration":
                continue
            times[bench["name"]] = (bench["real_time"], bench["time_unit"])
        for name, (value, unit) in times.items():
            head, args = split_name(name)
            if head.endswith("_Baseline"):
                continue
            base_name = head + "_Baseline" + ("/" + args if args else "")
            base = times.get(base_name)
            ratio = f"{value / base[0]:.2f}" if base and base[0] > 0 else "-"
            base_text = f"{base[0]:.1f} {base[1]}" if base else "-"
            rows.append((path.stem, name, f"{value:.1f} {unit}", base_text, ratio))
    print("# Benchmarks\n")
    print("Written by `scripts/bench`. Each figure is measured beside a hand-written baseline in the")
    print("same binary and the same run; the ratio is figure / baseline (1.00 = as fast as by hand).\n")
    if context:
        print(f"Machine: {context.get('host_name', '?')}, {context.get('num_cpus', '?')} CPUs at "
              f"{context.get('mhz_per_cpu', '?')} MHz, build {context.get('library_build_type', '?')}, "
              f"{context.get('date', '')}\n")
    print("| suite | figure | time | baseline | ratio |")
    print("|---|---|---|---|---|")
    for row in rows:
        print("| " + " | ".join(row) + " |")


if __name__ == "__main__":
    main()
