"""Parsing small messages through the modern face costs at most 5 % more instructions than through the interface.

usage: mail_cost_test.py MAIL_COST [COUNT]
"""
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

LIMIT = 1.05


def instructions(program, how, count, folder):
    out = pathlib.Path(folder) / how
    done = subprocess.run(["valgrind", "--tool=callgrind", f"--callgrind-out-file={out}", program, how, str(count)],
                          capture_output=True, text=True, check=True)
    if int(done.stdout) != 2 * count:
        sys.exit(f"{how}: {done.stdout} parts instead of {2 * count}")
    return int(re.search(r"Collected : (\d+)", done.stderr)[1])


def main():
    program, count = sys.argv[1], int(sys.argv[2]) if len(sys.argv) > 2 else 1000
    if not shutil.which("valgrind"):
        print("SKIPPED: valgrind is not installed, nothing counts instructions")
        sys.exit(77)
    with tempfile.TemporaryDirectory() as folder:
        # What both do besides, building the messages too, is taken off by a second count of half as many.
        each = {how: (instructions(program, how, count, folder) - instructions(program, how, count // 2, folder)) /
                (count - count // 2) for how in ("interface", "face")}
    ratio = each["face"] / each["interface"]
    print(f"instructions a message: interface {each['interface']:.0f}, face {each['face']:.0f}, ratio {ratio:.3f}")
    sys.exit(0 if ratio <= LIMIT else 1)


if __name__ == "__main__":
    main()
