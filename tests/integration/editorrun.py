"""Starting the real editor for a whole-program test: a private data folder, offscreen or on an
X server of the test's own, scripted answers, and readers for what it leaves on disk."""
import glob
import os
import select
import shutil
import signal
import subprocess
import time

DATA_SUBFOLDER = os.path.join("Talvenor Data", "Corvanta 4")


def read_text(path):
    """A text file of the program: UTF-16 with a byte-order mark, or UTF-8."""
    with open(path, "rb") as f:
        raw = f.read()
    if raw[:2] in (b"\xff\xfe", b"\xfe\xff"):
        return raw.decode("utf-16")
    return raw.decode("utf-8", "replace")


def wait_for(what, predicate, timeout=60.0, process=None):
    deadline = time.monotonic() + timeout
    while time.monotonic() < deadline:
        value = predicate()
        if value:
            return value
        if process is not None and process.poll() is not None:
            raise AssertionError(f"the editor ended (code {process.returncode}) before {what}")
        time.sleep(0.2)
    raise AssertionError(f"timed out waiting for {what}")


class Home:
    """A user's folders, fresh for one test."""

    def __init__(self, root, auto_save_seconds=None):
        self.root = root
        self.data = os.path.join(root, "data", DATA_SUBFOLDER)
        os.makedirs(self.data, exist_ok=True)
        if auto_save_seconds is not None:
            with open(os.path.join(self.data, "Opzioni.dll"), "w", encoding="utf-8") as f:
                f.write(f"AutoSaveSeconds: {auto_save_seconds}\r\n")

    def env(self):
        env = {k: v for k, v in os.environ.items() if not k.startswith("QUILLORA_")}
        env.update(
            XDG_DATA_HOME=os.path.join(self.root, "data"),
            XDG_CONFIG_HOME=os.path.join(self.root, "config"),
            XDG_CACHE_HOME=os.path.join(self.root, "cache"),
            QTWEBENGINE_DISABLE_SANDBOX="1",
            QTWEBENGINE_CHROMIUM_FLAGS="--disable-gpu",
        )
        return env

    def recovery_copies(self):
        return sorted(glob.glob(os.path.join(self.data, "Recovery", "*.mssx")))

    def recovery_description(self, copy):
        fields = {}
        for line in read_text(copy[: -len(".mssx")] + ".dll").splitlines():
            key, _, value = line.partition(": ")
            fields[key] = value
        return fields

    def log(self):
        path = os.path.join(self.data, "Log_Quillora.xt2")
        return read_text(path) if os.path.exists(path) else ""


def message_body(path):
    text = read_text(path)
    return text.split("[<INI-MESS>]", 1)[1].split("[<END-MESS>]", 1)[0]


class Editor:
    def __init__(self, exe, home, args=(), answers=None, display=None):
        env = home.env()
        if display:
            env["DISPLAY"] = display
            env["QT_QPA_PLATFORM"] = "xcb"
        else:
            env["QT_QPA_PLATFORM"] = "offscreen"
        if answers is not None:
            env["QUILLORA_ANSWERS"] = answers
        self.home = home
        n = len(glob.glob(os.path.join(home.root, "editor-*.err")))
        self.err_path = os.path.join(home.root, f"editor-{n}.err")
        self._err = open(self.err_path, "wb")
        self.proc = subprocess.Popen([exe, *args], env=env, stdout=subprocess.PIPE,
                                     stderr=self._err, stdin=subprocess.DEVNULL)

    def stderr(self):
        with open(self.err_path, "rb") as f:
            return f.read().decode("utf-8", "replace")

    def questions(self):
        return [l for l in self.stderr().splitlines() if l.startswith("quillora: question ")]

    def signal(self, sig):
        self.proc.send_signal(sig)

    def wait(self, timeout):
        try:
            return self.proc.wait(timeout=timeout)
        except subprocess.TimeoutExpired:
            return None

    def stop(self):
        if self.proc.poll() is None:
            self.proc.send_signal(signal.SIGKILL)
            self.proc.wait()
        if self.proc.stdout:
            self.proc.stdout.close()
        self._err.close()


class Xvfb:
    """An X server of the test's own, on a display number it picks itself."""

    def __init__(self):
        if not shutil.which("Xvfb"):
            raise RuntimeError("Xvfb is not installed")
        r, w = os.pipe()
        self.proc = subprocess.Popen(
            ["Xvfb", "-displayfd", str(w), "-screen", "0", "1280x900x24", "-nolisten", "tcp"],
            pass_fds=(w,), stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(w)
        # The number comes with a line end written on its own: the pipe stays open until then,
        # or the server fails writing it.
        got = b""
        deadline = time.monotonic() + 30
        while not got.endswith(b"\n") and time.monotonic() < deadline:
            ready, _, _ = select.select([r], [], [], 1)
            if ready:
                chunk = os.read(r, 32)
                if not chunk:
                    break
                got += chunk
        os.close(r)
        number = got.decode().strip() if got.endswith(b"\n") else ""
        if not number:
            self.close()
            raise RuntimeError("Xvfb did not start")
        self.display = ":" + number

    def xdotool(self, *args, timeout=60):
        env = dict(os.environ, DISPLAY=self.display)
        r = subprocess.run(["xdotool", *args], env=env, capture_output=True, text=True,
                           timeout=timeout)
        if r.returncode != 0:
            raise AssertionError(f"xdotool {' '.join(args)}: {r.stderr}")
        return r.stdout.strip()

    def close(self):
        if self.proc.poll() is None:
            self.proc.terminate()
            self.proc.wait()
