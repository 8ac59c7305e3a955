"""Writes what Python's codecs know about Japanese and Chinese characters, one a line: its kind, then its bytes in each
charset, in hex. VoMsgCodecWitnessTest.cpp reads it."""
import unicodedata


def line(kind, *texts):
    print(kind, *(text.hex() for text in texts))


def decoded(code, codec):
    try:
        return code.decode(codec)
    except UnicodeDecodeError:
        return None


def codes(leads, trails):
    return (bytes((lead, trail)) for lead in leads for trail in trails)


for code in codes(range(0xA1, 0xFF), range(0xA1, 0xFF)):
    if (char := decoded(code, "euc_jp")) is not None:
        line("jp", code, char.encode("shift_jis"), char.encode("iso2022_jp"), char.encode())

kana = range(0xA1, 0xE0)
for code in [bytes((k,)) for k in kana] + [bytes((k, mark)) for k in kana for mark in (0xDE, 0xDF)]:
    half = code.decode("shift_jis")
    full = unicodedata.normalize("NFKC", half)
    if len(half) == 2 and full in "\u30f7\u30fa":  # voiced WA and WO are not in JIS X 0208
        full = unicodedata.normalize("NFKC", half[0]) + "\u3099"
    full = full.replace("\u3099", "\u309b").replace("\u309a", "\u309c")
    line("kana", half.encode("euc_jp"), code, full.encode("iso2022_jp"), half.encode(), full.encode("euc_jp"))

for code in codes([*range(0x81, 0xA0), *range(0xE0, 0xFD)], range(0x40, 0xFD)):
    char = decoded(code, "cp932")
    if char is not None and len(char) == 1 and not "\ue000" <= char <= "\uf8ff":
        line("windows", code, char.encode())

for code in codes(range(0x81, 0xFF), range(0x40, 0xFF)):
    if (char := decoded(code, "gb2312")) is not None:
        line("gb2312", code, char.encode("hz"), char.encode())
    if (char := decoded(code, "gbk")) is not None:
        line("gbk", code, char.encode())
    if (char := decoded(code, "big5")) is not None:
        line("big5", code, char.encode())
