#!/usr/bin/env python3
"""Refuses tracked source files above 600 lines that tools/check_sizes.allow does not name.

usage: check_sizes.py ROOT

A line of the allow list is "<file> <most lines> <reason>". A line that has become needless is
refused too, so that the list cannot outlive its reasons.
"""
import pathlib
import subprocess
import sys

LIMIT = 600
SUFFIXES = {".h", ".cpp", ".java", ".py", ".sh", ".cmake"}


def read_allowed(path, messages):
    allowed = {}
    for number, line in enumerate(path.read_text().splitlines() if path.exists() else [], 1):
        words = line.split(None, 2)
        if not words or words[0].startswith("#"):
            continue
        if len(words) < 3 or not words[1].isdigit():
            messages.append(f"{path}:{number}: wanted: <file> <most lines> <reason>")
        else:
            allowed[words[0]] = int(words[1])
    return allowed


def main(arguments):
    if len(arguments) != 1:
        sys.exit(__doc__)
    root = pathlib.Path(arguments[0])
    # The folder may belong to somebody else than the one who runs the check, as in a container.
    tracked = subprocess.run(["git", "-c", "safe.directory=*", "ls-files", "-z"], cwd=root,
                             check=True, capture_output=True, text=True).stdout.split("\0")
    messages = []
    allowed = read_allowed(root / "tools/check_sizes.allow", messages)
    needless = set(allowed)
    for name in tracked:
        path = root / name
        if (path.suffix not in SUFFIXES or not path.is_file()
                or name.startswith("third_party/")):
            continue
        lines = path.read_bytes().count(b"\n")
        if lines > LIMIT:
            needless.discard(name)
        if lines > allowed.get(name, LIMIT):
            messages.append(f"{name}: {lines} lines, at most {allowed.get(name, LIMIT)}")
    messages += [f"tools/check_sizes.allow: {name} needs no line any more" for name in needless]
    for message in sorted(messages):
        print(message)
    return 1 if messages else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
