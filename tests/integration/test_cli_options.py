#!/usr/bin/env python3
"""quillora-cli's command line: every command's --help, refusal of unknown options and of a
wrong number of arguments (exit 2, one line on stderr), and real pack/info/accounts runs with
the options in any order and values that start with "-"."""
import json
import os
import re
import subprocess
import sys
import tempfile
import unittest

CLI = os.path.abspath(sys.argv[1])
SOURCE = os.path.abspath(sys.argv[2])
DATA = os.path.join(SOURCE, "tests", "data")
PAGE = os.path.join(DATA, "html", "colorlib-legacy-12", "index.html")
ATTACH_A = os.path.join(DATA, "docs", "simplepng.rtf")
ATTACH_B = os.path.join(DATA, "docs", "two_images.doc")


class CliCase(unittest.TestCase):
    """Every run gets its own shared data folder, so the accounts commands never touch $HOME."""

    def setUp(self):
        self._tmp = tempfile.TemporaryDirectory()
        self.tmp = self._tmp.name
        self.data_home = os.path.join(self.tmp, "xdg")
        os.mkdir(self.data_home)

    def tearDown(self):
        self._tmp.cleanup()

    def cli(self, *args):
        env = dict(os.environ, XDG_DATA_HOME=self.data_home)
        return subprocess.run([CLI, *args], capture_output=True, text=True, env=env)

    def ok(self, *args):
        r = self.cli(*args)
        self.assertEqual(r.returncode, 0, f"quillora-cli {' '.join(args)}: {r.stderr}")
        return r


class Help(CliCase):
    def test_each_command_explains_its_options(self):
        cases = [
            (["--help"], "COMMAND", ["info", "extract", "pack", "accounts", "--help"]),
            (["-h"], "COMMAND", ["info", "extract", "pack", "accounts"]),
            (["help"], "COMMAND", ["info", "extract", "pack", "accounts"]),
            (["info", "--help"], "info", ["--json", "FILE"]),
            (["extract", "--help"], "extract", ["FILE", "DIR"]),
            (["pack", "--help"], "pack",
             ["-o, --output", "--subject", "--priority", "--attach", "HTML"]),
            (["pack", PAGE, "-h"], "pack", ["--output"]),
            (["help", "pack"], "pack", ["--output", "--attach"]),
            (["accounts", "--help"], "accounts", ["list", "add", "remove"]),
            (["accounts", "list", "--help"], "accounts list", []),
            (["accounts", "add", "--help"], "accounts add",
             ["--name", "--address", "--server", "--port", "--auth", "--security", "--inactive"]),
            (["accounts", "remove", "--help"], "accounts remove", ["ID"]),
            (["help", "accounts", "add"], "accounts add", ["--name", "--address"]),
        ]
        for args, command, mentions in cases:
            with self.subTest(args=args):
                r = self.ok(*args)
                self.assertEqual(r.stderr, "")
                first_line = r.stdout.splitlines()[0]
                self.assertRegex(first_line, rf"^usage: quillora-cli {re.escape(command)}( |$)")
                for word in mentions:
                    self.assertIn(word, r.stdout)

    def test_help_of_accounts_commands_leaves_the_data_folder_alone(self):
        for args in (["accounts", "--help"], ["accounts", "add", "--help"],
                     ["accounts", "list", "-h"]):
            with self.subTest(args=args):
                self.ok(*args)
                self.assertEqual(os.listdir(self.data_home), [])


