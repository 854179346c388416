#!/usr/bin/env python3
"""The test data carries its provenance: every file under tests/data is listed in MANIFEST.tsv
with the size and SHA-256 of the original, and every repository it was taken from has its licence text in LICENSES.txt."""
import hashlib
import os
import sys
import unittest

SOURCE = sys.argv[2]
DATA = os.path.join(SOURCE, "tests", "data")
OWN_FILES = {"MANIFEST.tsv", "LICENSES.txt", "README.md"}


def manifest():
    with open(os.path.join(DATA, "MANIFEST.tsv"), encoding="utf-8") as f:
        header, *rows = [line.rstrip("\n").split("\t") for line in f if line.strip()]
    return [dict(zip(header, row)) for row in rows]


class Manifest(unittest.TestCase):
    def test_every_file_is_listed_and_unmodified(self):
        rows = manifest()
        listed = {row["file"] for row in rows}
        on_disk = set()
        for folder, _, files in os.walk(DATA):
            for name in files:
                rel = os.path.relpath(os.path.join(folder, name), DATA).replace(os.sep, "/")
                if rel not in OWN_FILES:
                    on_disk.add(rel)
        self.assertEqual(on_disk - listed, set(), "files without provenance")
        self.assertEqual(listed - on_disk, set(), "listed files that are missing")
        for row in rows:
            with open(os.path.join(DATA, row["file"]), "rb") as f:
                raw = f.read()
            self.assertEqual(len(raw), int(row["bytes"]), row["file"])
            self.assertEqual(hashlib.sha256(raw).hexdigest(), row["sha256"], row["file"])

    def test_every_source_repository_has_its_licence_text(self):
        with open(os.path.join(DATA, "LICENSES.txt"), encoding="utf-8") as f:
            headings = {line.split("  --  ")[0] for line in f if "  --  " in line}
        repositories = {row["repository"] for row in manifest()}
        self.assertEqual(repositories - headings, set(), "repositories without a licence text")

if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0]])
