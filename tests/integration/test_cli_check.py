#!/usr/bin/env python3
"""quillora-cli check on message files made by quillora-cli pack: its exit status, its JSON, and
the size limit from the option and from the editor's settings file."""
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

CLI = sys.argv[1]
SOURCE = sys.argv[2]
CORPUS = os.path.join(SOURCE, "tests", "data", "html")


class Check(unittest.TestCase):
    def setUp(self):
        self.tmp = tempfile.TemporaryDirectory()
        self.dir = self.tmp.name
        self.env = dict(os.environ, XDG_DATA_HOME=os.path.join(self.dir, "data"))

    def tearDown(self):
        self.tmp.cleanup()

    def cli(self, *args):
        return subprocess.run([CLI, *args], capture_output=True, text=True, env=self.env)

    def pack(self, html, subject="May news"):
        out = os.path.join(self.dir, "m.mssx")
        r = self.cli("pack", html, "-o", out, "--subject", subject)
        self.assertEqual(r.returncode, 0, r.stderr)
        return out

    def check(self, message, *options):
        r = self.cli("check", "--json", *options, message)
        self.assertIn(r.returncode, (0, 3), r.stderr)
        report = json.loads(r.stdout)
        self.assertEqual(r.returncode == 3, report["errors"] > 0)
        return r.returncode, report

    def test_corpus_newsletters_carry_every_file_they_use(self):
        for name in sorted(os.listdir(CORPUS)):
            with self.subTest(name):
                rc, report = self.check(self.pack(os.path.join(CORPUS, name, "index.html")))
                rules = {f["rule"] for f in report["findings"]}
                self.assertNotIn("missing-file", rules)
                self.assertEqual(rc, 0, report)

    def test_errors_point_at_their_elements_and_exit_3(self):
        page = os.path.join(self.dir, "page.html")
        shutil.copy(os.path.join(CORPUS, "colorlib-16", "images", "bg_1.jpg"),
                    os.path.join(self.dir, "bg.jpg"))
        with open(page, "w", encoding="utf-8") as f:
            f.write('<html><body><p>Dear :::Nme:::,</p><img alt="" src="bg.jpg">'
                    '<img alt="" src="gone.png"><a href="javascript:go()">Offer</a>'
                    '<a href="mailto:list@example.com?subject=REMOVE">leave</a></body></html>')
        with open(os.path.join(self.dir, "gone.png"), "wb") as f:
            f.write(b"\x89PNG\r\n\x1a\n")
        message = self.pack(page, subject="")
        # A message that lost one of its files: the object is cut out of the file.
        with open(message, "rb") as f:
            text = f.read().decode("utf-16")
        text, cut = re.subn(r"\[<INI-FILE:[^>]*gone\.png>\].*?\[<END-FILE>\]\r\n", "", text,
                            flags=re.S)
        self.assertEqual(cut, 1)
        with open(message, "wb") as f:
            f.write(text.encode("utf-16"))
        os.remove(os.path.join(self.dir, "gone.png"))
        rc, report = self.check(message)
        self.assertEqual(rc, 3)
        by_rule = {f["rule"]: f for f in report["findings"]}
        self.assertEqual(set(by_rule), {"empty-subject", "unknown-token", "missing-file",
                                        "empty-link"})
        self.assertEqual(by_rule["missing-file"]["element"], {"tag": "img", "index": 1})
        self.assertEqual(by_rule["unknown-token"]["element"], {"tag": "p", "index": 0})
        self.assertIn(":::nom:::", by_rule["unknown-token"]["message"])
        self.assertEqual(by_rule["empty-link"]["severity"], "warning")
        self.assertNotIn("element", by_rule["empty-subject"])

        # The picture is 66 KB: over a limit of 0.05 MB, whether given or set in the editor.
        rc, report = self.check(message, "--size-limit", "0.05")
        self.assertIn("message-too-large", {f["rule"] for f in report["findings"]})
        settings = os.path.join(self.env["XDG_DATA_HOME"], "Talvenor Data", "Corvanta 4")
        os.makedirs(settings, exist_ok=True)
        with open(os.path.join(settings, "Anteprima.dll"), "wb") as f:
            f.write("\ufeffsize-limit-mb: 1\r\n".encode("utf-16-le"))
        rc, report = self.check(message)
        self.assertNotIn("message-too-large", {f["rule"] for f in report["findings"]})

    def test_text_report_and_bad_input(self):
        message = self.pack(os.path.join(CORPUS, "cerberus-hybrid", "index.html"))
        r = self.cli("check", message)
        self.assertEqual(r.returncode, 0, r.stderr)
        self.assertRegex(r.stdout.splitlines()[-1], r"^0 errors, \d+ warnings, \d+ hints$")
        not_a_message = os.path.join(self.dir, "x.mssx")
        with open(not_a_message, "w") as f:
            f.write("hello")
        r = self.cli("check", not_a_message)
        self.assertEqual(r.returncode, 1)
        self.assertTrue(r.stderr.startswith("quillora-cli: "), r.stderr)
        self.assertEqual(self.cli("check", "--size-limit", "-2", message).returncode, 2)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
