#!/usr/bin/env python3
"""Holds every include of the library and of its program against tools/layers.txt.

Complains about: an include that points up the floors, from a header or from a source; a circle of files; a file that
stands on no floor; an include that a `never` line forbids; a project file that is included without its full path or
does not exist; an exporting header that vomsg/vomsg.h does not reach; a program, example or consumer that includes
what neither vomsg/vomsg.h nor vomsg/mail.h reaches; a file of the modern face that includes or names what is not exported.

usage: check_includes.py [ROOT]
"""
import fnmatch
import pathlib
import re
import sys

INCLUDE = re.compile(r'^\s*#\s*include\s*(<[^>]+>|"[^"]+")')
UMBRELLA = "vomsg/vomsg.h"
FACE = "vomsg/mail.h"
# Folders that stand outside of the library and may use only what callers may use.
CALLERS = ("cli", "examples", "gateway", "tests/install", "tests/mail")


class Layers:
    def __init__(self, text):
        self.floors = []  # names, from the ground up
        self.patterns = []  # (pattern, index of the floor)
        self.never = []  # (pattern of the file, pattern of what it includes)
        for number, line in enumerate(text.splitlines(), 1):
            line = line.split("#", 1)[0].strip()
            if not line:
                continue
            if line.startswith("floor "):
                self.floors.append(line[len("floor "):].strip())
            elif line.startswith("never "):
                user, arrow, used = line[len("never "):].partition(" -> ")
                if not arrow:
                    sys.exit(f"layers.txt:{number}: 'never' needs ' -> '")
                self.never.append((user.strip(), used.strip()))
            elif self.floors:
                self.patterns.append((line, len(self.floors) - 1))
            else:
                sys.exit(f"layers.txt:{number}: a pattern before the first floor")

    def floor(self, path):
        stem = path.rsplit(".", 1)[0]
        matches = [(len(pattern), floor) for pattern, floor in self.patterns if fnmatch.fnmatchcase(stem, pattern)]
        return max(matches)[1] if matches else None


def read_includes(root, folders):
    """Maps each file to its includes: (line number, text with its quotes or angle brackets)."""
    files = {}
    for folder in folders:
        for path in sorted((root / folder).rglob("*")):
            if path.suffix in (".h", ".cpp") and path.is_file():
                lines = path.read_text(encoding="utf-8").splitlines()
                found = ((number, INCLUDE.match(line)) for number, line in enumerate(lines, 1))
                files[path.relative_to(root).as_posix()] = [(number, match[1]) for number, match in found if match]
    return files


def reachable(files, start):
    seen, todo = set(), [start]
    while todo:
        path = todo.pop()
        if path in seen or path not in files:
            continue
        seen.add(path)
        todo.extend(text[1:-1] for _, text in files[path])
    return seen


def find_circle(files):
    """A list of files that include one another in a circle, or None."""
    state = {}  # 1: on the way, 2: done
    for start in files:
        if start in state:
            continue
        trail = [(start, iter(files[start]))]
        state[start] = 1
        while trail:
            path, rest = trail[-1]
            for _, text in rest:
                target = text[1:-1]
                if state.get(target) == 1:
                    names = [name for name, _ in trail]
                    return names[names.index(target):] + [target]
                if target in files and target not in state:
                    state[target] = 1
                    trail.append((target, iter(files[target])))
                    break
            else:
                state[path] = 2
                trail.pop()
    return None


def check(root):
    layers = Layers((root / "tools/layers.txt").read_text(encoding="utf-8"))
    files = read_includes(root, ["vomsg"])
    public = reachable(files, UMBRELLA)
    complaints = []

    for path, includes in files.items():
        floor = layers.floor(path)
        if floor is None:
            complaints.append(f"{path}:1: stands on no floor of tools/layers.txt")
            continue
        for number, text in includes:
            where, target = f"{path}:{number}", text[1:-1]
            for user, used in layers.never:
                subject = text if used.startswith("<") else target
                if fnmatch.fnmatchcase(path, user) and fnmatch.fnmatchcase(subject, used):
                    complaints.append(f"{where}: must not include {text}")
            if text.startswith("<") and not target.startswith("vomsg/"):
                continue
            if target not in files:
                complaints.append(f"{where}: {text} is no file of the library, named from the project's root")
                continue
            target_floor = layers.floor(target)
            if target_floor is not None and target_floor > floor:
                complaints.append(f"{where}: points up, from '{layers.floors[floor]}' to "
                                  f"'{layers.floors[target_floor]}' ({target})")

    circle = find_circle(files)
    if circle:
        complaints.append(f"{circle[0]}:1: circle of files: {' -> '.join(circle)}")

    if UMBRELLA in files:
        for path in files:
            if path.endswith(".h") and path not in public and not path.endswith("/VoMsgExport.h"):
                if re.search(r"\bVOMSG_API\b", (root / path).read_text(encoding="utf-8")):
                    complaints.append(f"{path}:1: exports something, but {UMBRELLA} does not reach it")
        face = reachable(files, FACE)
        for path, includes in files.items():
            if path != FACE and not path.startswith("vomsg/mail/"):
                continue
            for number, text in includes:
                if text[1:-1] in files and text[1:-1] not in public and not text[1:-1].startswith("vomsg/mail/"):
                    complaints.append(f"{path}:{number}: {text} is not for callers, {UMBRELLA} does not reach it")
            if re.search(r"\bdetail::", (root / path).read_text(encoding="utf-8")):
                complaints.append(f"{path}:1: names what is inside the library")
        for path, includes in read_includes(root, CALLERS).items():
            for number, text in includes:
                if text[1:-1].startswith("vomsg/") and text[1:-1] not in public | face:
                    complaints.append(f"{path}:{number}: {text} is not for callers, {UMBRELLA} does not reach it")
    return complaints, len(files)


def main():
    root = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).parent.parent)
    complaints, count = check(root)
    if complaints:
        sys.exit("\n".join(sorted(complaints)))
    print(f"includes are in order: {count} files")


if __name__ == "__main__":
    main()
