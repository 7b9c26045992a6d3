#!/usr/bin/env python3
"""Line coverage of src, a line per file, worst first, and a line per folder.

usage: coverage.py BUILD      after `cmake --preset coverage`, a build and `ctest --preset coverage`
"""
import collections
import json
import pathlib
import subprocess
import sys


def count_lines(build, src):
    """{file: {line: executed}} over all translation units: a line counts once, run by any test."""
    lines = collections.defaultdict(dict)
    for data in sorted(build.rglob("*.gcda")):
        run = subprocess.run(["gcov", "--json-format", "--stdout", str(data)],
                             check=True, capture_output=True, text=True)
        for report in run.stdout.splitlines():
            for entry in json.loads(report)["files"]:
                path = pathlib.Path(entry["file"])
                if src not in path.parents:
                    continue
                known = lines[path.relative_to(src)]
                for line in entry["lines"]:
                    number = line["line_number"]
                    known[number] = known.get(number, False) or line["count"] > 0
    return lines


def print_table(title, table):
    print(f"\n{title}")
    for name, (done, total) in sorted(table.items(), key=lambda row: row[1][0] / row[1][1]):
        print(f"{100 * done / total:6.1f} %  {done:6} of {total:6}  {name}")


def main(arguments):
    if len(arguments) != 1:
        sys.exit(__doc__)
    src = pathlib.Path(__file__).resolve().parents[1] / "src"
    files, folders = {}, collections.defaultdict(lambda: (0, 0))
    for path, lines in count_lines(pathlib.Path(arguments[0]).resolve(), src).items():
        counts = (sum(lines.values()), len(lines))
        if counts[1]:
            files[str(path)] = counts
            for group in (str(path.parent), "all"):
                folders[group] = tuple(a + b for a, b in zip(folders[group], counts))
    if not files:
        sys.exit("no counts of src below " + arguments[0] + "; was it built with --preset coverage?")
    print_table("file", files)
    print_table("folder", folders)


if __name__ == "__main__":
    main(sys.argv[1:])
