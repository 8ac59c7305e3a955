"""The installed package serves a caller: through find_package, through pkg-config, and exports what it should.

usage: install_test.py BUILD_FOLDER CMAKE CXX [FLAG...]
"""
import base64
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

BUILD, CMAKE, CXX, *FLAGS = sys.argv[1:]
ROOT = pathlib.Path(__file__).resolve().parents[2]
MESSAGE = (b"Subject: old\r\nContent-Type: multipart/mixed; boundary=b\r\nMIME-Version: 1.0\r\n\r\n"
           b"--b\r\n\r\none\r\n--b\r\nContent-Type: image/png\r\nContent-Transfer-Encoding: base64\r\n\r\n"
           b"AAEC\r\n--b--\r\n")


def run(*command, **options):
    done = subprocess.run([str(word) for word in command], capture_output=True, **options)
    if done.returncode != 0:
        raise AssertionError(f"{command}: exit {done.returncode}\n{done.stdout.decode()}\n{done.stderr.decode()}")
    return done.stdout.decode()


class InstalledPackage(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(cls.folder.cleanup)
        cls.work = pathlib.Path(cls.folder.name)
        cls.prefix = cls.work / "prefix"
        run(CMAKE, "--install", BUILD, "--prefix", cls.prefix)
        cls.library = next(cls.prefix.rglob("libvomsg.so.0"))
        (cls.work / "in.eml").write_bytes(MESSAGE)

    def use(self, program):
        """The caller's program lists the parts, edits the subject, and leaves the rest alone."""
        environment = {**os.environ, "LD_LIBRARY_PATH": str(self.library.parent)}
        output = run(program, "in.eml", cwd=self.work, env=environment)
        self.assertEqual(output.splitlines()[1:], ["text/plain, 3 bytes", "image/png, 3 bytes"])
        copy = (self.work / "copy.eml").read_bytes()
        self.assertNotIn(b"Subject: old", copy)
        self.assertRegex(copy, rb"(?i)Subject: =\?utf-8\?Q\?")
        body, image = copy.partition(b"\r\n\r\n")[2].split(b"--b\r\nContent-Type: ")
        self.assertEqual(body, MESSAGE.partition(b"\r\n\r\n")[2].split(b"--b\r\nContent-Type: ")[0])
        self.assertIn(base64.b64encode(b"An image was here.\r\n"), image)

    def test_find_package(self):
        run(CMAKE, "-G", "Ninja", "-S", ROOT / "tests/install", "-B", self.work / "consumer",
            f"-DCMAKE_PREFIX_PATH={self.prefix}",
            f"-DCMAKE_CXX_COMPILER={CXX}", f"-DCMAKE_CXX_FLAGS={' '.join(FLAGS)}")
        run(CMAKE, "--build", self.work / "consumer")
        self.use(self.work / "consumer/consumer")

    def test_pkg_config(self):
        folder = next(self.prefix.rglob("vomsg.pc")).parent
        flags = run("pkg-config", "--cflags", "--libs", "vomsg",
                    env={**os.environ, "PKG_CONFIG_PATH": str(folder)}).split()
        run(CXX, "-std=c++17", *FLAGS, ROOT / "tests/install/main.cpp", "-o", self.work / "direct", *flags)
        self.use(self.work / "direct")

    def test_symbols(self):
        """Only the interface is exported; it never claims a name of the C library."""
        names = [line.split(None, 2)[2].split("@@")[0] for line in
                 run("nm", "-D", "-C", "--defined-only", self.library).splitlines() if len(line.split(None, 2)) == 3]
        self.assertIn("VoMsgRfc822Message::readFrom(VoMsgResourceLocator*)", names)
        self.assertIn("voMsgGetVersion(char*, unsigned int)", names)
        self.assertEqual([name for name in names if re.match(r"(free|malloc|realloc|operator .*)\b", name)], [])
        self.assertEqual([name for name in names if "vomsg::detail" in name], [])
        self.assertEqual([name for name in names if re.match(r"(\S+ for )?(std|__gnu_cxx|vomsg)::", name)], [])
        unique = [line for line in run("nm", "-D", "-C", "--defined-only", self.library).splitlines() if " u " in line]
        self.assertEqual(unique, [])

    @unittest.skipIf("-m32" in FLAGS, "types of the size of a pointer have other names there")
    def test_exports_are_those_listed(self):
        """What is exported stays; a change is written into the list by hand: tools/list_exports.py LIBRARY."""
        sys.path.insert(0, str(ROOT / "tools"))
        import list_exports
        self.assertEqual(list_exports.differences(self.library, ROOT / "tests/install/exports.txt"), [])

    def test_library_file(self):
        dynamic = run("readelf", "-d", self.library)
        self.assertIn("Library soname: [libvomsg.so.0]", dynamic)
        needed = re.findall(r"\(NEEDED\)\s+Shared library: \[([^\]]+)\]", dynamic)
        foreign = [name for name in needed
                   if not re.match(r"(libicu(uc|data)|libstdc\+\+|libm|libgcc_s|libc|ld-linux\S*)\.so", name)]
        self.assertEqual(foreign, [])
        self.assertNotIn(str(ROOT).encode(), self.library.read_bytes())

    def test_what_comes_along(self):
        """The target asks for the language of the headers; the README's links lead somewhere, examples are there."""
        config = next(self.prefix.rglob("vomsgConfig.cmake")).read_text(encoding="utf-8")
        self.assertIn("cxx_std_17", config)
        readme = next(self.prefix.rglob("README.md"))
        links = re.findall(r"\]\((?!https?:)([^)#]+)", readme.read_text(encoding="utf-8"))
        self.assertIn("docs/design.md", links)
        self.assertEqual([link for link in links if not (readme.parent / link).exists()], [])
        self.assertTrue((readme.parent / "examples/list_parts.cpp").exists())

    def test_readme_tells_the_truth(self):
        """The program of the README is the one that is compiled here."""
        shown = re.search(r"```cpp\n(.*?)```", (ROOT / "README.md").read_text(encoding="utf-8"), re.DOTALL)[1]
        self.assertIn(shown, (ROOT / "tests/install/main.cpp").read_text(encoding="utf-8"))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
