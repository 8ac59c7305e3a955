"""Every example does what it says, and the tutorial shows them as they are.

usage: examples_test.py FOLDER_OF_PROGRAMS
"""
import email
import email.policy
import json
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

PROGRAMS = pathlib.Path(sys.argv[1])
ROOT = pathlib.Path(__file__).resolve().parents[2]
MESSAGES = ROOT / "tests/data/messages"


def parsed(path):
    return email.message_from_bytes(path.read_bytes(), policy=email.policy.default)


class Examples(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        self.work = pathlib.Path(self.folder.name)
        self.out = self.work / "out.eml"

    def run_program(self, name, *arguments, stdin=b"", status=0):
        done = subprocess.run([PROGRAMS / f"example_{name}", *arguments], input=stdin, capture_output=True, cwd=self.work)
        self.assertEqual(done.returncode, status, (name, done.stderr))
        return done.stdout

    def test_what_is_printed(self):
        rows = [  # program, message, a line of its output
            ("list_parts", "nested_plain", '  message/rfc822, 411 bytes'),
            ("list_attachments", "winmail", "text/csv 32 Zahlen März.csv"),
            ("list_attachments", "embedded_blocks", "application/octet-stream 700 Sketch 3"),
            ("step1_what_is_in_it", "alternative", "  text/html"),
            ("step2_texts_and_fields", "mixed_base64", "Der Punkt hängt an. Grüße"),
            ("step2_texts_and_fields", "nested_plain", "Date: 2026-03-03T09:15:05+01:00"),
            ("step5_mailbox", "nested_plain", "1: Fwd: the inner message"),
        ]
        for program, message, line in rows:
            with self.subTest(program=program, message=message):
                lines = self.run_program(program, MESSAGES / f"{message}.eml").decode().splitlines()
                self.assertIn(line, lines)

    def test_attachments_are_saved(self):
        names = self.run_program("save_attachments", MESSAGES / "winmail.eml").decode().splitlines()
        self.assertEqual(names, ["1_Zahlen März.csv", "2_kurve.png"])
        self.assertTrue((self.work / names[1]).read_bytes().startswith(b"\x89PNG"))
        self.run_program("step3_parts", MESSAGES / "mixed_base64.eml", self.work)
        self.assertTrue((self.work / "1_dot.png").read_bytes().startswith(b"\x89PNG"))

    def test_replace_attachment(self):
        for message, name in (("mixed_base64", "bytes.bin"), ("winmail", "kurve.png"), ("embedded_blocks", "Sketch 3")):
            with self.subTest(message=message):
                self.run_program("replace_attachment", MESSAGES / f"{message}.eml", name, self.out)
                left = self.run_program("list_attachments", self.out).decode()
                self.assertNotIn(f" {name}\n", left)
                self.assertEqual(left.count("\n"), 2)

    def test_disclaimer(self):
        self.run_program("add_disclaimer", MESSAGES / "alternative.eml", "Nur für Sie.", self.out)
        for part in parsed(self.out).walk():
            if not part.is_multipart():
                self.assertIn("Nur für Sie.", part.get_content())

    def test_open_winmail(self):
        self.run_program("open_winmail", MESSAGES / "winmail.eml", self.out)
        parts = {part.get_filename(): part for part in parsed(self.out).walk()}
        self.assertIn("kurve.png", parts)
        self.assertIn("Zahlen März.csv", parts)
        self.assertNotIn("winmail.dat", parts)
        self.assertTrue(parts["kurve.png"].get_payload(decode=True).startswith(b"\x89PNG"))
        self.assertTrue(parts["message.rtf"].get_payload(decode=True).startswith(b"{\\rtf"))

    def test_step4_edits(self):
        self.run_program("step4_edit", MESSAGES / "mixed_base64.eml", self.out)
        self.assertTrue(parsed(self.out)["Subject"].startswith("Geprüft: "))
        self.assertEqual([part.get_content_type() for part in parsed(self.out).walk()],
                         ["multipart/mixed", "text/plain", "application/octet-stream"])

    def test_archive(self):
        if not (PROGRAMS / "example_archive").exists():
            self.skipTest("the archiver needs nlohmann-json")
        box = self.work / "box"
        with box.open("wb") as out:
            for name in ("plain", "winmail", "nested_plain"):
                data = (MESSAGES / f"{name}.eml").read_bytes()
                out.write(b"From a@b Sun Nov 22 03:13:00 2026\n" + data + b"\n")
        lines = [json.loads(line) for line in self.run_program("archive", box).splitlines()]
        self.assertEqual([len(line.get("attachments", [])) for line in lines], [0, 2, 1])
        self.assertEqual(lines[2]["from"] if "from" in lines[2] else lines[2]["From"],
                         [{"name": "Ada Keller", "address": "ada@example.org"}])

    def test_filters(self):
        program = (b"Subject: x\r\nMIME-Version: 1.0\r\nContent-Type: multipart/mixed; boundary=b\r\n\r\n--b\r\n\r\nhi\r\n"
                   b"--b\r\nContent-Type: application/pdf; name=a.pdf\r\n\r\nMZ..\r\n--b--\r\n")
        for name in ("filter", "step6_filter"):
            with self.subTest(name=name):
                damaged = b"Content-Type: text/plain\r\nContent-Type: text/html\r\n\r\nx"
                self.assertEqual(self.run_program(name, stdin=damaged), damaged)
        out = self.run_program("filter", stdin=program)
        self.assertIn(b"X-Filter: 1 removed", out)
        self.assertNotIn(b"MZ..", out)
        clean = (MESSAGES / "winmail.eml").read_bytes()
        self.assertEqual(self.run_program("filter", stdin=clean), clean)
        self.assertIn(b"X-Seen: yes", self.run_program("step6_filter", stdin=clean))

    def test_tutorial_shows_the_programs(self):
        shown = re.findall(r"```cpp\n(.*?)```", (ROOT / "docs/tutorial.md").read_text(encoding="utf-8"), re.DOTALL)
        steps = sorted((ROOT / "examples").glob("step*.cpp"))
        self.assertEqual(len(shown), 6)
        self.assertEqual(shown, [step.read_text(encoding="utf-8") for step in steps])

    def test_sizes_that_are_promised(self):
        for name, most in (("archive", 40), ("filter", 60)):
            self.assertLessEqual(len((ROOT / f"examples/{name}.cpp").read_text().splitlines()), most)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
