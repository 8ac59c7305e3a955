"""tools/check_includes.py sees each kind of violation, and nothing in a tree that is in order."""
import pathlib
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tools"))
import check_includes  # noqa: E402

LAYERS = """
floor ground
  vomsg/low/*
  vomsg/mixed/Ground
floor middle
  vomsg/mixed/*
floor top
  vomsg/high/*
floor umbrella
  vomsg/vomsg
never vomsg/*.h -> <unicode/*
never vomsg/mixed/*.h -> vomsg/low/Secret.h
"""
GOOD = {
    "vomsg/vomsg.h": ["vomsg/high/A.h"],
    "vomsg/low/Base.h": ["<string>"],
    "vomsg/low/Base.cpp": ["vomsg/low/Base.h", "<unicode/ucnv.h>"],
    "vomsg/low/Secret.h": [],
    "vomsg/mixed/Ground.h": ["vomsg/low/Base.h"],
    "vomsg/mixed/Mid.h": ["vomsg/mixed/Ground.h"],
    "vomsg/mixed/Mid.cpp": ["vomsg/mixed/Mid.h", "vomsg/low/Secret.h"],
    "vomsg/high/A.h": ["vomsg/mixed/Mid.h"],
    "vomsg/high/A.cpp": ["vomsg/high/A.h", "vomsg/high/B.h"],  # creates a B, on its own floor
    "vomsg/high/B.h": ["vomsg/high/A.h"],
    "cli/main.cpp": ["vomsg/high/A.h"],
}
# What is added to the good tree, and a word of the complaint.
VIOLATIONS = {
    "a header points up": ("vomsg/low/Base.h", "vomsg/high/A.h", "points up"),
    "a source points up": ("vomsg/mixed/Mid.cpp", "vomsg/high/B.h", "points up"),
    "a room on a lower floor points up": ("vomsg/mixed/Ground.h", "vomsg/mixed/Mid.h", "points up"),
    "two headers in a circle": ("vomsg/high/A.h", "vomsg/high/B.h", "circle of files"),
    "a system header that is not allowed": ("vomsg/high/A.h", "<unicode/ucnv.h>", "must not include"),
    "a header that is not allowed": ("vomsg/mixed/Mid.h", "vomsg/low/Secret.h", "must not include"),
    "a path that is not from the root": ("vomsg/mixed/Mid.cpp", "Ground.h", "no file of the library"),
    "a file without floor": ("vomsg/stray/New.h", "<string>", "stands on no floor"),
    "the umbrella header used inside": ("vomsg/high/A.cpp", "vomsg/vomsg.h", "points up"),
    "a program that knows too much": ("cli/main.cpp", "vomsg/low/Secret.h", "not for callers"),
}


class CheckIncludes(unittest.TestCase):
    def check(self, files, text=None):
        with tempfile.TemporaryDirectory() as folder:
            root = pathlib.Path(folder)
            (root / "tools").mkdir()
            (root / "tools/layers.txt").write_text(LAYERS)
            for path, includes in files.items():
                (root / path).parent.mkdir(parents=True, exist_ok=True)
                lines = [f"#include {name}" if name[0] == "<" else f'#include "{name}"' for name in includes]
                (root / path).write_text("\n".join(lines + [(text or {}).get(path, "")]))
            return check_includes.check(root)[0]

    def test_good_tree(self):
        self.assertEqual(self.check(GOOD), [])

    def test_violations(self):
        for name, (path, include, word) in VIOLATIONS.items():
            with self.subTest(name):
                complaints = self.check({**GOOD, path: GOOD.get(path, []) + [include]})
                self.assertTrue(any(word in line and path in line for line in complaints), complaints)

    def test_exports_must_be_reachable(self):
        complaints = self.check(GOOD, {"vomsg/low/Secret.h": "VOMSG_API void f();"})
        self.assertEqual(len(complaints), 1)
        self.assertIn("vomsg/low/Secret.h:1: exports something", complaints[0])


if __name__ == "__main__":
    unittest.main()
