#!/usr/bin/env python3
"""Writes vomsg/charset/convert/tables/VoIso8859_*Table.cpp from ICU's mappings (needs ICU's program "uconv").

The upper halves of parts 6, 7 and 8 end before 0xFF; their tables hold only the codes up to the last one in use.
"""
import pathlib
import subprocess

COUNTS = {n: 96 for n in (1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 13, 14, 15)} | {6: 83, 7: 95, 8: 95}
FOLDER = pathlib.Path(__file__).resolve().parent.parent / "vomsg/charset/convert/tables"


def upper_half(part):
    """Unicode values of the codes 0xA0 to 0xFF, 0 where there is no character."""
    codes = bytes(range(0xA0, 0x100))
    done = subprocess.run(["uconv", "-f", f"iso-8859-{part}", "-t", "utf-32be", "--from-callback", "substitute"],
                          input=codes, stdout=subprocess.PIPE, check=True)
    values = [int.from_bytes(done.stdout[i:i + 4], "big") for i in range(0, len(done.stdout), 4)]
    assert len(values) == len(codes)
    return [0 if value == 0xFFFD else value for value in values]


for part, count in COUNTS.items():
    values = upper_half(part)
    assert not any(values[count:]), f"part {part} has characters beyond its count"
    rows = ["    " + ", ".join(f"0x{value:04X}" for value in values[i:min(i + 8, count)]) + ",\n"
            for i in range(0, count, 8)]
    (FOLDER / f"VoIso8859_{part}Table.cpp").write_text(
        "// Made by tools/make_iso8859_tables.py.\n"
        '#include "vomsg/charset/convert/tables/VoIso8859Tables.h"\n\n'
        "static constexpr std::uint32_t kSegments[] = {\n"
        "    // clang-format off\n"
        "    0xA0, 0x60,\n" + "".join(rows) +
        "    0xFFFFFFFF,\n"
        "    // clang-format on\n"
        "};\n\n"
        f"const VoUnicodeTable gIso8859_{part}Table = {{{count}, kSegments}};\n")
