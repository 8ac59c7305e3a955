"""The gateway as its neighbours see it: the mail server that starts it, the next hop that takes what it hands on.

usage: gateway_test.py VOMSG_FILTER [VOMSG_MILTER]
"""
import email
import email.policy
import json
import pathlib
import shutil
import socket
import subprocess
import sys
import tempfile
import threading
import unittest

FILTER = sys.argv[1]
MILTER = sys.argv[2] if len(sys.argv) > 2 else None
ROOT = pathlib.Path(__file__).resolve().parents[2]
MESSAGES = ROOT / "tests/data/messages"
INSIDE = '[inside]\ndomains = ["in.example"]\nnetworks = ["10.0.0.0/8", "2001:db8::/32"]\n'
DAMAGED = b"Content-Type: text/plain\nContent-Type: text/html\n\nx"


def rule(when="", do='{ action = "set_field", name = "X-Hit", value = "yes" }', more=""):
    return f'[[rule]]\nname = "r"\n{more}\nwhen = {{ {when} }}\ndo = [{do}]\n'


def sample(name):
    return (MESSAGES / f"{name}.eml").read_bytes()


def parsed(data):
    return email.message_from_bytes(data, policy=email.policy.default)


class Server(threading.Thread):
    """A next hop on loopback: answers each step as told and keeps what it took."""

    def __init__(self, refusals=None):
        super().__init__(daemon=True)
        self.refusals, self.taken, self.commands = refusals or {}, [], []
        self.socket = socket.create_server(("127.0.0.1", 0))
        self.address = "127.0.0.1:%d" % self.socket.getsockname()[1]
        self.start()

    def run(self):
        connection, _ = self.socket.accept()
        self.socket.close()
        with connection, connection.makefile("rwb", buffering=0) as peer:
            def answer(step, otherwise):
                reply = self.refusals.get(step, otherwise)
                if reply:
                    peer.write(reply.encode() + b"\r\n")
                return bool(reply)
            if not answer("greeting", "220-hello\r\n220 ready"):
                return
            for line in peer:
                step = line.split()[0].decode().upper()
                self.commands.append(line.strip().decode())
                if not answer(step, {"DATA": "354 go on", "QUIT": "221 bye", "EHLO": "250-x\r\n250 y"}.get(step, "250 ok")):
                    return
                if step == "DATA" and step not in self.refusals:
                    lines = []
                    for line in peer:
                        if line == b".\r\n":
                            break
                        lines.append(line[1:] if line.startswith(b".") else line)
                    else:
                        return
                    if not answer("end", "250 taken"):
                        return
                    if "end" not in self.refusals:
                        self.taken.append(b"".join(lines))


