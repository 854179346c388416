#!/usr/bin/env python3
"""quillora-cli snippets and templates, and what a first start lays down: the snippet files
read back as bytes, every shipped template packed into a message and read with the round-trip
test's own reader, the social icons counted and their picture headers checked."""
import os
import re
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from test_message_roundtrip import parse_message  # noqa: E402

CLI = sys.argv[1]
NETWORKS = ["facebook", "twitter", "google", "linkedin", "youtube", "flickr", "tumblr", "vimeo",
            "myspace"]
SIZES = ["16x16", "32x32", "48x48", "64x64"]


def utf16(text):
    return b"\xff\xfe" + text.encode("utf-16-le")


class Content(unittest.TestCase):
    def setUp(self):
        self.tmp = tempfile.TemporaryDirectory()
        self.home = os.path.join(self.tmp.name, "home")
        self.shared = os.path.join(self.home, "Talvenor Data", "Corvanta 4")

    def tearDown(self):
        self.tmp.cleanup()

    def cli(self, *args):
        env = dict(os.environ, XDG_DATA_HOME=self.home)
        return subprocess.run([CLI, *args], capture_output=True, env=env)

    def ok(self, *args):
        r = self.cli(*args)
        self.assertEqual(r.returncode, 0, r.stderr)
        return r.stdout.decode("utf-8")

    def test_snippets_round_trip(self):
        self.assertEqual(self.ok("snippets", "list"), "")
        memory = os.path.join(self.shared, "Memory")
        self.assertEqual(self.ok("snippets", "add", "--title", "Greeting", "--text",
                                 "Hello\nWorld"), "00000001\n")
        with open(os.path.join(memory, "00000001.mem"), "rb") as f:
            self.assertEqual(f.read(), utf16("Greeting\r\nHello\r\nWorld"))
        with open(os.path.join(memory, "Counter.mem"), "rb") as f:
            self.assertEqual(f.read(), utf16("1\r\n"))
        source = os.path.join(self.tmp.name, "footer.html")
        with open(source, "w", encoding="utf-8") as f:
            f.write("<p>Caf\u00e9 & co</p>\n<p>Rome</p>")
        self.assertEqual(self.ok("snippets", "add", "--title=Footer", "--file", source),
                         "00000002\n")
        self.assertEqual(self.ok("snippets", "list"), "00000001\tGreeting\n00000002\tFooter\n")
        self.assertEqual(self.ok("snippets", "show", "2"), "<p>Caf\u00e9 & co</p>\r\n<p>Rome</p>")
        self.ok("snippets", "remove", "1")
        self.assertEqual(self.ok("snippets", "add", "--title", "", "--text", ""), "00000003\n")
        self.assertEqual(self.ok("snippets", "list"), "00000002\tFooter\n00000003\t\n")

    def test_snippet_errors(self):
        cases = [
            (("snippets", "show", "7"), 1),
            (("snippets", "remove", "7"), 1),
            (("snippets", "add", "--text", "x"), 2),
            (("snippets", "add", "--title", "t", "--text", "x", "--file", "y"), 2),
            (("snippets", "add", "--title", "t", "--file", os.path.join(self.tmp.name, "no")), 1),
            (("snippets", "add", "--title", "two\nlines", "--text", "x"), 1),
            (("snippets", "show"), 2),
            (("snippets", "rename", "1"), 2),
            (("templates", "list", "extra"), 2),
        ]
        for args, code in cases:
            with self.subTest(args=args):
                r = self.cli(*args)
                self.assertEqual(r.returncode, code, r.stderr)
                self.assertEqual(len(r.stderr.decode().strip().splitlines()), 1, r.stderr)

    def test_every_template_packs_with_its_pictures(self):
        rows = [line.split("\t") for line in self.ok("templates", "list").splitlines()]
        categories = [r[0] for r in rows]
        self.assertGreaterEqual(categories.count("Professional"), 3)
        self.assertGreaterEqual(categories.count("Simple"), 3)
        self.assertEqual(categories, sorted(categories))  # Professional first
        for category, name, page in rows:
            with self.subTest(template=name):
                thumbnail = os.path.join(os.path.dirname(os.path.dirname(page)), name + ".jpg")
                with open(thumbnail, "rb") as f:
                    self.assertEqual(f.read(3), b"\xff\xd8\xff")
                with open(page, encoding="utf-8") as f:
                    html = f.read()
                self.assertIn('width="600"', html)
                self.assertIn('name="viewport"', html)
                self.assertRegex(html, r":::[a-z0-9]+:::")
                self.assertIn("subject=REMOVE", html)
                wanted = set(re.findall(r'<img[^>]* src="([^":]+)"', html))
                self.assertTrue(wanted, "no local picture")
                out = os.path.join(self.tmp.name, name + ".mssx")
                r = self.cli("pack", page, "-o", out, "--subject", name)
                self.assertEqual(r.returncode, 0, r.stderr)
                _, _, objects = parse_message(out)
                stored = {os.path.basename(s.replace("\\", "/")) for s, _ in objects}
                self.assertEqual(stored, wanted)
                for s, data in objects:
                    self.assertTrue(data[:8] == b"\x89PNG\r\n\x1a\n" or data[:3] == b"\xff\xd8\xff", s)

    def test_first_start_lays_down_the_icon_set_and_keeps_what_exists(self):
        self.ok("snippets", "list")
        icons = os.path.join(self.shared, "Icone Social")
        files = set(os.listdir(icons))
        self.assertEqual(len(files), 1440)
        for n in NETWORKS:
            for d in range(1, 21):
                for s in SIZES:
                    for ext in (".jpg", ".png"):
                        self.assertIn("%02d_%s_%s%s" % (d, s, n, ext), files)
        with open(os.path.join(icons, "07_32x32_vimeo.png"), "rb") as f:
            head = f.read(24)
        self.assertEqual(head[:8], b"\x89PNG\r\n\x1a\n")
        self.assertEqual(int.from_bytes(head[16:20], "big"), 32)
        # The set differs from design to design.
        with open(os.path.join(icons, "01_64x64_vimeo.png"), "rb") as a, \
                open(os.path.join(icons, "02_64x64_vimeo.png"), "rb") as b:
            self.assertNotEqual(a.read(), b.read())
        # A user's change to a template survives the next start.
        page = self.ok("templates", "list").splitlines()[0].split("\t")[2]
        with open(page, "w", encoding="utf-8") as f:
            f.write("<p>mine</p>")
        self.ok("templates", "list")
        with open(page, encoding="utf-8") as f:
            self.assertEqual(f.read(), "<p>mine</p>")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
