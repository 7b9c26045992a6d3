#!/usr/bin/env python3
"""Compares two JSON files of the benchmarks and tells what became slower.

usage: compare.py BASELINE NEW [--tolerance 0.15] [--floor 0.05]

Reads what exactBench writes and what the other programs write with --benchmark_out=FILE. Numbers
are matched by the name of their benchmark; of repetitions the least counts. Slower means: by more
than the tolerance (0.15 is 15 %) and by more than the floor in milliseconds, below which times are
noise. Also told: results that became wrong, tables that grew, and names that only one file has.

Ends with 1 when something became slower, grew, became wrong or is gone; else with 0.
"""
import argparse
import json
import sys

TO_MILLISECONDS = {"s": 1e3, "ms": 1.0, "us": 1e-3, "ns": 1e-6}
TIMES = ("load_ms", "triangulation_ms", "propagation_ms", "update_ms")
WRONG_ABOVE = 1e-9  # of the difference to reference posteriors


def numbers_of(entry):
    """The times of a benchmark in milliseconds, and its bytes, by the name of the number."""
    if "real_time" in entry:
        return {"time_ms": entry["real_time"] * TO_MILLISECONDS[entry.get("time_unit", "ns")]}
    found = {name: entry[name] for name in TIMES if name in entry}
    if "table_bytes" in entry:
        found["table_bytes"] = entry["table_bytes"]
    return found


def is_wrong(entry):
    return (entry.get("code", 0) != 0 or entry.get("invalid", 0) > 0
            or entry.get("difference", 0.0) > WRONG_ABOVE or entry.get("error_occurred", False))


def read(name):
    """Benchmarks by name: the least of each number, and whether any run of it was wrong."""
    with open(name, encoding="utf-8") as file:
        entries = json.load(file)["benchmarks"]
    found = {}
    for entry in entries:
        if entry.get("run_type") == "aggregate":
            continue
        numbers, wrong = found.setdefault(entry["name"], ({}, []))
        wrong.append(is_wrong(entry))
        for key, value in numbers_of(entry).items():
            numbers[key] = min(value, numbers.get(key, value))
    return found


def compare(baseline, new, tolerance, floor):
    """Lines about what became worse, and about what became faster."""
    worse, better = [], []
    for name, (old_numbers, _) in baseline.items():
        if name not in new:
            worse.append(f"{name}: gone")
            continue
        new_numbers, wrong = new[name]
        if any(wrong):
            worse.append(f"{name}: wrong result")
        for key, old in old_numbers.items():
            value = new_numbers.get(key, old)
            least = floor if key.endswith("_ms") else 1e6
            ratio = value / old if old > 0 else float("inf") if value > 0 else 1.0
            line = f"{name}: {key} {old:.6g} -> {value:.6g} ({ratio:.2f} times)"
            if ratio > 1 + tolerance and value - old > least:
                worse.append(line)
            elif ratio < 1 / (1 + tolerance) and old - value > least:
                better.append(line)
    return worse, better


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("baseline")
    parser.add_argument("new")
    parser.add_argument("--tolerance", type=float, default=0.15)
    parser.add_argument("--floor", type=float, default=0.05, help="milliseconds")
    arguments = parser.parse_args()
    baseline, new = read(arguments.baseline), read(arguments.new)
    worse, better = compare(baseline, new, arguments.tolerance, arguments.floor)
    for title, lines in (("worse", worse), ("faster or smaller", better),
                         ("new", [name for name in new if name not in baseline])):
        if lines:
            print(f"{title}:")
            print("\n".join(f"  {line}" for line in lines))
    print(f"{len(baseline)} benchmarks compared, {len(worse)} worse")
    return 1 if worse else 0


if __name__ == "__main__":
    sys.exit(main())
