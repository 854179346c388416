#!/usr/bin/env python3
"""quillora-cli import on every document, mail and Outlook file of tests/data, and on mails and
documents in legacy character sets made here with Python's email package and by hand. The
messages are read back with the round-trip test's own reader and with `extract`."""
import email.message
import email.policy
import glob
import json
import os
import re
import struct
import subprocess
import sys
import tempfile
import unittest
import zlib

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from test_message_roundtrip import parse_message  # noqa: E402

CLI = sys.argv[1]
SOURCE = sys.argv[2]
DATA = os.path.join(SOURCE, "tests", "data")

# Per file: words the body shows, pictures the import embeds, attachments it keeps.
EXPECTED = {
    "docs/having-images.docx": ([], 3, 0),
    "docs/two_images.doc": ([], 2, 0),
    "docs/simplepng.rtf": (["Image"], 1, 0),
    "eml/multipart-alternative-utf8-newsletter.eml": (["multivitamins"], 0, 0),
    "eml/inline-cid-images-iso-8859-1.eml": (["MIME E-mail message composing"], 2, 1),
    "eml/attachments-docx-pdf-odt-png-eml.eml": (["ligne 1", "ligne 3"], 0, 5),
    "eml/windows-1252-qp-inline-and-attachments.eml": (["Test email"], 1, 6),
    "eml/iso-8859-1-newsletter-2002.eml": (["Manage Your Finances Better"], 0, 0),
    "eml/related-cid-watch-html-attachment.eml": (["nyan cat"], 2, 1),
    "msg/html-body-in-rtf.msg": (["Prince, so Genoa and Lucca"], 0, 0),
    "msg/html-body-two-jpeg-attachments.msg": (["tinkerbell"], 1, 1),
    "msg/embedded-image-cid.msg": ([], 1, 0),
}


# LibreOffice's profile lives in the cache folder: a private one keeps this test apart from
# any other conversion running on the machine.
CACHE = tempfile.TemporaryDirectory()
ENV = dict(os.environ, XDG_CACHE_HOME=CACHE.name)


def cli(*args):
    return subprocess.run([CLI, *args], capture_output=True, text=True, env=ENV)


def bmp(width, height):
    """A 24-bit BMP, the kind of picture old mail programs attach."""
    row = (width * 3 + 3) & ~3
    pixels = b"".join(bytes((x * 40 % 256, y * 60 % 256, 128)) * 1 for y in range(height)
                      for x in range(width))
    rows = b"".join(pixels[y * width * 3:(y + 1) * width * 3].ljust(row, b"\0")
                    for y in range(height))
    header = struct.pack("<2sIHHI", b"BM", 54 + len(rows), 0, 0, 54)
    info = struct.pack("<IiiHHIIiiII", 40, width, height, 1, 24, 0, len(rows), 2835, 2835, 0, 0)
    return header + info + rows


def png(width, height):
    def chunk(kind, data):
        return (struct.pack(">I", len(data)) + kind + data
                + struct.pack(">I", zlib.crc32(kind + data) & 0xFFFFFFFF))
    raw = b"".join(b"\0" + bytes((x * 9 % 256, 80, 200)) * 1 for _ in range(height)
                   for x in range(width))
    raw = b"".join(b"\0" + b"".join(bytes((x * 9 % 256, y, 200)) for x in range(width))
                   for y in range(height))
    return (b"\x89PNG\r\n\x1a\n"
            + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0))
            + chunk(b"IDAT", zlib.compress(raw)) + chunk(b"IEND", b""))


