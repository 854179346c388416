#!/usr/bin/env python3
"""The installation as a desktop sees it: the files in their places, a menu entry that
desktop-file-validate accepts, and a message file that xdg-mime knows as the editor's own."""
import os
import shutil
import subprocess
import sys
import tempfile
import unittest

EDITOR, CLI, SOURCE, BUILD = sys.argv[1], sys.argv[2], sys.argv[3], sys.argv[4]
MIME = "application/x-quillora-message"
ICON_SIZES = [16, 22, 24, 32, 48, 64, 128, 256]


class Install(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.tmp = tempfile.TemporaryDirectory(prefix="quillora-install-")
        cls.prefix = os.path.join(cls.tmp.name, "prefix")
        r = subprocess.run(["cmake", "--install", BUILD, "--prefix", cls.prefix],
                           capture_output=True, text=True)
        if r.returncode != 0:
            raise AssertionError(f"cmake --install failed: {r.stdout}{r.stderr}")
        cls.share = os.path.join(cls.prefix, "share")
        cls.message = os.path.join(cls.tmp.name, "offer.mssx")
        subprocess.run([CLI, "pack", os.path.join(SOURCE, "tests/data/html/colorlib-16/index.html"),
                        "-o", cls.message, "--subject", "Spring offer"], check=True,
                       capture_output=True)

    @classmethod
    def tearDownClass(cls):
        cls.tmp.cleanup()

    def desktop_env(self):
        # A plain desktop session that knows only the system's data and this installation.
        env = {k: v for k, v in os.environ.items()
               if not k.startswith(("XDG_", "KDE_", "GNOME_", "DESKTOP_SESSION"))}
        env.update(XDG_DATA_HOME=self.share, XDG_DATA_DIRS=f"{self.share}:/usr/share",
                   XDG_CONFIG_HOME=os.path.join(self.tmp.name, "config"))
        return env

    def test_the_listed_files_are_installed(self):
        expected = ["bin/quillora", "bin/quillora-cli", "share/quillora/LANG_Quillora.lng",
                    "share/quillora/Links.dll", "share/applications/quillora.desktop",
                    "share/mime/packages/quillora.xml",
                    "share/icons/hicolor/scalable/apps/quillora.svg"]
        expected += [f"share/icons/hicolor/{s}x{s}/apps/quillora.png" for s in ICON_SIZES]
        for rel in expected:
            self.assertTrue(os.path.isfile(os.path.join(self.prefix, rel)), rel)
        for rel in ("bin/quillora", "bin/quillora-cli"):
            self.assertTrue(os.access(os.path.join(self.prefix, rel), os.X_OK), rel)
        # Each icon really is a picture of its size.
        for s in ICON_SIZES:
            with open(os.path.join(self.prefix, f"share/icons/hicolor/{s}x{s}/apps/quillora.png"),
                      "rb") as f:
                head = f.read(24)
            self.assertEqual(head[:8], b"\x89PNG\r\n\x1a\n")
            self.assertEqual((int.from_bytes(head[16:20], "big"), int.from_bytes(head[20:24], "big")),
                             (s, s))

    def test_the_installed_cli_reads_a_message(self):
        r = subprocess.run([os.path.join(self.prefix, "bin", "quillora-cli"), "info", "--json",
                            self.message], capture_output=True, text=True)
        self.assertEqual(r.returncode, 0, r.stderr)
        self.assertIn("Spring offer", r.stdout)

    @unittest.skipUnless(shutil.which("desktop-file-validate"), "needs desktop-file-utils")
    def test_the_menu_entry_is_valid(self):
        entry = os.path.join(self.share, "applications", "quillora.desktop")
        r = subprocess.run(["desktop-file-validate", entry], capture_output=True, text=True)
        self.assertEqual(r.returncode, 0, r.stdout + r.stderr)
        self.assertEqual(r.stdout.strip(), "", r.stdout)  # not even a hint
        with open(entry, encoding="utf-8") as f:
            text = f.read()
        self.assertIn(f"MimeType={MIME};", text)
        self.assertIn("Exec=quillora %f", text)

    @unittest.skipUnless(shutil.which("xdg-mime"), "needs xdg-utils")
    def test_a_saved_message_is_the_editors_own_type_by_name_and_by_content(self):
        env = self.desktop_env()
        renamed = os.path.join(self.tmp.name, "offer-without-extension")
        shutil.copyfile(self.message, renamed)
        for path in (self.message, renamed):
            r = subprocess.run(["xdg-mime", "query", "filetype", path], env=env,
                               capture_output=True, text=True)
            self.assertEqual(r.stdout.strip(), MIME, f"{path}: {r.stdout}{r.stderr}")
        # An old-style name, and a file that only looks like one by its name.
        old = os.path.join(self.tmp.name, "old.mss")
        shutil.copyfile(self.message, old)
        r = subprocess.run(["xdg-mime", "query", "filetype", old], env=env, capture_output=True,
                           text=True)
        self.assertEqual(r.stdout.strip(), MIME)
        # A double click opens it with the editor.
        r = subprocess.run(["xdg-mime", "query", "default", MIME], env=env, capture_output=True,
                           text=True)
        self.assertEqual(r.stdout.strip(), "quillora.desktop", r.stderr)

    @unittest.skipUnless(shutil.which("xdg-mime"), "needs xdg-utils")
    def test_other_utf16_text_is_not_taken_for_a_message(self):
        other = os.path.join(self.tmp.name, "notes-without-extension")
        with open(other, "wb") as f:
            f.write(b"\xff\xfe" + "[<INI-NOTE>]hello\r\n".encode("utf-16-le"))
        r = subprocess.run(["xdg-mime", "query", "filetype", other], env=self.desktop_env(),
                           capture_output=True, text=True)
        self.assertNotEqual(r.stdout.strip(), MIME)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
