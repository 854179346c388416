#!/usr/bin/python3
"""A real SMTP server for the tests (aiosmtpd, Debian's python3-aiosmtpd): listens on
127.0.0.1 on a free port, prints "READY <port>" once it answers, and keeps every message it
accepts as N.eml beside N.json, a summary made with Python's email parser (policy default):
envelope, TLS and login state, defects, parts with their Content-IDs, and the cid: references
of the HTML part. Ends when its standard input closes.

  smtp_server.py OUT_DIR [--tls CERT KEY] [--starttls | --ssl] [--user U --password P]
"""
import argparse
import asyncio
import email
import email.policy
import json
import logging
import os
import re
import socket
import ssl
import sys
import warnings

from aiosmtpd.controller import Controller
from aiosmtpd.smtp import AuthResult, LoginPassword


def free_port():
    with socket.socket() as s:
        s.bind(("127.0.0.1", 0))
        return s.getsockname()[1]


def summarise(data):
    msg = email.message_from_bytes(data, policy=email.policy.default)
    parts, defects, cids = [], [], []
    for part in msg.walk():
        defects += [type(d).__name__ for d in part.defects]
        cid = part.get("Content-ID")
        parts.append({"type": part.get_content_type(),
                      "cid": cid.strip("<>") if cid else None,
                      "filename": part.get_filename(),
                      "size": len(part.get_payload(decode=True) or b"")
                      if not part.is_multipart() else 0})
        if part.get_content_type() == "text/html":
            cids += re.findall(r"""cid:([^"'\s>)]+)""", part.get_content())
    return {"subject": msg["Subject"], "to": msg["To"], "from": msg["From"],
            "defects": defects, "parts": parts, "html_cids": cids}


class Saver:
    def __init__(self, folder):
        self.folder = folder
        self.count = 0

    async def handle_DATA(self, server, session, envelope):
        self.count += 1
        base = os.path.join(self.folder, str(self.count))
        data = envelope.original_content or envelope.content
        with open(base + ".eml", "wb") as f:
            f.write(data)
        summary = summarise(data)
        summary.update({"mail_from": envelope.mail_from, "rcpt_tos": envelope.rcpt_tos,
                        # STARTTLS sets session.ssl; a TLS port shows on the transport.
                        "tls": session.ssl is not None
                        or server.transport.get_extra_info("ssl_object") is not None,
                        "login": session.authenticated})
        with open(base + ".json", "w") as f:
            json.dump(summary, f)
        return "250 2.0.0 Ok: queued as test-%d" % self.count


def main():
    # The tests allow a login without TLS on purpose: no warnings about it on every run.
    warnings.simplefilter("ignore")
    logging.getLogger("mail.log").setLevel(logging.ERROR)
    p = argparse.ArgumentParser()
    p.add_argument("out")
    p.add_argument("--tls", nargs=2, metavar=("CERT", "KEY"))
    p.add_argument("--starttls", action="store_true")
    p.add_argument("--ssl", action="store_true")
    p.add_argument("--user")
    p.add_argument("--password")
    a = p.parse_args()

    context = None
    if a.tls:
        context = ssl.create_default_context(ssl.Purpose.CLIENT_AUTH)
        context.load_cert_chain(*a.tls)
    kwargs = {}
    if a.user:
        def check(server, session, envelope, mechanism, auth_data):
            ok = (isinstance(auth_data, LoginPassword)
                  and auth_data.login.decode() == a.user
                  and auth_data.password.decode() == a.password)
            return AuthResult(success=ok, handled=False)
        kwargs.update(authenticator=check, auth_required=True, auth_require_tls=False)
    if a.starttls:
        kwargs.update(tls_context=context, require_starttls=True)
    if a.ssl:
        kwargs.update(ssl_context=context)
    port = free_port()
    controller = Controller(Saver(a.out), hostname="127.0.0.1", port=port, **kwargs)
    controller.start()
    print("READY", port, flush=True)
    sys.stdin.read()
    controller.stop()


if __name__ == "__main__":
    main()