def wmf():
    """A Windows metafile with one red rectangle, as Word documents carry their clip art."""
    def rec(func, *words):
        return struct.pack("<IH", 3 + len(words), func) + b"".join(
            struct.pack("<h", w) for w in words)
    body = (rec(0x020B, 0, 0) + rec(0x020C, 100, 200)  # window origin and extent
            + struct.pack("<IHHIH", 7, 0x02FC, 0, 0x0000FF, 0)  # a solid red brush
            + rec(0x012D, 0) + rec(0x041B, 90, 190, 10, 10) + rec(0x0000))
    return struct.pack("<HHHIHIH", 1, 9, 0x0300, (18 + len(body)) // 2, 1, 7, 0) + body


def picture_kind(data):
    for magic, kind in ((b"\x89PNG", "png"), (b"\xff\xd8", "jpeg"), (b"GIF8", "gif")):
        if data.startswith(magic):
            return kind
    return "other"


class Import(unittest.TestCase):
    def setUp(self):
        self.tmp = tempfile.TemporaryDirectory()
        self.dir = self.tmp.name

    def tearDown(self):
        self.tmp.cleanup()

    def imported(self, source):
        """Imports, checks the printed counts' shape, extracts; (stdout, body, objects, head, dir)."""
        out = os.path.join(self.dir, os.path.basename(source) + ".mssx")
        r = cli("import", source, "-o", out)
        self.assertEqual(r.returncode, 0, r.stderr)
        head, body, objects = parse_message(out)
        extracted = os.path.join(self.dir, os.path.basename(source) + ".out")
        r2 = cli("extract", out, extracted)
        self.assertEqual(r2.returncode, 0, r2.stderr)
        with open(os.path.join(extracted, "body.html"), encoding="utf-8") as f:
            shown = f.read()
        # Every picture of the body is a file that exists.
        for src in re.findall(r'<img[^>]*?\ssrc="([^"]+)"', shown, re.I):
            if not re.match(r"(?i)https?:|data:", src):
                self.assertTrue(os.path.isfile(src), f"{source}: <img src={src}> has no file")
        return r.stdout, body, objects, head, out

    def test_every_document_mail_and_outlook_file(self):
        files = sorted(glob.glob(os.path.join(DATA, "docs", "*")) +
                       glob.glob(os.path.join(DATA, "eml", "*.eml")) +
                       glob.glob(os.path.join(DATA, "msg", "*.msg")))
        self.assertEqual(len(files), len(EXPECTED), "a data file without expectations")
        for source in files:
            key = os.path.relpath(source, DATA)
            words, pictures, attachments = EXPECTED[key]
            with self.subTest(key):
                stdout, body, objects, head, out = self.imported(source)
                self.assertIn(f"pictures: {pictures}\n", stdout)
                self.assertIn(f"attachments: {attachments}\n", stdout)
                for w in words:
                    self.assertIn(w, body)
                self.assertNotIn("\ufffd", body)
                self.assertNotIn("cid:", body.lower())
                self.assertEqual(len(objects), pictures + attachments)
                info = json.loads(cli("info", "--json", out).stdout)
                self.assertEqual(len(info["objects"]), pictures + attachments)
                self.assertEqual(len(info["attachments"]), attachments)
                for name, data in objects:
                    self.assertTrue(data, f"{key}: {name} is empty")

    def test_legacy_charsets_bogus_encodings_and_pictures_of_old_mail_programs(self):
        mail = email.message.EmailMessage(policy=email.policy.SMTP)
        mail["Subject"] = "Новости"
        mail["From"] = "news@example.com"
        mail.set_content("Привет, мир! Цена 10 €", charset="utf-8")
        html = ('<html><body><p>Привет, мир! Цена 10 евро</p>'
                '<img src="cid:pic1@example"><img src="cid:pic2@example"></body></html>')
        mail.add_alternative(html.encode("windows-1251"), maintype="text", subtype="html",
                             cte="8bit", params={"charset": "windows-1251"})
        mail.get_payload()[1].add_related(bmp(12, 9), "image", "bmp", cid="<pic1@example>",
                                          filename="old.bmp")
        mail.get_payload()[1].add_related(png(5, 4), "image", "png", cid="<pic2@example>")
        inner = email.message.EmailMessage()
        inner["Subject"] = "forwarded"
        inner.set_content("inner text")
        mail.add_attachment(inner)
        mail.add_attachment(b"no name here", maintype="application", subtype="octet-stream")
        raw = mail.as_bytes()
        # The transfer-encoding names real mail programs got wrong.
        raw = raw.replace(b"Content-Transfer-Encoding: 8bit", b"Content-Transfer-Encoding: 8bits")
        self.assertIn(b"8bits", raw)
        path = os.path.join(self.dir, "cyrillic.eml")
        with open(path, "wb") as f:
            f.write(raw)
        stdout, body, objects, head, _ = self.imported(path)
        self.assertIn("pictures: 2\n", stdout)
        self.assertIn("attachments: 2\n", stdout)
        self.assertIn("Привет, мир! Цена 10 евро", body)
        self.assertIn("<title>Новости</title>", body)
        names = {os.path.basename(n.replace("\\", "/")): d for n, d in objects}
        self.assertIn("old.png", names)  # the BMP became a PNG
        self.assertEqual(names["old.png"][:8], b"\x89PNG\r\n\x1a\n")
        self.assertTrue(any(n.endswith(".eml") for n in names), names.keys())
        self.assertTrue(any(n.startswith("part") for n in names), names.keys())

    def test_rtf_in_code_page_932_and_accents(self):
        # Japanese in the document's code page, accents and the euro sign as Unicode escapes.
        rtf = (b"{\\rtf1\\ansi\\ansicpg932\\deff0{\\fonttbl{\\f0\\fnil\\fcharset128 MS Mincho;}}"
               b"\\f0 \\'82\\'b1\\'82\\'f1\\'82\\'c9\\'82\\'bf\\'82\\'cd \\par "
               b"Caf\\u233? cr\\u232?me 10 \\u8364?\\par}")
        path = os.path.join(self.dir, "japanese.rtf")
        with open(path, "wb") as f:
            f.write(rtf)
        _, body, _, _, _ = self.imported(path)
        text = " ".join(body.split())
        self.assertIn("こんにちは", text)
        self.assertIn("Café crème 10 €", text)
        self.assertNotIn("\ufffd", body)

    def test_metafile_of_a_document_becomes_a_picture_mail_programs_show(self):
        rtf = (b"{\\rtf1\\ansi Before the picture\\par {\\pict\\wmetafile8\\picw2000\\pich1000"
               b"\\picwgoal2000\\pichgoal1000 " + wmf().hex().encode() + b"}\\par After\\par}")
        path = os.path.join(self.dir, "clipart.rtf")
        with open(path, "wb") as f:
            f.write(rtf)
        stdout, body, objects, _, _ = self.imported(path)
        self.assertIn("pictures: 1\n", stdout)
        self.assertIn("Before the picture", body)
        self.assertIn(picture_kind(objects[0][1]), ("png", "gif", "jpeg"))

    def test_bad_input_gives_one_line_and_status_1(self):
        broken = os.path.join(self.dir, "broken.docx")
        with open(broken, "wb") as f:
            f.write(b"PK\x03\x04 not a zip")
        unknown = os.path.join(self.dir, "picture.psd")
        with open(unknown, "wb") as f:
            f.write(b"8BPS")
        for source, says in ((broken, "could not convert"), (unknown, "unknown file type"),
                             (os.path.join(self.dir, "gone.eml"), "cannot read")):
            with self.subTest(os.path.basename(source)):
                out = os.path.join(self.dir, "out.mssx")
                r = cli("import", source, "-o", out)
                self.assertEqual(r.returncode, 1)
                errors = [l for l in r.stderr.splitlines() if not l.startswith("converting:")]
                self.assertEqual(len(errors), 1, r.stderr)
                self.assertIn(says, errors[0])
                self.assertFalse(os.path.exists(out))


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "-v"])
