#!/usr/bin/env python3
"""Writes the tables of vomsg/charset/detect/tables/ from files of numbers.

make_detect_tables.py [--check] [NUMBERS [TABLES]]

NUMBERS is a folder laid out as tools/charset-tables (the default), TABLES the folder of the sources. With --check
nothing is written: the exit code is 1 when a source differs from what would be written, is missing or is left over.
"""
import argparse
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
MARK = "// Made by tools/make_detect_tables.py"
FOLDER = "vomsg/charset/detect/tables"

# Tables made from a file of ranks: entries in the file, entries in the table. Characters beyond the published ranks of
# EUC-TW are rare ones: they get a rank that is never frequent, so that the table covers every order its detector takes.
RANKS = {"Big5": ("Big5", 5376, 5376), "EUCJP": ("JIS", 4368, 4368), "EUCKR": ("EUCKR", 2352, 2352),
         "EUCTW": ("EUCTW", 5376, 8102), "GB2312": ("GB2312", 3760, 3760), "SJIS": ("JIS", 4368, 4368)}
RARE = 0x7FFF


def fail(path, complaint):
    sys.exit(f"{path}: {complaint}")


def numbers(path, text, count, limit):
    values = [int(word) for word in text.split()]
    if len(values) != count:
        fail(path, f"{len(values)} numbers instead of {count}")
    if not all(0 <= value < limit for value in values):
        fail(path, f"a number outside 0..{limit - 1}")
    return values


def rows(values, form, per_row):
    texts = [format(value, form) for value in values]
    return "".join("    " + ", ".join(texts[i:i + per_row]) + ",\n" for i in range(0, len(texts), per_row))


def array(head, values, form, per_row):
    return f"{head} = {{\n    // clang-format off\n{rows(values, form, per_row)}    // clang-format on\n}};\n"


def source(path, header, body):
    return f'{MARK} from {path.parent.name}/{path.name}.\n#include "{FOLDER}/{header}"\n\n{body}'


def packed(values):
    """Eight 4-bit entries a word, the first in the lowest bits."""
    values = values + [0] * (-len(values) % 8)
    return [sum(entry << (4 * place) for place, entry in enumerate(values[i:i + 8])) for i in range(0, len(values), 8)]


def machine(path):
    match = re.fullmatch(r"name (\S+)\nclasses (\d+)\nstates (\d+)\n\nclass-of-byte\n([\d\s]+)"
                         r"next-state [^\n]*\n([\d\s]+)char-length-of-class\n([\d\s]+)", path.read_text())
    if not match:
        fail(path, "this is no state machine")
    name, classes, states = match[1], int(match[2]), int(match[3])
    class_of_byte = numbers(path, match[4], 256, classes)
    next_state = numbers(path, match[5], states * classes, states)
    lengths = numbers(path, match[6], classes, 7)
    if classes > 16 or states > 16:
        fail(path, "an entry has four bits")
    for sink in (1, 2):
        if set(next_state[sink * classes:(sink + 1) * classes]) != {sink}:
            fail(path, f"state {sink} can be left")
    return source(path, "VoMsgSMModels.h", "\n".join((
        array("static constexpr std::uint32_t kClasses[]", packed(class_of_byte), "#010x", 8),
        array("static constexpr std::uint32_t kStates[]", packed(next_state), "#010x", 8),
        array("static constexpr std::uint32_t kCharLengths[]", lengths, "d", 16),
        f'const SMModel {path.stem} = {{{{3, 7, 2, 15, kClasses}}, {classes}, {{3, 7, 2, 15, kStates}}, kCharLengths, '
        f'"{name}"}};\n')))


def ranks(path, table, published, size):
    values = numbers(path, path.read_text(), published, RARE) + [RARE] * (size - published)
    return source(path, "VoMsgFrequenceOrders.h",
                  array(f"const std::int16_t g{table}FrequenceOrder[{size}]", values, "d", 16))


def letter_orders(path):
    values = numbers(path, path.read_text(), 256, 256)
    return source(path, "VoMsgSequenceModels.h", array(f"const unsigned char {path.stem}[256]", values, "d", 16))


def letter_pairs(path):
    values = numbers(path, path.read_text(), 64 * 64, 4)
    return source(path, "VoMsgSequenceModels.h", array(f"const unsigned char {path.stem}[4096]", values, "d", 32))


def sources(folder):
    made = {f"{path.stem}.cpp": machine(path) for path in sorted((folder / "state-machines").glob("*.txt"))}
    for table, (stem, published, size) in RANKS.items():
        made[f"{table}FrequenceOrder.cpp"] = ranks(folder / "ranks" / f"{stem}.txt", table, published, size)
    for path in sorted((folder / "letter-orders").glob("*.txt")):
        made[f"{path.stem}.cpp"] = letter_orders(path)
    for path in sorted((folder / "letter-pairs").glob("*.txt")):
        made[f"{path.stem}.cpp"] = letter_pairs(path)
    return made


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--check", action="store_true", help="compare, write nothing")
    parser.add_argument("numbers", nargs="?", type=pathlib.Path, default=ROOT / "tools/charset-tables")
    parser.add_argument("tables", nargs="?", type=pathlib.Path, default=ROOT / FOLDER)
    options = parser.parse_args()
    made = sources(options.numbers)
    if not options.check:
        for name, text in made.items():
            (options.tables / name).write_text(text)
        return 0
    found = {path.name: path.read_text() for path in options.tables.glob("*.cpp")}
    found = {name: text for name, text in found.items() if name in made or text.startswith(MARK)}
    wrong = sorted(name for name in made.keys() | found.keys() if made.get(name) != found.get(name))
    for name in wrong:
        print(f"{name} is not what the numbers give")
    print(f"{len(made)} tables compared")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
