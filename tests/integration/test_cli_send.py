#!/usr/bin/env python3
"""quillora-cli send against a real SMTP server (aiosmtpd under /usr/bin/python3, on a free
port of 127.0.0.1, started and stopped here): plain and STARTTLS sends arrive and parse with
Python's email module with no defects and their inline images; a refused certificate can be
trusted once; a wrong password and a closed port give their own messages."""
import email
import email.policy
import os
import re
import socket
import subprocess
import sys
import tempfile
import unittest

CLI = sys.argv[1]
SOURCE = sys.argv[2]
SERVER = os.path.join(SOURCE, "tests", "integration", "smtp_server.py")
NEWSLETTER = os.path.join(SOURCE, "tests", "data", "html", "colorlib-16", "index.html")


class Server:
    def __init__(self, out, *options):
        self.out = out
        self.process = subprocess.Popen(
            ["/usr/bin/python3", SERVER, out, "--user", "anna@example.com",
             "--password", "s3cret", *options],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        line = self.process.stdout.readline().split()
        assert line and line[0] == "READY", "the SMTP server did not start"
        self.port = int(line[1])

    def stop(self):
        self.process.stdin.close()
        self.process.wait(timeout=20)
        self.process.stdout.close()

    def received(self, n=1):
        path = os.path.join(self.out, "%d.eml" % n)
        if not os.path.exists(path):
            return None
        with open(path, "rb") as f:
            return email.message_from_bytes(f.read(), policy=email.policy.default)


class Send(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.tmp = tempfile.TemporaryDirectory()
        d = cls.tmp.name
        cls.cert, cls.key = os.path.join(d, "cert.pem"), os.path.join(d, "key.pem")
        subprocess.run(["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes",
                        "-keyout", cls.key, "-out", cls.cert, "-days", "2",
                        "-subj", "/CN=127.0.0.1", "-addext", "subjectAltName=IP:127.0.0.1"],
                       check=True, capture_output=True)
        cls.env = dict(os.environ, XDG_DATA_HOME=os.path.join(d, "data"))
        cls.message = os.path.join(d, "news.mssx")
        cls.cli("pack", NEWSLETTER, "-o", cls.message, "--subject", "Spring offer", check=True)

    @classmethod
    def tearDownClass(cls):
        cls.tmp.cleanup()

    @classmethod
    def cli(cls, *args, env=None, input=None, check=False):
        r = subprocess.run([CLI, *args], capture_output=True, text=True, input=input,
                           env=env or cls.env, timeout=120)
        if check:
            assert r.returncode == 0, r.stderr
        return r

    def setUp(self):
        self.out = tempfile.TemporaryDirectory()
        self.server = None

    def tearDown(self):
        if self.server:
            self.server.stop()
        self.out.cleanup()

    def account(self, port, auth, security):
        r = self.cli("accounts", "add", "--name", "Anna Rossi", "--address", "anna@example.com",
                     "--server", "127.0.0.1", "--port", str(port), "--auth", auth,
                     "--security", security, check=True)
        return re.search(r"\d+", r.stdout).group(0)

    def send(self, account, *extra, password="s3cret", input=None):
        env = dict(self.env)
        if password is not None:
            env["QUILLORA_SMTP_PASSWORD"] = password
        return self.cli("send", self.message, "--account", account, "--to", "me@example.org",
                        "--timeout", "10", *extra, env=env, input=input)

    def assert_whole(self, msg):
        self.assertIsNotNone(msg, "nothing arrived")
        self.assertEqual(msg["Subject"], "Spring offer")
        self.assertEqual(msg["To"], "me@example.org")
        self.assertNotIn("X-MimeOLE", msg)
        html, images = None, {}
        for part in msg.walk():
            self.assertEqual(part.defects, [], part.get_content_type())
            if part.get_content_type() == "text/html":
                html = part.get_content()
            elif part.get_content_maintype() == "image":
                images[part["Content-ID"].strip("<>")] = part.get_payload(decode=True)
        self.assertIsNotNone(html)
        self.assertEqual(set(re.findall(r'cid:([^"\')\s>]+)', html)), set(images))
        self.assertEqual(len(images), 7)
        self.assertTrue(all(images.values()))

    def test_starttls_with_a_certificate_trusted_once(self):
        self.server = Server(self.out.name, "--tls", self.cert, self.key, "--starttls")
        account = self.account(self.server.port, "plain", "starttls")
        r = self.send(account)
        self.assertEqual(r.returncode, 1)
        self.assertIn("certificate failed verification", r.stderr)
        fingerprint = re.search(r"--trust-certificate ([0-9a-f]{64})", r.stderr).group(1)
        self.assertIsNone(self.server.received())
        r = self.send(account, "--trust-certificate", fingerprint)
        self.assertEqual(r.returncode, 0, r.stderr)
        self.assertRegex(r.stdout, r"^The test message was sent\. The server answered: 250 ")
        self.assert_whole(self.server.received())

    def test_plain_with_the_password_on_standard_input(self):
        self.server = Server(self.out.name)
        account = self.account(self.server.port, "login", "none")
        r = self.send(account, password=None, input="s3cret\n")
        self.assertEqual(r.returncode, 0, r.stderr)
        self.assert_whole(self.server.received())

    def test_wrong_password_and_closed_port(self):
        self.server = Server(self.out.name)
        account = self.account(self.server.port, "login", "none")
        r = self.send(account, password="guess")
        self.assertEqual(r.returncode, 1)
        self.assertIn("The server refused the login", r.stderr)
        self.assertIsNone(self.server.received())

        with socket.socket() as s:
            s.bind(("127.0.0.1", 0))
            closed = s.getsockname()[1]
        account = self.account(closed, "none", "none")
        r = self.send(account)
        self.assertEqual(r.returncode, 1)
        self.assertIn("The server 127.0.0.1 cannot be reached on port %d" % closed, r.stderr)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