class WrongUsage(CliCase):
    def test_refused_with_one_line_naming_the_problem(self):
        out = "OUT.mssx"  # relative to the temporary folder the runs happen in
        cases = [
            # Unknown options, before and after the positional arguments.
            (["--bogus"], '"--bogus"'),
            (["info", "--bogus", "x.mssx"], '"--bogus"'),
            (["info", "x.mssx", "--verbose"], '"--verbose"'),
            (["extract", "--bogus", "x.mssx", "dir"], '"--bogus"'),
            (["pack", PAGE, "-o", out, "--colour", "red"], '"--colour"'),
            (["pack", "-z", PAGE, "-o", out], '"-z"'),
            (["accounts", "--bogus", "list"], '"--bogus"'),
            (["accounts", "list", "--all"], '"--all"'),
            (["accounts", "add", "--name", "A", "--address", "a@example.com", "--nick", "x"],
             "--nick"),
            (["accounts", "remove", "-3"], '"-3"'),
            (["info", "--json=yes", "x.mssx"], "--json"),
            # Unknown commands.
            (["frobnicate"], '"frobnicate"'),
            (["help", "frobnicate"], '"frobnicate"'),
            (["accounts", "rename"], '"rename"'),
            # Missing and extra arguments, missing option values.
            (["info"], "FILE"),
            (["info", "a.mssx", "b.mssx"], '"b.mssx"'),
            (["extract", "a.mssx"], "DIR"),
            (["extract", "a.mssx", "dir", "more"], '"more"'),
            (["pack"], "HTML"),
            (["pack", PAGE], "-o"),
            (["pack", PAGE, "-o"], "-o"),
            (["pack", PAGE, "extra.html", "-o", out], '"extra.html"'),
            (["pack", PAGE, "-o", out, "--subject"], "--subject"),
            (["accounts"], "COMMAND"),
            (["accounts", "add", "--name", "A"], "--address"),
            (["accounts", "remove"], "ID"),
            (["accounts", "remove", "1", "2"], '"2"'),
            (["accounts", "list", "extra"], '"extra"'),
            # Values the command cannot take.
            (["pack", PAGE, "-o", out, "--priority", "XX"], '"XX"'),
            (["pack", PAGE, "-o", out, "--priority", "-1"], '"-1"'),
            (["accounts", "add", "--name", "A", "--address", "a@example.com", "--port", "25x"],
             '"25x"'),
            (["accounts", "add", "--name", "A", "--address", "a@example.com", "--port", "-1"],
             '"-1"'),
            (["accounts", "add", "--name", "A", "--address", "a@example.com", "--port", "0"],
             '"0"'),
            (["accounts", "add", "--name", "A", "--address", "a@example.com", "--port", "65536"],
             '"65536"'),
            (["accounts", "remove", "abc"], '"abc"'),
        ]
        for args, named in cases:
            with self.subTest(args=args):
                r = subprocess.run([CLI, *args], capture_output=True, text=True, cwd=self.tmp,
                                   env=dict(os.environ, XDG_DATA_HOME=self.data_home))
                self.assertEqual(r.returncode, 2, r.stderr)
                self.assertEqual(r.stdout, "")
                lines = r.stderr.strip().splitlines()
                self.assertEqual(len(lines), 1, r.stderr)
                self.assertIn(named, lines[0])
                # Refused before doing anything: no message file, no data folder.
                self.assertEqual(sorted(os.listdir(self.tmp)), ["xdg"])
                self.assertEqual(os.listdir(self.data_home), [])

    def test_no_command_shows_the_commands_on_stderr(self):
        r = self.cli()
        self.assertEqual(r.returncode, 2)
        self.assertEqual(r.stdout, "")
        self.assertIn("no command given", r.stderr)
        self.assertIn("accounts remove ID", r.stderr)


class BadInput(CliCase):
    def test_exit_1_for_what_the_arguments_name(self):
        missing = os.path.join(self.tmp, "missing")
        out = os.path.join(self.tmp, "out.mssx")
        cases = [
            (["info", missing + ".mssx"], "missing.mssx"),
            (["extract", missing + ".mssx", os.path.join(self.tmp, "dir")], "missing.mssx"),
            (["pack", missing + ".html", "-o", out], "missing.html"),
            (["pack", PAGE, "-o", out, "--attach", ATTACH_A, "--attach", missing], missing),
            # Well formed, but there is no such account.
            (["accounts", "remove", "--", "-3"], "-3"),
        ]
        for args, named in cases:
            with self.subTest(args=args):
                r = self.cli(*args)
                self.assertEqual(r.returncode, 1, r.stderr)
                self.assertIn(named, r.stderr)
                self.assertFalse(os.path.exists(out))


