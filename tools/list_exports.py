"""The names that a shared library exports, demangled and sorted, one a line.

usage: list_exports.py LIBRARY             prints them
       list_exports.py LIBRARY EXPORTS     tells what is new and what is gone, against a list made before

A change of the interface is deliberate: whoever makes it writes the list anew, and the changelog says so.
"""
import pathlib
import subprocess
import sys


def exports(library):
    lines = subprocess.run(["nm", "-D", "-C", "--defined-only", str(library)], check=True, capture_output=True,
                           text=True).stdout.splitlines()
    names = {line.split(None, 2)[2].replace("@@", " @@").split(" @@")[0] for line in lines if len(line.split(None, 2)) == 3}
    return sorted(name for name in names if not name.startswith("LIBVOMSG_"))


def differences(library, listed):
    now = set(exports(library))
    before = set(pathlib.Path(listed).read_text(encoding="utf-8").splitlines())
    return [f"new: {name}" for name in sorted(now - before)] + [f"gone: {name}" for name in sorted(before - now)]


if __name__ == "__main__":
    if len(sys.argv) == 2:
        print("\n".join(exports(sys.argv[1])))
    else:
        found = differences(sys.argv[1], sys.argv[2])
        print("\n".join(found) or "nothing is new and nothing is gone")
        sys.exit(1 if found else 0)
