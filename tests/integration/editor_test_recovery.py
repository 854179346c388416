#!/usr/bin/env python3
"""Nothing lost on a crash or a logout: the real editor writes its recovery copy, is killed or
ended by a signal, and the next start brings the message back."""
import os
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from editorrun import Editor, Home, Xvfb, message_body, wait_for  # noqa: E402

EDITOR, CLI, SOURCE = sys.argv[1], sys.argv[2], sys.argv[3]
TYPED = "Typed before the crash"


class Recovery(unittest.TestCase):
    def setUp(self):
        self.tmp = tempfile.TemporaryDirectory(prefix="quillora-recovery-")
        self.editors = []

    def tearDown(self):
        for e in self.editors:
            e.stop()
        self.tmp.cleanup()

    def start(self, home, *args, **kw):
        e = Editor(EDITOR, home, args, **kw)
        self.editors.append(e)
        return e

    def copy_holding(self, home, text, exclude=()):
        for c in home.recovery_copies():
            if c not in exclude and text in message_body(c):
                return c
        return None

    @unittest.skipUnless(shutil.which("xdotool") and shutil.which("Xvfb"), "needs Xvfb, xdotool")
    def test_typed_text_survives_a_kill_and_a_clean_close_leaves_no_copy(self):
        home = Home(self.tmp.name, auto_save_seconds=1)
        x = Xvfb()
        self.addCleanup(x.close)
        first = self.start(home, display=x.display)
        window = x.xdotool("search", "--sync", "--onlyvisible", "--name", "^Quillora - ")
        # Typed into the visual page as a user would; the first keys may reach the page
        # before it has its document, so type again until the copy shows the text.
        copy = None
        for _ in range(6):
            x.xdotool("windowfocus", "--sync", window)
            x.xdotool("mousemove", "--window", window, "500", "450", "click", "1")
            x.xdotool("type", "--delay", "30", TYPED)
            try:
                copy = wait_for("a recovery copy with the typed text",
                                lambda: self.copy_holding(home, TYPED), 8, first.proc)
                break
            except AssertionError:
                continue
        self.assertIsNotNone(copy, "no recovery copy ever held the typed text")
        first.signal(signal.SIGKILL)
        first.wait(10)

        second = self.start(home, display=x.display,
                            answers="id_Recupero=cmdRipristina,id_cmdSalvaMess=cmdNo")
        wait_for("the recovery question", second.questions, 90, second.proc)
        self.assertIn("question id_Recupero", second.questions()[0])
        self.assertTrue(second.questions()[0].endswith(": 100"), second.questions())
        # Restored into the page: the new editor's own copy holds the text, the old one goes.
        wait_for("the restored message in the new editor's copy",
                 lambda: not os.path.exists(copy) and self.copy_holding(home, TYPED, [copy]),
                 60, second.proc)
        restored = self.copy_holding(home, TYPED)
        self.assertEqual(home.recovery_description(restored)["Title"], "[NuovoFile.mssx]")

        # A clean close: the save question answered No, and no copy is left.
        window = x.xdotool("search", "--sync", "--onlyvisible", "--name", "^Quillora - ")
        x.xdotool("windowfocus", "--sync", window)
        x.xdotool("key", "ctrl+q")
        self.assertEqual(second.wait(30), 0, second.stderr())
        self.assertTrue(any("id_cmdSalvaMess" in q for q in second.questions()),
                        second.questions())
        self.assertEqual(home.recovery_copies(), [])

    def test_sigterm_keeps_the_changes_without_a_question_and_the_next_start_restores_them(self):
        home = Home(self.tmp.name, auto_save_seconds=1)
        message = os.path.join(self.tmp.name, "news", "offer.mssx")
        os.makedirs(os.path.dirname(message))
        subprocess.run([CLI, "pack", os.path.join(SOURCE, "tests/data/html/colorlib-16/index.html"),
                        "-o", message, "--subject", "Spring offer"], check=True,
                       capture_output=True)
        # No scripted answers: a question on this path would wait for ever.
        first = self.start(home, message)
        # Opening it points its pictures at the restored copies, which marks it changed.
        wait_for("the changed message's first copy", home.recovery_copies, 90, first.proc)
        first.signal(signal.SIGTERM)
        started = time.monotonic()
        code = first.wait(10)
        self.assertIsNotNone(code, "the editor did not end within 10 s of SIGTERM")
        self.assertLess(time.monotonic() - started, 10)
        self.assertEqual(code, 0)
        log = home.log()
        self.assertIn("-- Chiusura su segnale --", log)
        after_signal = log.split("-- Chiusura su segnale --", 1)[1]
        self.assertIn("-- Recupero -- /", after_signal, "no copy written on SIGTERM")
        self.assertIn("Fine applicazione", after_signal)
        copies = home.recovery_copies()
        self.assertEqual(len(copies), 1)
        self.assertEqual(home.recovery_description(copies[0])["Path"], message)
        self.assertIn("work-1.jpg", message_body(copies[0]))

        second = self.start(home, answers="id_Recupero=cmdRipristina")
        wait_for("the recovery question", second.questions, 90, second.proc)
        self.assertTrue(second.questions()[0].endswith(": 100"), second.questions())
        # Restored with its own file: the new editor's copy names it, the old copy is gone.
        wait_for("the restored message's copy",
                 lambda: [c for c in home.recovery_copies() if c != copies[0]]
                 and not os.path.exists(copies[0]), 60, second.proc)
        (restored,) = home.recovery_copies()
        self.assertEqual(home.recovery_description(restored),
                         {"Path": message, "Title": "[offer.mssx]"})
        second.signal(signal.SIGTERM)
        self.assertEqual(second.wait(20), 0)

    def test_a_signal_while_the_window_loads_ends_the_editor_once_it_is_built(self):
        # The window lets the event loop run while its first page begins to load: a logout that
        # comes then waits for the window instead of closing half of it.
        for attempt in range(3):
            home = Home(os.path.join(self.tmp.name, f"start-{attempt}"))
            editor = self.start(home)
            deadline = time.monotonic() + 60
            while "### NuovoMessaggio ###" not in home.log():
                self.assertIsNone(editor.proc.poll(), editor.stderr())
                self.assertLess(time.monotonic(), deadline, "the window never began to load")
                time.sleep(0.001)
            editor.signal(signal.SIGTERM)
            self.assertEqual(editor.wait(20), 0, editor.stderr())
            log = home.log()
            self.assertIn("-- Chiusura su segnale --", log)
            self.assertIn("Fine applicazione", log.split("-- Chiusura su segnale --", 1)[1])
            self.assertEqual(home.recovery_copies(), [])

    def test_a_message_open_in_one_editor_is_brought_forward_by_another(self):
        home = Home(self.tmp.name, auto_save_seconds=1)
        message = os.path.join(self.tmp.name, "offer.mssx")
        subprocess.run([CLI, "pack", os.path.join(SOURCE, "tests/data/html/colorlib-16/index.html"),
                        "-o", message], check=True, capture_output=True)
        first = self.start(home, message)
        wait_for("the first editor to hold the message", home.recovery_copies, 90, first.proc)
        # The same file under another spelling of its path.
        second = self.start(home, os.path.join(self.tmp.name, ".", "offer.mssx"))
        self.assertEqual(second.wait(20), 0, second.stderr())
        self.assertIn("already open", second.proc.stdout.read().decode())
        wait_for("the first editor to come forward",
                 lambda: "-- Command -- Forward: " in home.log(), 20, first.proc)
        self.assertIsNone(first.proc.poll())
        first.signal(signal.SIGTERM)
        self.assertEqual(first.wait(20), 0)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
