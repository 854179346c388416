#!/usr/bin/env python3
"""Message files checked by an independent reader: pack every corpus newsletter, read the
file back with Python's own UTF-16 and base64 decoders, and extract it again."""
import base64
import hashlib
import html.parser
import json
import os
import re
import subprocess
import sys
import tempfile
import unittest

CLI = sys.argv[1]
SOURCE = sys.argv[2]
CORPUS = os.path.join(SOURCE, "tests", "data", "html")


def cli(*args, check=True):
    r = subprocess.run([CLI, *args], capture_output=True, text=True)
    if check and r.returncode != 0:
        raise AssertionError(f"quillora-cli {' '.join(args)} failed: {r.stderr}")
    return r


def sha(path):
    with open(path, "rb") as f:
        return hashlib.sha256(f.read()).hexdigest()


def parse_message(path):
    """Our own reading of the layout: UTF-16LE with BOM, tagged sections, Base64 objects."""
    with open(path, "rb") as f:
        raw = f.read()
    assert raw[:2] == b"\xff\xfe", "no UTF-16LE byte-order mark"
    text = raw[2:].decode("utf-16-le")
    assert text.endswith("[<END-OBJECT>]\r\n")
    head, rest = text.split("[<INI-MESS>]\r\n", 1)
    body, objects = rest.split("\r\n[<END-MESS>]\r\n", 1)
    found = []
    for piece in objects.split("[<INI-FILE:")[1:]:
        stored, data = piece.split(">]\r\n", 1)
        b64 = data.split("\r\n[<END-FILE>]", 1)[0]
        lines = b64.split("\r\n")
        assert all(len(l) == 76 for l in lines[:-1]), "a Base64 line is not 76 characters"
        assert len(lines[-1]) <= 76
        found.append((stored, base64.b64decode("".join(lines), validate=True)))
    return head, body, found


CSS_URL = re.compile(r"""url\(\s*(?:"([^"]*)"|'([^']*)'|([^)"'\s]*))\s*\)""", re.I)
SRC_TAGS = {"img", "input", "script", "iframe", "frame", "embed", "bgsound", "audio", "video",
            "source", "v:image", "v:fill", "v:imagedata"}


class References(html.parser.HTMLParser):
    """Every reference of a page as Python's own HTML parser sees it: src or background
    attributes, CSS urls of style attributes and <style> blocks, and the same inside
    conditional comments, whose content is parsed again."""

    def __init__(self):
        super().__init__(convert_charrefs=True)
        self.found = []  # (where, value)
        self.in_style = False

    def css(self, where, text):
        for m in CSS_URL.finditer(text):
            self.found.append((where, next(g for g in m.groups() if g is not None)))

    def handle_starttag(self, tag, attrs):
        a = dict(attrs)
        name = "src" if tag in SRC_TAGS else "background"
        if a.get(name):
            self.found.append((f"{tag} {name}", a[name]))
        if a.get("style"):
            self.css(f"{tag} style", a["style"])
        self.in_style = tag == "style"

    handle_startendtag = handle_starttag

    def handle_endtag(self, tag):
        self.in_style = False

    def handle_data(self, data):
        if self.in_style:
            self.css("style block", data)

    def handle_comment(self, data):
        if data.lower().startswith("[if") and "]>" in data:
            inner = References()
            inner.feed(data.split("]>", 1)[1].rsplit("<![endif]", 1)[0])
            inner.close()
            self.found += [(f"conditional {w}", v) for w, v in inner.found]


def references(text):
    p = References()
    p.feed(text)
    p.close()
    return p.found


def is_local(value):
    v = value.strip().lower()
    return v and not re.match(r"^(https?:|data:|cid:|mailto:|#|//)", v)


def local_images(folder):
    out = {}
    for root, _, files in os.walk(folder):
        for f in files:
            if f != "index.html":
                out[f] = os.path.join(root, f)
    return out