class Gateway(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        self.work = pathlib.Path(self.folder.name)
        self.policy = self.work / "policy.toml"

    def run_filter(self, policy, message, *arguments, status=0, name="Q1"):
        self.policy.write_text(policy)
        done = subprocess.run([FILTER, "--policy", self.policy, "--id", name, *arguments], input=message,
                              capture_output=True, timeout=60)
        self.log = done.stderr.decode()
        self.assertEqual(done.returncode, status, (done.stdout[:300], done.stderr))
        return done.stdout

    def test_check_names_each_mistake(self):
        rows = [  # the policy, where its mistakes are, and a word of each
            (INSIDE + rule(), []),
            ("[limits]\nfields = \"many\"\n", [(2, 10, "number")]),
            ("[limits]\nfeilds = 5\n", [(2, 1, "feilds")]),
            ("[limts]\n", [(1, 2, "limts")]),
            ("[failure]\ndamage = \"ajar\"\n", [(2, 10, "open, closed, reject")]),
            ("[[rule]]\nname = \"a\"\n", [(1, 1, "does something")]),
            (rule("sendr = \"x\""), [(4, 10, "sendr")]),
            (rule("code = \"odd\""), [(4, 17, "odd")]),
            (rule("attachment = { begins_with = \"4D5\" }"), [(4, 39, "hex")]),
            (rule(do='{ action = "explode" }'), [(5, 7, "explode")]),
            (rule(do='{ action = "remove_attachments" }'), [(5, 7, "attachment")]),
            (rule(do='{ action = "add_field", name = "a b", value = "x" }'), [(5, 7, "field name")]),
            (rule(do='{ action = "reject" }'), [(5, 7, "reason")]),
            ("[limits\n", [(1, 8, "")]),
        ]
        for policy, mistakes in rows:
            with self.subTest(policy=policy):
                self.policy.write_text(policy)
                done = subprocess.run([FILTER, "--check", self.policy], capture_output=True, text=True)
                self.assertEqual(done.returncode, 78 if mistakes else 0, done.stderr)
                found = done.stderr.splitlines()
                self.assertEqual([line.split(":")[1:3] for line in found], [[str(a), str(b)] for a, b, _ in mistakes], found)
                for line, (_, _, word) in zip(found, mistakes):
                    self.assertIn(word, line)
        self.assertEqual(subprocess.run([FILTER, "--check", ROOT / "gateway/policy.toml"], capture_output=True).returncode, 0)

    def test_conditions(self):
        rows = [  # condition, message, arguments, whether it hits
            ("", "plain", [], True),
            ('direction = "out"', "plain", ["--sender=a@in.example", "--recipient=b@x"], True),
            ('direction = "out"', "plain", ["--sender=a@in.example", "--recipient=b@in.example"], False),
            ('direction = "inside"', "plain", ["--sender=a@in.example", "--recipient=b@in.example"], True),
            ('direction = "in"', "plain", ["--sender=a@in.example", "--client=192.0.2.1"], True),
            ('direction = "in"', "plain", ["--sender=a@x", "--client=10.1.2.3"], False),
            ('direction = "in"', "plain", ["--sender=a@x", "--client=2001:db8::7"], False),
            ('sender = ["*@X.example"]', "plain", ["--sender=a@x.EXAMPLE"], True),
            ('sender = "a?@*"', "plain", ["--sender=a@x"], False),
            ('recipient = "*@x"', "plain", ["--recipient=a@x", "--recipient=b@y"], False),
            ('recipient = "*@x", recipients = "any"', "plain", ["--recipient=a@x", "--recipient=b@y"], True),
            ('recipient = "*@x"', "plain", ["--recipient=a@x", "--recipient=b@x"], True),
            ('recipient = "*"', "plain", [], False),
            ("larger_than = 100000", "plain", [], False),
            ("larger_than = 100, smaller_than = 100000", "plain", [], True),
            ('field = "subject", value = "*inner*"', "nested_plain", [], True),
            ('field = "subject", value = "inner"', "nested_plain", [], False),
            ('field = "X-*"', "plain", [], False),
            ('attachment = { name = "*.PNG" }', "winmail", [], True),
            ('attachment = { name = "*.png", type = "text/*" }', "winmail", [], False),
            ('attachment = { begins_with = ["4D5A", "89504E47"] }', "winmail", [], True),
            ('attachment = { name = "parts list.txt" }', "embedded_blocks", [], True),
            ("attachment = { }", "alternative", [], False),
            ('code = "malformed"', "plain", [], False),
        ]
        for when, message, arguments, hits in rows:
            with self.subTest(when=when, arguments=arguments):
                out = self.run_filter(INSIDE + rule(when), sample(message), *arguments)
                self.assertEqual(b"X-Hit: yes" in out, hits, self.log)
                if not hits:
                    self.assertEqual(out, sample(message))
        out = self.run_filter(rule('code = ["partial", "malformed"]', '{ action = "pass" }'), DAMAGED)
        self.assertEqual(out, DAMAGED)

    def test_actions(self):
        png = 'attachment = { name = "*.png" }'
        rows = [  # condition, actions, message, what stands in the result, what does not
            ("", '{ action = "add_field", name = "X", value = "ä" }', "plain", [b"X: =?utf-8?"], []),
            ("", '{ action = "remove_field", name = "subject" }', "plain", [], [b"Subject:"]),
            ("", '{ action = "tag", text = "[EXT]" }', "plain", [b"Subject: [EXT] "], []),
            ("", '{ action = "disclaimer", text = "Private." }', "alternative", [b"Private."], []),
            ("", '{ action = "disclaimer", text = "Private.", mode = "wrap" }', "plain", [b"originalmail.eml"], []),
            (png, '{ action = "remove_attachments" }', "mixed_base64", [b"bytes.bin"], [b"dot.png"]),
            (png, '{ action = "replace_attachments", notice = "No %n!" }', "mixed_base64", [b"bytes.bin"], [b"dot.png"]),
            ("", '{ action = "open_winmail" }', "winmail", [b"kurve.png", b"message.rtf"], [b"winmail.dat"]),
            ("", '{ action = "set_field", name = "X", value = "1" }, { action = "strip_signatures" }', "signed",
             [b"X: 1"], []),
        ]
        for when, do, message, there, gone in rows:
            with self.subTest(do=do):
                out = self.run_filter(rule(when, do), sample(message))
                for word in there:
                    self.assertIn(word, out)
                for word in gone:
                    self.assertNotIn(word, out)
                self.assertIn("verdict=edited rules=r", self.log)
        out = self.run_filter(rule(png, '{ action = "replace_attachments", notice = "No %n!" }'), sample("mixed_base64"))
        notices = [part.get_content() for part in parsed(out).walk() if part.get_content_type() == "text/plain"]
        self.assertIn("No dot.png!", notices[-1])

    def test_order_of_rules(self):
        set_field = '{{ action = "add_field", name = "X-{0}", value = "1" }}'
        policy = (rule(do=set_field.format("A"), more="continue = true") + rule('field = "X-A"', set_field.format("B")) +
                  rule(do=set_field.format("C")))
        out = self.run_filter(policy, sample("plain"))
        self.assertEqual([name for name in (b"X-A", b"X-B", b"X-C") if name in out], [b"X-A", b"X-B"])

    def test_all_actions_or_none(self):
        # A NUL cannot be set; what was done before it is undone.
        do = '{ action = "set_field", name = "X", value = "1" }, { action = "set_field", name = "Y", value = "a\\u0000b" }'
        for word, status in (("open", 0), ("closed", 75), ("reject", 69)):
            with self.subTest(word=word):
                out = self.run_filter(f'[failure]\nedit = "{word}"\n' + rule(do=do), sample("plain"), status=status)
                if status == 0:
                    self.assertEqual(out, sample("plain"))
        quarantine = f'{{ action = "quarantine", folder = "{self.work}/none" }}'
        self.run_filter('[failure]\nedit = "open"\n' + rule(do=quarantine), sample("plain"), status=75)

    def test_damage(self):
        for word, status, verdict in (("open", 0, "passed-unread"), ("closed", 75, "try-again"), ("reject", 69, "rejected")):
            for policy in (f'[failure]\ndamage = "{word}"\n', f'[failure]\nmalformed = "{word}"\n'):
                with self.subTest(policy=policy):
                    out = self.run_filter(policy, DAMAGED, status=status)
                    self.assertIn(f"verdict={verdict} rules=- code=0x8101100B", self.log)
                    if status == 0:
                        self.assertEqual(out, DAMAGED)
        self.run_filter("[limits]\nmessage_mib = 1\n[failure]\ndamage = \"closed\"\n", b"A: b\n\n" + b"x" * 1100000, status=75)

    def test_danger(self):
        odd = sample("rfc2231_names")  # its boundary is given in a form that many readers do not know
        rows = [("", 75, odd), ('[failure]\ndangerous = "open"\n', 0, odd), ('[failure]\ndangerous = "reject"\n', 69, odd),
                (rule('anomaly = "dangerous"', '{ action = "pass" }'), 0, odd), (rule('anomaly = "ambiguous"'), 0, odd),
                (rule(), 75, odd), ("", 0, sample("plain"))]
        for policy, status, message in rows:
            with self.subTest(policy=policy):
                out = self.run_filter(policy, message, status=status)
                self.assertEqual(b"X-Hit" in out, "ambiguous" in policy)
        self.assertNotIn(b"X-Hit", self.run_filter(rule('anomaly = "ambiguous"'), sample("plain")))

    def test_verdicts(self):
        out = self.run_filter(rule(do='{ action = "reject", reason = "not here" }'), sample("plain"), status=69)
        self.assertEqual(out, b"not here\n")
        held = self.work / "held"
        held.mkdir()
        out = self.run_filter(rule(do=f'{{ action = "quarantine", folder = "{held}" }}'), sample("plain"))
        self.assertEqual(out, b"")
        self.assertEqual([path.read_bytes() for path in held.iterdir()], [sample("plain")])
        self.run_filter("nonsense", sample("plain"), status=75)
        self.assertEqual(subprocess.run([FILTER, "--nonsense"], capture_output=True).returncode, 64)

    def test_commands(self):
        out = self.work / "out"
        rows = [(["sh", "-c", f"cat >{out}"], 0), (["sh", "-c", "cat >/dev/null; exit 67"], 67), (["/nonexistent"], 75),
                (["sh", "-c", "kill -9 $$"], 75), (["true"], 75), (["sh", "-c", "exit 75"], 75)]
        large = b"Subject: x\n\n" + b"y" * 3000000  # more than a pipe holds: who does not read it is seen
        for command, status in rows:
            with self.subTest(command=command):
                self.run_filter("", large, "--", *command, status=status)
        self.assertEqual(out.read_bytes(), large)

    def test_smtp(self):
        message = b"Subject: dots\n\n.\n..two\nend\r\n.last"
        arguments = ["--sender=a@b", "--recipient=c@d", "--recipient=e@f"]
        rows = [({}, 0, 1), ({"greeting": "421 busy"}, 75, 0), ({"greeting": None}, 75, 0), ({"MAIL": "550 no"}, 69, 0),
                ({"RCPT": "450 later"}, 75, 0), ({"DATA": "554 no"}, 69, 0), ({"end": "451 full"}, 75, 0),
                ({"end": None}, 75, 0), ({"end": "550 no"}, 69, 0), ({"QUIT": None}, 0, 1)]
        for refusals, status, taken in rows:
            with self.subTest(refusals=refusals):
                server = Server(refusals)
                self.run_filter("", message, "--smtp", server.address, *arguments, status=status)
                server.join(10)
                self.assertEqual(server.taken, [b"Subject: dots\r\n\r\n.\r\n..two\r\nend\r\n.last\r\n"] * taken)
        self.assertEqual(server.commands[1:4], ["MAIL FROM:<a@b>", "RCPT TO:<c@d>", "RCPT TO:<e@f>"])
        self.run_filter("", message, "--smtp", "192.0.2.1:25", status=64)
        self.run_filter("", message, "--smtp", server.address, "--sender=a>\r\nRSET", status=69)

    def test_reports(self):
        counters = self.work / "vomsg.prom"
        policy = f'[report]\ncounters = "{counters}"\n' + rule('field = "Subject"')
        self.run_filter(policy, b"Subject: x\n\ny", "--json", name="a\nb")
        line = json.loads(self.log.split(": ", 1)[1])
        self.assertEqual((line["id"], line["verdict"], line["rules"], line["bytes"]), ("a\nb", "edited", ["r"], 13))
        for _ in range(3):
            self.run_filter(policy, b"A: b\n\n")
        self.assertEqual(self.log.count("\n"), 1)
        text = counters.read_text()
        self.assertIn('messages_total{verdict="passed"} 3\n', text)
        self.assertIn('rule_hits_total{rule="r"} 1\n', text)
        self.assertEqual(text.count("# TYPE"), 3)

    def test_nothing_changes_without_need(self):
        policy = (ROOT / "gateway/policy.toml").read_text().replace("[failure]\n", '[failure]\ndangerous = "open"\n')
        for path in sorted(MESSAGES.glob("*.eml")):
            with self.subTest(path=path.name):
                self.assertEqual(self.run_filter(policy, path.read_bytes(),
                                                 "--sender=a@x", "--client=192.0.2.1"), path.read_bytes())


# What the mail server sends, and what it is told to do. `leading`: the blanks in front of values are negotiated.
MILTER_SCRIPT = """
conn = mt.connect(socket, 100, 0.1)
if conn == nil then error("no connection") end
local steps = leading == "1" and 0x1FFFFF or 0x0FFFFF  -- all, with or without the leading blanks
if mt.negotiate(conn, nil, nil, steps) ~= nil then error("negotiation") end
mt.conninfo(conn, "client", "192.0.2.1")
mt.mailfrom(conn, "<a@x>")
mt.rcptto(conn, "<b@in.example>")
mt.header(conn, "Subject", subject)  -- the tool puts a blank in front where they are wanted
mt.header(conn, "X-Folded", "one\\n\\ttwo")
mt.header(conn, "X-Two", "first")
mt.header(conn, "X-Two", "second")
mt.eoh(conn)
mt.bodystring(conn, "line\\r\\n.\\r\\nend\\r\\n")
mt.eom(conn)
local reply = mt.getreply(conn)
local names = { [SMFIR_ACCEPT] = "accept", [SMFIR_REPLYCODE] = "reply", [SMFIR_REJECT] = "reject",
                [SMFIR_TEMPFAIL] = "tempfail", [SMFIR_DISCARD] = "discard", [SMFIR_CONTINUE] = "continue" }
print("reply " .. (names[reply] or reply))
print("added " .. tostring(mt.eom_check(conn, MT_HDRADD, "X-New")))
print("changed " .. tostring(mt.eom_check(conn, MT_HDRCHANGE, "Subject")))
print("two " .. tostring(mt.eom_check(conn, MT_HDRDELETE, "X-Two")))
print("folded " .. tostring(mt.eom_check(conn, MT_HDRCHANGE, "X-Folded")))
print("body " .. tostring(mt.eom_check(conn, MT_BODYCHANGE)))
mt.disconnect(conn)
"""


@unittest.skipUnless(MILTER, "vomsg-milter is not built")
class Milter(unittest.TestCase):
    def setUp(self):
        if not shutil.which("miltertest"):
            self.skipTest("miltertest is not installed")
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        self.work = pathlib.Path(self.folder.name)

    def start(self, policy):
        (self.work / "policy.toml").write_text(policy)
        place = pathlib.Path(tempfile.mkdtemp(dir=self.work))
        milter = subprocess.Popen([MILTER, "--policy", self.work / "policy.toml", "--socket", f"unix:{place}/socket"],
                                  stderr=subprocess.PIPE)
        return milter, f"unix:{place}/socket"

    def talk(self, policy, leading, subject="s", at_once=1):
        milter, address = self.start(policy)
        (self.work / "case.lua").write_text(MILTER_SCRIPT)
        try:
            clients = [subprocess.Popen(["miltertest", "-s", self.work / "case.lua", "-D", f"socket={address}",
                                         "-D", f"leading={leading}", "-D", f"subject={subject}"],
                                        stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True) for _ in range(at_once)]
            outputs = [client.communicate(timeout=60) for client in clients]
        finally:
            milter.kill()  # it would take its time over a polite word
            self.log = milter.communicate(timeout=60)[1].decode()
        for output, client in zip(outputs, clients):
            self.assertEqual(client.returncode, 0, (output, self.log))
        return [dict(line.split(" ", 1) for line in output[0].splitlines()) for output in outputs]

    def test_answers(self):
        add = '{ action = "add_field", name = "X-New", value = "1" }'
        rows = [  # actions, the reply, which operations were asked for
            ('{ action = "pass" }', "accept", []),
            (add, "accept", ["added"]),
            ('{ action = "tag", text = "[EXT]" }', "accept", ["changed"]),
            ('{ action = "remove_field", name = "X-Two" }', "accept", ["two"]),
            ('{ action = "disclaimer", text = "D" }', "accept", ["body"]),
            ('{ action = "reject", reason = "no %s" }', "reply", []),
            (add + ', { action = "set_field", name = "Y", value = "a\\u0000b" }', "tempfail", []),
            (f'{{ action = "quarantine", folder = "{self.work}" }}', "discard", []),
        ]
        for do, reply, wanted in rows:
            for leading in (0, 1):
                with self.subTest(do=do, leading=leading):
                    told, = self.talk(rule(do=do), leading)
                    self.assertEqual(told.pop("reply"), reply, self.log)
                    self.assertEqual([name for name, value in told.items() if value == "true"], wanted, self.log)
        for held in self.work.glob("*.eml"):
            self.assertEqual(held.read_bytes()[:30], b"Subject: s\nX-Folded: one\n\ttwo\n")

    def test_many_at_once(self):
        told = self.talk(rule(do='{ action = "add_field", name = "X-New", value = "1" }'), 1, at_once=8)
        self.assertEqual([each["added"] for each in told], ["true"] * 8)
        self.assertEqual(self.log.count("verdict=edited"), 8)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
