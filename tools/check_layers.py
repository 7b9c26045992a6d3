#!/usr/bin/env python3
"""Holds every #include of src against the layers of the engine.

usage: check_layers.py LAYERS SRC

LAYERS is the file layers.txt that CMake writes: one line "<folder>: <folders it may include>" for
each kvn_component(). Refused are
  - a folder of src without a component, and an order of folders that goes round (the four folders
    of the model know each other and count as one);
  - an include that names no file of src from the include root, or a folder not declared;
  - a system header outside the C++ library that the folder has no business with;
  - headers that include each other in a circle;
  - a header of the model that includes a header of another model folder for anything but a base
    class. Where another reason is good, it stands on the line: #include "..."  // across: reason
"""
import pathlib
import re
import sys

MODEL = {"network", "definitions", "values", "expressions"}
INCLUDE = re.compile(r'^\s*#\s*include\s*(["<])([^">]+)[">](.*)$')
CLASS = re.compile(r'\b(?:class|struct)\s+(?:\[\[\w+\]\]\s*)?(\w+)(?:\s+final)?\s*(?::([^:{;][^{;]*))?\{')

# The engine depends on the C++ runtime, the C runtime's files and numbers, Expat and jni.h. A
# header without a dot in its name belongs to the C++ library.
C_HEADERS = {"locale.h", "stdio.h", "stdlib.h", "fcntl.h", "unistd.h", "sys/mman.h", "sys/stat.h", "sys/types.h",
             "time.h"}
FOREIGN = {"expat.h": {"formats/xml"}, "jni.h": {"bridge"}}


def read_layers(path):
    layers = {}
    for line in path.read_text().splitlines():
        if line.strip():
            folder, below = line.split(":", 1)
            layers[folder.strip()] = set(below.split())
    return layers


def find_circle(edges):
    """One circle of the graph {node: [successors]} as a list of nodes, or None."""
    done = set()
    for start in sorted(edges):
        path, open_nodes, stack = [], set(), [(start, None)]
        while stack:
            node, successors = stack.pop()
            if successors is None:
                if node in done:
                    continue
                if node in open_nodes:
                    return path[path.index(node):] + [node]
                path.append(node)
                open_nodes.add(node)
                successors = iter(sorted(edges.get(node, ())))
            following = next(successors, None)
            if following is None:
                path.pop()
                open_nodes.discard(node)
                done.add(node)
            else:
                stack += [(node, successors), (following, None)]
    return None


def classes_and_bases(text):
    """Names of the classes a header defines, and all words of their base clauses."""
    text = re.sub(r'//[^\n]*|/\*.*?\*/', ' ', text, flags=re.S)
    names, bases = set(), set()
    for match in CLASS.finditer(text):
        names.add(match.group(1))
        bases.update(re.findall(r'\w+', match.group(2) or ''))
    return names, bases


def check_folders(layers):
    group = lambda folder: "model" if folder in MODEL else folder
    edges = {}
    for folder, below in layers.items():
        edges.setdefault(group(folder), set()).update(
            group(f) for f in below if group(f) != group(folder))
    circle = find_circle(edges)
    return ["MAY_INCLUDE goes round: " + " -> ".join(circle)] if circle else []


def check_file(path, folder, layers, src):
    """Messages of one file, and the headers of src that it includes."""
    text = path.read_text(encoding="utf-8", errors="replace")
    messages, included = [], set()
    for number, line in enumerate(text.splitlines(), 1):
        match = INCLUDE.match(line)
        if not match:
            continue
        quote, name, rest = match.groups()
        where = f"{path}:{number}: "
        if quote == "<":
            if name in FOREIGN:
                if folder not in FOREIGN[name]:
                    messages.append(where + f"<{name}> is for {', '.join(FOREIGN[name])} only")
            elif ("." in name or "/" in name) and name not in C_HEADERS:
                messages.append(where + f"<{name}> is no header the engine may depend on")
            continue
        target = src / name
        if name.startswith(".") or not target.is_file():
            messages.append(where + f'"{name}" is no file seen from src')
            continue
        included.add(name)
        other = str(pathlib.PurePosixPath(name).parent)
        if other != folder and other not in layers.get(folder, ()):
            messages.append(where + f"{folder} may not include {other}")
        elif (path.suffix == ".h" and other != folder and {folder, other} <= MODEL
              and not re.search(r'//\s*across: \S', rest)):
            names, _ = classes_and_bases(target.read_text(encoding="utf-8", errors="replace"))
            _, bases = classes_and_bases(text)
            if not names & bases:
                messages.append(where + f'"{name}" is included across for no base class: '
                                'forward-declare, or give the reason as "// across: ..."')
    return messages, included


def check_tree(layers, src):
    messages, headers = check_folders(layers), {}
    for path in sorted(src.rglob("*")):
        if path.suffix not in (".h", ".cpp"):
            continue
        name = path.relative_to(src).as_posix()
        folder = str(pathlib.PurePosixPath(name).parent)
        if folder not in layers:
            messages.append(f"{path}: the folder {folder} declares no component")
            continue
        found, included = check_file(path, folder, layers, src)
        messages += found
        if path.suffix == ".h":
            headers[name] = included
    circle = find_circle(headers)
    if circle:
        messages.append("headers include each other: " + " -> ".join(circle))
    return messages


def main(arguments):
    if len(arguments) != 2:
        sys.exit(__doc__)
    messages = check_tree(read_layers(pathlib.Path(arguments[0])), pathlib.Path(arguments[1]))
    for message in messages:
        print(message)
    return 1 if messages else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
