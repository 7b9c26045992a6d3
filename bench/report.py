#!/usr/bin/env python3
"""The table of docs/performance.md out of the numbers of exactBench.

usage: bench/report.py exact.json [--peers bench/peers.json]

Prints Markdown: a row per network and case, the documented elimination order and the effort side
by side. With peers it adds how many times as fast the effort is as the best of them, and ends with
the geometric mean over the rows that cost the peers 5 ms or more.
"""

import argparse
import json
import math
import sys

EXPENSIVE_MS = 5.0


def rows(benchmarks):
    """The two cases of each network: {(network, case): {"documented": ..., "effort": ...}}."""
    found = {}
    for entry in benchmarks:
        network, case, order = entry["name"].split("/")
        found.setdefault((network, case), {})[order] = entry
    return found


def milliseconds(value):
    return f"{value:.2f}" if value < 10 else f"{value:.0f}"


def cells(value):
    return f"{value / 1e6:.2f} M" if value >= 1e5 else f"{value / 1e3:.1f} k"


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("numbers")
    parser.add_argument("--peers")
    options = parser.parse_args()
    with open(options.numbers, encoding="utf-8") as file:
        numbers = json.load(file)
    peers = {}
    if options.peers:
        with open(options.peers, encoding="utf-8") as file:
            peers = json.load(file)["milliseconds"]

    print("| network | findings | documented | cells | effort | cells | MB | x mem. | peer | ratio |")
    print("| --- | --: | --: | --: | --: | --: | --: | --: | --: | --: |")
    logarithms = []
    for (network, case), orders in sorted(rows(numbers["benchmarks"]).items()):
        documented, effort = orders["documented"], orders["effort"]
        peer = peers.get(network, {}).get(case)
        ratio = ""
        if peer:
            times = peer / effort["update_ms"]
            ratio = f"{times:.1f}"
            if peer >= EXPENSIVE_MS:
                logarithms.append(math.log(times))
        print(
            f"| {network} | {effort['findings'] or ''} | {milliseconds(documented['update_ms'])} "
            f"| {cells(documented['cells'])} | {milliseconds(effort['update_ms'])} "
            f"| {cells(effort['cells'])} | {effort['table_bytes'] / 1e6:.1f} "
            f"| {effort['times_stream']:.1f} | {peer or ''} | {ratio} |"
        )
    if logarithms:
        mean = math.exp(sum(logarithms) / len(logarithms))
        print(f"\nGeometric mean of the ratios where the peer takes {EXPENSIVE_MS:g} ms or more: {mean:.1f}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
