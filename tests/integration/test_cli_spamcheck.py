#!/usr/bin/env python3
"""quillora-cli to-eml and spamcheck against independent readers: every newsletter of the test
data, packed and composed, is parsed by Python's email package (policy default), and scored by
the real spamassassin, whose own header must carry the score the command reports."""
import glob
import html.parser
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
import urllib.parse

# Debian's interpreter is the one the project's test tools are installed for.
if sys.executable != "/usr/bin/python3" and os.path.exists("/usr/bin/python3"):
    os.execv("/usr/bin/python3", ["/usr/bin/python3", *sys.argv])

import email  # noqa: E402
import email.policy  # noqa: E402

CLI = os.path.abspath(sys.argv[1])
SOURCE = sys.argv[2]
DATA = os.path.join(SOURCE, "tests", "data")
NEWSLETTERS = sorted(glob.glob(os.path.join(DATA, "html", "*", "index.html")))
ATTACHMENT = os.path.join(DATA, "docs", "two_images.doc")
GTUBE = "XJS*C4JDBQADN1.NSBN3*2IDNEN*GTUBE-STANDARD-ANTI-UBE-TEST-EMAIL*C.34X"


class LocalImages(html.parser.HTMLParser):
    """File names of the local files a page loads through src, else background."""

    def __init__(self, folder):
        super().__init__()
        self.folder = folder
        self.names = set()

    def handle_starttag(self, tag, attrs):
        attrs = dict(attrs)
        value = attrs["src"] if "src" in attrs else attrs.get("background")
        if not value or re.match(r"^[a-z][a-z0-9+.-]*:|^//", value, re.I):
            return
        path = urllib.parse.unquote(value.split("?")[0].split("#")[0])
        if os.path.isfile(os.path.join(self.folder, path)):
            self.names.add(os.path.basename(path))


def all_defects(message):
    found = list(message.defects)
    for part in message.walk():
        found += part.defects
    return found


