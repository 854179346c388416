#!/usr/bin/env python3
"""quillora-cli slice, checked by an independent reader: pictures written here with zlib and
struct, the message read back with the round-trip test's reader, the slices' PNG headers
parsed with struct."""
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


def cli(*args):
    return subprocess.run([CLI, *args], capture_output=True, text=True)


def write_png(path, width, height):
    """An 8-bit RGB PNG whose rows all differ."""
    def chunk(kind, data):
        return (struct.pack(">I", len(data)) + kind + data
                + struct.pack(">I", zlib.crc32(kind + data) & 0xFFFFFFFF))
    raw = bytearray()
    for y in range(height):
        raw.append(0)
        for x in range(width):
            raw += bytes(((x * 255) // max(1, width - 1), (y * 7) & 255, (x * y) & 255))
    with open(path, "wb") as f:
        f.write(b"\x89PNG\r\n\x1a\n"
                + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0))
                + chunk(b"IDAT", zlib.compress(bytes(raw)))
                + chunk(b"IEND", b""))


def png_size(data):
    assert data[:8] == b"\x89PNG\r\n\x1a\n", "not a PNG"
    assert data[12:16] == b"IHDR"
    return struct.unpack(">II", data[16:24])


class Slice(unittest.TestCase):
    def setUp(self):
        self.tmp = tempfile.TemporaryDirectory()
        self.dir = self.tmp.name

    def tearDown(self):
        self.tmp.cleanup()

    def slice(self, width, height, *options):
        picture = os.path.join(self.dir, "tall.png")
        write_png(picture, width, height)
        out = os.path.join(self.dir, "out.mssx")
        r = cli("slice", picture, "-o", out, *options)
        self.assertEqual(r.returncode, 0, r.stderr)
        return r, parse_message(out)

    def test_message_holds_one_image_per_slice(self):
        cases = [
            # source, options, scaled size, rows of each slice (0: the empty last pass)
            ((600, 250), [], (600, 250), [100, 100, 50]),
            ((300, 100), [], (600, 200), [100, 100, 0]),
            ((600, 400), ["--height", "150"], (600, 400), [100, 100, 100]),
            ((800, 300), ["--width", "400"], (400, 150), [100, 50]),
        ]
        for source, options, scaled, rows in cases:
            with self.subTest(source=source, options=options):
                r, (head, body, objects) = self.slice(*source, *options, "--subject", "Tall")
                self.assertEqual(r.stdout, f"slices: {len(rows)}\nscaled: {scaled[0]} x {scaled[1]}\n")
                self.assertIn("[<INI-SUBJ>]Tall[<END-SUBJ>]", head)
                images = re.findall(r"<img src='([^']*)'", body)
                self.assertEqual(len(images), len(rows))
                self.assertEqual([os.path.basename(i) for i in images],
                                 [f"imgCrop{n}.png" for n in range(1, len(rows) + 1)])
                self.assertEqual(len(objects), len(rows))
                for (stored, data), want in zip(objects, rows):
                    if want == 0:
                        self.assertEqual(data, b"", stored)
                    else:
                        self.assertEqual(png_size(data), (scaled[0], want), stored)
                # The slices were made in a temporary folder that is gone again.
                self.assertFalse(os.path.exists(os.path.dirname(images[0])))
                self.assertIn(f"widht='{scaled[0]}px'", body)

    def test_progress_on_stderr(self):
        r, _ = self.slice(600, 1000)
        self.assertIn("slicing: 11/11", r.stderr)

    def test_values_below_the_minimums_are_raised(self):
        r, (_, body, objects) = self.slice(800, 300, "--width", "300", "--height", "40")
        self.assertIn("raised to the minimum of 400", r.stderr)
        self.assertIn("raised to the minimum of 100", r.stderr)
        self.assertEqual(r.stdout, "slices: 2\nscaled: 400 x 150\n")

    def test_exit_codes_and_one_clear_line(self):
        picture = os.path.join(self.dir, "p.png")
        write_png(picture, 20, 20)
        bmp = os.path.join(self.dir, "p.bmp")
        with open(bmp, "wb") as f:
            f.write(b"BM")
        broken = os.path.join(self.dir, "broken.png")
        with open(broken, "wb") as f:
            f.write(b"\x89PNG\r\n\x1a\n")
        out = os.path.join(self.dir, "o.mssx")
        cases = [
            (["slice", picture], 2, "-o OUT is missing"),
            (["slice", "-o", out], 2, "IMAGE is missing"),
            (["slice", picture, "-o", out, "--width", "wide"], 2, '"wide"'),
            (["slice", picture, "-o", out, "--height", ""], 2, "the height must be a number"),
            (["slice", os.path.join(self.dir, "none.png"), "-o", out], 1, "does not exist"),
            (["slice", bmp, "-o", out], 1, "is not a PNG, GIF or JPEG picture"),
            (["slice", broken, "-o", out], 1, "broken.png"),
        ]
        for args, code, text in cases:
            with self.subTest(args=args):
                r = cli(*args)
                self.assertEqual(r.returncode, code, r.stderr)
                self.assertIn(text, r.stderr)
                self.assertEqual(r.stderr.count("quillora-cli:"), 1, r.stderr)
                self.assertFalse(os.path.exists(out))

    def test_help_names_every_option(self):
        r = cli("slice", "--help")
        self.assertEqual(r.returncode, 0)
        self.assertTrue(r.stdout.startswith("usage: quillora-cli slice IMAGE -o OUT"))
        for option in ["-o, --output", "--width", "--height", "--subject", "IMAGE"]:
            self.assertIn(option, r.stdout)
        self.assertIn("slice IMAGE", cli("--help").stdout)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "-v"])
