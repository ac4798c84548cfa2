"""Times a message with a 25 MB attachment from the log-on to the saved file, with the program and with others."""

import os
import pathlib
import shutil
import socketserver
import statistics
import subprocess
import sys
import threading
import time

import messages

HERE = pathlib.Path(__file__).resolve().parent
OWN = "Brindlewake"
# What is wanted: the ratio of our time to that of the other, and our memory's growth in sizes of the message.
GOALS = {"poplib": 0.5, "curl": 0.5}
MEMORY_GOAL = 2.5


class Conversation(socketserver.StreamRequestHandler):
    """One POP3 session. The message is ready to be sent: the server's time should count as little as it can."""

    disable_nagle_algorithm = True

    def handle(self):
        size = self.server.message_bytes
        answers = {
            "USER": b"+OK\r\n",
            "PASS": b"+OK\r\n",
            "STAT": b"+OK 1 %d\r\n" % size,
            "LIST": b"+OK 1 %d\r\n" % size,
            "RETR": self.server.retrieved,
            "QUIT": b"+OK\r\n",
        }
        self.request.sendall(b"+OK ready\r\n")
        for line in self.rfile:
            command = line.split()[0].decode().upper()
            self.request.sendall(answers.get(command, b"-ERR not known\r\n"))
            if command == "QUIT":
                return


class Server(socketserver.ThreadingTCPServer):
    """A POP3 server with one message; it ends with the block that uses it."""

    daemon_threads = True

    def __init__(self, message):
        super().__init__(("127.0.0.1", 0), Conversation)
        self.message_bytes = len(message)
        self.retrieved = b"+OK\r\n" + message.replace(b"\r\n.", b"\r\n..") + b".\r\n"
        self.port = str(self.server_address[1])

    def __enter__(self):
        threading.Thread(target=self.serve_forever, daemon=True).start()
        return self

    def __exit__(self, *_):
        self.shutdown()
        self.server_close()


def commands(build, port):
    return {
        OWN: [build / "bench" / "reading" / "bench_reading_client", f"127.0.0.1:{port}", "C:\\FILE.BIN"],
        "poplib": [sys.executable, HERE / "poplib_client.py", port, "FILE.BIN"],
        "curl": [HERE / "curl_pipeline", port, "FILE.BIN"],
    }


def run(name, command, folder, attachment):
    """Reads once, in an empty folder; returns the seconds of the process and what it tells of itself."""
    folder.mkdir()
    environment = dict(os.environ, BRINDLEWAKE_DRIVE_C=str(folder))
    start = time.perf_counter()
    told = subprocess.run(
        command, check=True, stdout=subprocess.PIPE, text=True, timeout=300, cwd=folder, env=environment
    ).stdout.split()
    seconds = time.perf_counter() - start
    if (folder / "FILE.BIN").read_bytes() != attachment:
        raise SystemExit(f"{name} has saved another file")
    shutil.rmtree(folder)
    return seconds, {key: float(value) for key, value in zip(told[0::2], told[1::2])}


def race(build, folder, rounds):
    """Returns the seconds of each process, what each one told of itself, and the size of the message."""
    attachment = messages.large_attachment()
    message = messages.with_attachment(attachment)
    whole, told = {}, {}
    with Server(message) as server:
        programs = commands(build, server.port)
        for _ in range(rounds):
            for name, command in programs.items():
                seconds, words = run(name, command, folder / "saved", attachment)
                whole.setdefault(name, []).append(seconds)
                for key, value in words.items():
                    told.setdefault(name, {}).setdefault(key, []).append(value)
    return whole, told, len(message)


def show(title, name, values):
    print(
        f"  {title:14} {name:12} {statistics.median(values) * 1000:8.1f} ms"
        f"  ({min(values) * 1000:.1f} to {max(values) * 1000:.1f})"
    )


def judge(whole, told, message_bytes):
    for name, goal in GOALS.items():
        # Python's start is not poplib's fault.
        own_time = "seconds" in told.get(name, {})
        own, other = (told[OWN]["seconds"], told[name]["seconds"]) if own_time else (whole[OWN], whole[name])
        ratio = statistics.median(own) / statistics.median(other)
        print(f"  {OWN} / {name}: {ratio:.2f}, wanted at most {goal}: {'yes' if ratio <= goal else 'NO'}")
    grown = zip(told[OWN]["memory-before"], told[OWN]["memory-after"])
    most = max(after - before for before, after in grown) * 1024 / message_bytes
    print(
        f"  memory grows by {most:.2f} times the message's size, wanted at most {MEMORY_GOAL}: "
        f"{'yes' if most <= MEMORY_GOAL else 'NO'}"
    )


def compare(build, folder, rounds):
    whole, told, message_bytes = race(build, folder, rounds)
    print(f"Saving a 25 MB attachment from the server, medians of {rounds} interleaved rounds")
    for name, values in whole.items():
        show("whole process", name, values)
    for name, words in told.items():
        show("without start", name, words["seconds"])
    for step in ("fetch", "parse", "save"):
        show("of it", step, told[OWN][step])
    judge(whole, told, message_bytes)
