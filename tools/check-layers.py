#!/usr/bin/env python3
"""Fails when a file of the core includes a header from a layer above its own.

    python3 tools/check-layers.py            # from anywhere; reads tools/layers.txt

Prints one line per upward include, "file:line: layer 'a' includes 'header' of layer 'b'", and exits 1; a file
or header that no layer covers is an error too, so a new folder has to be placed in the list.
"""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
CORE = ROOT / "Modules" / "VantelCore"
TREES = (CORE / "src", CORE / "include" / "Vantel")
INCLUDE = re.compile(r'^\s*#\s*include\s*[<"]([^>"]+)[>"]')


def read_layers(path):
    owners = {}  # name -> (rank, layer)
    names = []
    for line in path.read_text().splitlines():
        words = line.split("#", 1)[0].split()
        if not words:
            continue
        layer, covered = words[0], words[1:]
        if layer not in names:
            names.append(layer)
        for name in covered:
            owners[name] = (names.index(layer), layer)
    return owners


def layer_of(name, owners):
    parts = name.split("/")
    for length in range(len(parts), 0, -1):
        found = owners.get("/".join(parts[:length]))
        if found:
            return found
    return None


def included_name(text, source_dir, tree):
    """The included header as a name under a tree, or None for a header from outside the core."""
    if text.startswith("Vantel/"):
        return text[len("Vantel/"):]
    # Private headers are named from src/ ("Projects/EditRecorder.h") or from the including file's folder.
    for candidate, base in ((source_dir / text, tree), (TREES[0] / text, TREES[0])):
        if candidate.is_file():
            return candidate.resolve().relative_to(base).as_posix()
    return None


def check(owners):
    faults = []
    for tree in TREES:
        for path in sorted(tree.rglob("*")):
            if path.suffix not in (".h", ".cpp"):
                continue
            name = path.relative_to(tree).as_posix()
            own = layer_of(name, owners)
            if own is None:
                faults.append(f"{path.relative_to(ROOT)}: no layer in tools/layers.txt covers it")
                continue
            for number, line in enumerate(path.read_text().splitlines(), 1):
                match = INCLUDE.match(line)
                header = match and included_name(match.group(1), path.parent, tree)
                if not header:
                    continue
                target = layer_of(header, owners)
                where = f"{path.relative_to(ROOT)}:{number}"
                if target is None:
                    faults.append(f"{where}: no layer in tools/layers.txt covers '{match.group(1)}'")
                elif target[0] > own[0]:
                    faults.append(f"{where}: layer '{own[1]}' includes '{match.group(1)}' of layer '{target[1]}'")
    return faults


def main():
    faults = check(read_layers(ROOT / "tools" / "layers.txt"))
    for fault in faults:
        print(fault)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