class OptionOrder(CliCase):
    SUBJECT = "-50% off: --spring-- sale"

    def test_pack_reads_the_same_whatever_the_order(self):
        s = self.SUBJECT
        cases = [
            ("options after the page",
             [PAGE, "-o", "{out}", "--subject", s, "--priority", "HI",
              "--attach", ATTACH_A, "--attach", ATTACH_B]),
            ("options before the page",
             ["--output", "{out}", "--subject", s, "--priority", "HI",
              "--attach", ATTACH_A, "--attach", ATTACH_B, PAGE]),
            ("page in the middle",
             ["--attach", ATTACH_A, "--subject", s, PAGE, "--priority", "HI",
              "--attach", ATTACH_B, "-o", "{out}"]),
            ("values joined to their options",
             ["--subject=" + s, "--priority=HI", "-o{out}", "--attach=" + ATTACH_A,
              "--attach=" + ATTACH_B, PAGE]),
            ("page after --",
             ["-o", "{out}", "--subject", s, "--priority", "HI",
              "--attach", ATTACH_A, "--attach", ATTACH_B, "--", PAGE]),
        ]
        written = {}
        for label, args in cases:
            with self.subTest(order=label):
                out = os.path.join(self.tmp, re.sub(r"\W", "_", label) + ".mssx")
                self.ok("pack", *[a.replace("{out}", out) for a in args])
                for info_args in (["--json", out], [out, "--json"]):
                    info = json.loads(self.ok("info", *info_args).stdout)
                    self.assertEqual(info["subject"], s)
                    self.assertEqual(info["priority"], "HI")
                    self.assertEqual(info["attachments"],
                                     [os.path.abspath(ATTACH_A), os.path.abspath(ATTACH_B)])
                with open(out, "rb") as f:
                    written[label] = f.read()
        # Same arguments in another order: the same file, byte for byte.
        self.assertEqual(len(set(written.values())), 1)

    def test_attachments_keep_the_order_given(self):
        out = os.path.join(self.tmp, "reversed.mssx")
        self.ok("pack", "--attach", ATTACH_B, PAGE, "--attach", ATTACH_A, "-o", out)
        info = json.loads(self.ok("info", out, "--json").stdout)
        self.assertEqual(info["attachments"],
                         [os.path.abspath(ATTACH_B), os.path.abspath(ATTACH_A)])
        self.assertEqual(info["priority"], "NR")
        self.assertEqual(info["subject"], "")

    def test_accounts_take_options_in_any_order(self):
        first = self.ok("accounts", "add", "--port", "2525", "--name", "-Anna Rossi",
                        "--inactive", "--address", "anna@example.com", "--server",
                        "smtp.example.com", "--security", "ssl", "--auth", "plain").stdout.strip()
        second = self.ok("accounts", "add", "--address=marco@example.com",
                         "--name=Marco").stdout.strip()
        self.assertRegex(first, r"^\d+$")
        self.assertRegex(second, r"^\d+$")
        self.assertEqual(
            self.ok("accounts", "list").stdout.splitlines(),
            [f"{first}\t-Anna Rossi <anna@example.com>\tinactive\tsmtp.example.com:2525\tplain/ssl",
             f"{second}\tMarco <marco@example.com>\tactive\t-:587\tlogin/starttls"])
        self.ok("accounts", "remove", "--", first)
        self.ok("accounts", "remove", second)
        self.assertEqual(self.ok("accounts", "list").stdout, "no accounts\n")


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "-v"])