class ComposedMail(unittest.TestCase):
    def setUp(self):
        self.tmp = tempfile.TemporaryDirectory()
        self.dir = self.tmp.name
        self.env = dict(os.environ, XDG_DATA_HOME=os.path.join(self.dir, "xdg"))
        r = self.cli("accounts", "add", "--name", "Anna Rossi", "--address", "anna@example.com")
        self.assertEqual(r.returncode, 0, r.stderr)

    def tearDown(self):
        self.tmp.cleanup()

    def cli(self, *args, env=None, text=True):
        return subprocess.run([CLI, *args], capture_output=True, text=text,
                              env=env or self.env)

    def pack(self, page, name, *options):
        out = os.path.join(self.dir, name + ".mssx")
        r = self.cli("pack", page, "-o", out, "--subject", "Offerta di maggio — caffè",
                     *options)
        self.assertEqual(r.returncode, 0, r.stderr)
        return out

    def test_every_newsletter_parses_with_its_images_and_attachment(self):
        self.assertGreaterEqual(len(NEWSLETTERS), 10)
        for page in NEWSLETTERS:
            name = os.path.basename(os.path.dirname(page))
            with self.subTest(newsletter=name):
                packed = self.pack(page, name, "--attach", ATTACHMENT, "--priority", "HI")
                eml = os.path.join(self.dir, name + ".eml")
                r = self.cli("to-eml", packed, "-o", eml, "--to", "bob@example.org",
                             "--name", "Bob Bianchi", "--reply-to", "replies@example.com",
                             "--receipt", "--counter")
                self.assertEqual(r.returncode, 0, r.stderr)
                with open(eml, "rb") as f:
                    msg = email.message_from_binary_file(f, policy=email.policy.default)
                self.assertEqual(all_defects(msg), [])
                self.assertEqual(msg["Subject"], "Offerta di maggio — caffè")
                self.assertEqual(msg["To"].addresses[0].addr_spec, "bob@example.org")
                self.assertEqual(msg["Reply-To"].addresses[0].addr_spec, "replies@example.com")
                self.assertIn("anna@example.com", msg["Disposition-Notification-To"])
                self.assertTrue(msg["X-Priority"].startswith("1"))
                self.assertIsNone(msg["X-MimeOLE"], "an export carries no client marks")

                html_part = msg.get_body(("html",))
                text_part = msg.get_body(("plain",))
                self.assertIsNotNone(html_part)
                self.assertIsNotNone(text_part)
                body = html_part.get_content()
                self.assertIn("/readcount.asp?KEY_INVIO_RND=0000", body)
                self.assertNotIn("<READCOUNTER>", body)

                cids = set(re.findall(r"cid:([^\"'\s)>]+)", body))
                images = {}
                for part in msg.walk():
                    if part["Content-ID"]:
                        images[part["Content-ID"].strip("<>")] = part
                folder = os.path.dirname(page)
                parser = LocalImages(folder)
                with open(page, encoding="utf-8", errors="replace") as f:
                    parser.feed(f.read())
                self.assertEqual(len(images), len(parser.names))
                self.assertEqual(cids, set(images), "every cid: names an image part")
                for part in images.values():
                    self.assertEqual(part.get_content_maintype(), "image")

                attached = [p for p in msg.iter_attachments()
                            if p.get_filename() == "two_images.doc"]
                self.assertEqual(len(attached), 1)
                with open(ATTACHMENT, "rb") as f:
                    self.assertEqual(attached[0].get_content(), f.read())

    def test_filter_scores_every_newsletter_as_its_header_says(self):
        if not shutil.which("spamassassin"):
            self.skipTest("spamassassin is not installed (scripts/deps.sh installs it)")
        out_eml = os.path.join(self.dir, "xdg", "Talvenor Data", "Corvanta 4", "SPAMASS",
                               "out.eml")
        for page in NEWSLETTERS:
            name = os.path.basename(os.path.dirname(page))
            with self.subTest(newsletter=name):
                packed = self.pack(page, name)
                r = self.cli("spamcheck", "--json", packed)
                self.assertEqual(r.returncode, 0, r.stderr)
                verdict = json.loads(r.stdout)
                with open(out_eml, "rb") as f:
                    scored = email.message_from_binary_file(f, policy=email.policy.default)
                status = str(scored["X-Spam-Status"])
                m = re.match(r"(\w+),\s+score=(-?[\d.]+)\s+required=([\d.]+)", status)
                self.assertIsNotNone(m, status)
                self.assertEqual(verdict["spam"], m.group(1) == "Yes")
                self.assertEqual(verdict["score"], float(m.group(2)))
                self.assertEqual(verdict["required"], float(m.group(3)))
                self.assertIn("Produced By Microsoft MimeOLE", str(scored["X-MimeOLE"]))

    def test_test_string_is_spam_with_its_rule(self):
        if not shutil.which("spamassassin"):
            self.skipTest("spamassassin is not installed (scripts/deps.sh installs it)")
        page = os.path.join(self.dir, "gtube.html")
        with open(page, "w", encoding="utf-8") as f:
            f.write("<html><body><p>%s</p></body></html>" % GTUBE)
        r = self.cli("spamcheck", "--json", self.pack(page, "gtube"))
        self.assertEqual(r.returncode, 0, r.stderr)
        verdict = json.loads(r.stdout)
        self.assertTrue(verdict["spam"])
        gtube = [rule for rule in verdict["rules"] if rule["name"] == "GTUBE"]
        self.assertEqual(len(gtube), 1)
        self.assertGreaterEqual(gtube[0]["points"], 1000)
        self.assertTrue(gtube[0]["description"])

        plain = self.cli("spamcheck", self.pack(page, "gtube"), text=False)
        self.assertEqual(plain.returncode, 0, plain.stderr)
        self.assertTrue(plain.stdout.startswith(b"Spam Status.....: YES\r\nSpam Score......: "))
        self.assertIn(b"\r\nSpam Required...: 5\r\n", plain.stdout)
        self.assertIn(b"\r\n1000 GTUBE ", plain.stdout)

    def test_bad_input_and_missing_filter_exit_1(self):
        page = os.path.join(self.dir, "p.html")
        with open(page, "w", encoding="utf-8") as f:
            f.write("<p>hello</p>")
        packed = self.pack(page, "p")
        cases = {
            "missing file": (["to-eml", os.path.join(self.dir, "none.mssx"), "-o", "x.eml"],
                             None, "no such file"),
            "not a message": (["to-eml", page, "-o", os.path.join(self.dir, "x.eml")],
                              None, "not a message"),
            "unknown account": (["to-eml", packed, "-o", os.path.join(self.dir, "x.eml"),
                                 "--account", "99"], None, "no account"),
            "no filter": (["spamcheck", packed], dict(self.env, PATH=self.dir),
                          "spamassassin is not installed"),
        }
        for label, (args, env, said) in cases.items():
            with self.subTest(case=label):
                r = self.cli(*args, env=env)
                self.assertEqual(r.returncode, 1, r.stderr)
                self.assertIn(said, r.stderr.lower())
        self.assertFalse(os.path.exists(os.path.join(self.dir, "x.eml")))


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0]])