class CorpusRoundTrip(unittest.TestCase):
    def test_every_newsletter(self):
        names = sorted(os.listdir(CORPUS))
        self.assertGreaterEqual(len(names), 10)
        for name in names:
            with self.subTest(newsletter=name), tempfile.TemporaryDirectory() as tmp:
                folder = os.path.join(CORPUS, name)
                page = os.path.join(folder, "index.html")
                images = local_images(folder)
                msg = os.path.join(tmp, "news.mssx")
                cli("pack", page, "-o", msg, "--subject", f"Issue {name}", "--priority", "LW")

                info = json.loads(cli("info", "--json", msg).stdout)
                self.assertEqual(info["version"], 4)
                self.assertEqual(info["subject"], f"Issue {name}")
                self.assertEqual(info["priority"], "LW")
                self.assertEqual(sorted(o["name"] for o in info["objects"]), sorted(images))
                for o in info["objects"]:
                    self.assertEqual(o["size"], os.path.getsize(images[o["name"]]))

                # Python's decoders agree with what was written.
                head, body, objects = parse_message(msg)
                self.assertTrue(head.startswith(f"[<INI-SUBJ>]Issue {name}[<END-SUBJ>]\r\n"))
                with open(page, "rb") as f:
                    original = f.read().decode("utf-8-sig")
                self.assertEqual(body, original)
                self.assertEqual(info["body_bytes"], len(original.encode("utf-8")))
                for stored, data in objects:
                    fname = re.split(r"[\\/]", stored)[-1]
                    self.assertEqual(hashlib.sha256(data).hexdigest(), sha(images[fname]), stored)

                out = os.path.join(tmp, "out")
                cli("extract", msg, out)
                for fname, src in images.items():
                    self.assertEqual(sha(os.path.join(out, fname)), sha(src), fname)
                with open(os.path.join(out, "body.html"), encoding="utf-8") as f:
                    extracted = f.read()
                self.assert_only_references_changed(original, extracted, out + "/")
                # Every local picture of the page, wherever it is named, is there after the trip.
                local = [(w, v) for w, v in references(extracted) if is_local(v)]
                self.assertEqual(len(local), len([r for r in references(original)
                                                  if is_local(r[1])]))
                for where, value in local:
                    self.assertTrue(value.startswith(out + "/"), f"{where}: {value}")
                    self.assertTrue(os.path.isfile(value), f"{where}: {value}")
                if name == "colorlib-16":
                    kinds = {w for w, _ in local}
                    for kind in ("td style", "conditional v:image src", "td background"):
                        self.assertIn(kind, kinds)

    def assert_only_references_changed(self, original, extracted, folder):
        # Attribute values sit between quotes: outside them nothing may differ, and a value
        # that differs must name the restored copy of the same file.
        a = re.split(r"([\"'])", original)
        b = re.split(r"([\"'])", extracted)
        self.assertEqual(len(a), len(b))
        for x, y in zip(a, b):
            if x != y:
                self.assertTrue(y.startswith(folder), f"{x!r} became {y!r}")
                self.assertEqual(re.split(r"[\\/]", x.strip())[-1], y[len(folder):])
                self.assertTrue(os.path.isfile(y), y)


class BadInput(unittest.TestCase):
    def test_exit_codes_and_one_clear_line(self):
        with tempfile.TemporaryDirectory() as tmp:
            junk = os.path.join(tmp, "junk.mssx")
            with open(junk, "wb") as f:
                f.write(b"\xff\xfe" + "hello".encode("utf-16-le") + b"!")
            r = cli("info", junk, check=False)
            self.assertEqual(r.returncode, 1)
            self.assertEqual(len(r.stderr.strip().splitlines()), 1)
            self.assertIn("junk.mssx", r.stderr)

            notmsg = os.path.join(tmp, "plain.mssx")
            with open(notmsg, "w") as f:
                f.write("just text\n")
            r = cli("extract", notmsg, os.path.join(tmp, "x"), check=False)
            self.assertEqual(r.returncode, 1)
            self.assertIn("not a message file", r.stderr)

            self.assertEqual(cli("info", os.path.join(tmp, "missing.mssx"), check=False).returncode, 1)
            self.assertEqual(cli("pack", check=False).returncode, 2)
            self.assertEqual(cli("frobnicate", check=False).returncode, 2)
            self.assertEqual(cli("pack", "a.html", "-o", "b", "--priority", "XX", check=False).returncode, 2)

    def test_crafted_names_never_leave_the_folder(self):
        with tempfile.TemporaryDirectory() as tmp:
            payload = base64.b64encode(b"owned").decode()
            text = ("[<INI-SUBJ>]s[<END-SUBJ>]\r\n[<INI-PRIO>]NR[<END-PRIO>]\r\n[<INI-ALLG>]\r\n"
                    "[<END-ALLG>]\r\n[<INI-MESS>]\r\n"
                    f"<p>[<INI-FILE:..\\quoted.txt>]\r\n{payload}\r\n[<END-FILE>]</p>\r\n"
                    "[<END-MESS>]\r\n[<INI-OBJECT>]\r\n"
                    f"[<INI-FILE:c:\\m\\..>]\r\n{payload}\r\n[<END-FILE>]\r\n"
                    f"[<INI-FILE:/etc/x/\x01bad>]\r\n{payload}\r\n[<END-FILE>]\r\n"
                    f"[<INI-FILE:c:\\m\\img\\logo.png>]\r\n{payload}\r\n[<END-FILE>]\r\n"
                    "[<END-OBJECT>]\r\n")
            msg = os.path.join(tmp, "crafted.mssx")
            with open(msg, "wb") as f:
                f.write(b"\xff\xfe" + text.encode("utf-16-le"))
            out = os.path.join(tmp, "deep", "out")
            r = cli("extract", msg, out)
            self.assertEqual(sorted(os.listdir(out)), ["body.html", "logo.png"])
            with open(os.path.join(out, "logo.png"), "rb") as f:
                self.assertEqual(f.read(), b"owned")
            self.assertEqual(sorted(os.listdir(tmp)), ["crafted.mssx", "deep"])
            self.assertEqual(os.listdir(os.path.join(tmp, "deep")), ["out"])
            self.assertGreaterEqual(len(r.stderr.strip().splitlines()), 2)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "-v"])
