"""Logs in with the installed program, on the display that is there, at a POP3 server of this script's own."""

import contextlib
import os
import pathlib
import socketserver
import subprocess
import tempfile
import threading
import time

MESSAGE = b"From: Ann <ann@example.org>\r\nSubject: Hello\r\nDate: Sun, 22 Nov 2026 12:00:00 +0000\r\n\r\nText\r\n"
EXAMPLE = pathlib.Path("/usr/share/brindlewake/tolk.ini.example")
TITLE = "Welcome member To Example School E-Mail"


class Conversation(socketserver.StreamRequestHandler):
    """One POP3 session with one message."""

    def handle(self):
        size = len(MESSAGE)
        answers = {
            b"STAT": b"+OK 1 %d\r\n" % size,
            b"LIST": b"+OK\r\n1 %d\r\n.\r\n" % size,
            b"LIST 1": b"+OK 1 %d\r\n" % size,
            b"TOP 1 25": b"+OK\r\n" + MESSAGE + b".\r\n",
            b"UIDL": b"+OK\r\n1 one\r\n.\r\n",
            b"CAPA": b"-ERR\r\n",
        }
        self.wfile.write(b"+OK\r\n")
        # At the end the program is gone without a word.
        with contextlib.suppress(ConnectionResetError):
            for line in self.rfile:
                command = line.strip()
                self.wfile.write(answers.get(command, b"+OK\r\n"))
                if command == b"UIDL":
                    self.server.listed.set()
                if command == b"QUIT":
                    return


def window(title):
    """The number of the visible window with this title; waits for it."""
    deadline = time.monotonic() + 60
    while time.monotonic() < deadline:
        found = subprocess.run(
            ["xdotool", "search", "--onlyvisible", "--name", f"^{title}$"], stdout=subprocess.PIPE, text=True
        ).stdout.split()
        if found:
            return found[0]
        time.sleep(0.2)
    raise SystemExit(f"no window {title!r}")


def type_into(*words):
    subprocess.run(["xdotool", *words], check=True)


def main():
    with (
        tempfile.TemporaryDirectory() as home,
        socketserver.ThreadingTCPServer(("127.0.0.1", 0), Conversation) as server,
    ):
        server.listed = threading.Event()
        threading.Thread(target=server.serve_forever, daemon=True).start()
        shared = pathlib.Path(home, "etc")
        shared.mkdir()
        address = f"plain://127.0.0.1:{server.server_address[1]}"
        settings = EXAMPLE.read_text().replace("tls://mail.example.org", address)
        (shared / "tolk.ini").write_text(settings)
        environment = dict(os.environ, HOME=home, XDG_RUNTIME_DIR=home, BRINDLEWAKE_ETC=str(shared))
        environment.pop("XDG_DATA_HOME", None)
        with subprocess.Popen(["brindlewake-session"], env=environment) as program:
            login = window("Example School E-Mail")
            # Without a window manager, the keyboard has to be given to the window.
            type_into("windowfocus", "--sync", login)
            type_into("type", "member\tsecret\r")
            window(TITLE)
            listed = server.listed.wait(60)
            program.terminate()
        server.shutdown()
    if not listed:
        raise SystemExit("the mailbox was not listed")
    print("logged in, and the mailbox is listed")


main()
