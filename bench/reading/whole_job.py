"""Times a message with a 25 MB attachment from the double click to the saved file, beside other programs."""

import os
import pathlib
import resource
import shutil
import socketserver
import statistics
import subprocess
import sys
import threading
import time

HERE = pathlib.Path(__file__).resolve().parent
sys.path.append(str(HERE.parent))

import desk
import messages

OWN = "Brindlewake"
PARTS = "its parts"
# What is wanted: the ratio of our time to that of the other, and our memory's growth in sizes of the message.
GOALS = {"plain C": 1.5, "curl": 1.0, "poplib": 0.5}
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
            "LIST": b"+OK\r\n1 %d\r\n.\r\n" % size,
            "LIST 1": b"+OK 1 %d\r\n" % size,
            "TOP": self.server.beginning,
            "RETR": self.server.retrieved,
            "UIDL": b"+OK\r\n1 one\r\n.\r\n",
            "QUIT": b"+OK\r\n",
        }
        self.request.sendall(b"+OK ready\r\n")
        for line in self.rfile:
            whole = line.decode().strip().upper()
            command = whole.partition(" ")[0]
            self.request.sendall(answers.get(whole) or answers.get(command, b"-ERR not known\r\n"))
            if command == "QUIT":
                return


class Server(socketserver.ThreadingTCPServer):
    """A POP3 server with one message; it ends with the block that uses it."""

    daemon_threads = True

    def __init__(self, message):
        super().__init__(("127.0.0.1", 0), Conversation)
        self.message_bytes = len(message)
        stuffed = message.replace(b"\r\n.", b"\r\n..")
        header, _, body = stuffed.partition(b"\r\n\r\n")
        self.beginning = b"\r\n".join([b"+OK", header, b"", *body.split(b"\r\n", 25)[:25], b".", b""])
        self.retrieved = b"+OK\r\n" + stuffed + b".\r\n"
        self.port = str(self.server_address[1])

    def __enter__(self):
        threading.Thread(target=self.serve_forever, daemon=True).start()
        return self

    def __exit__(self, *_):
        self.shutdown()
        self.server_close()


def commands(build, port):
    reading = build / "bench" / "reading"
    return {
        PARTS: [reading / "bench_reading_client", f"127.0.0.1:{port}", "C:\\FILE.BIN"],
        "plain C": [reading / "bench_reading_plain", port, "FILE.BIN"],
        "poplib": [sys.executable, HERE / "poplib_client.py", port, "FILE.BIN"],
        "curl": [HERE / "curl_pipeline", port, "FILE.BIN"],
    }


def run(command, folder):
    """Reads once; returns what the program tells of itself, and else what its process took."""
    environment = dict(os.environ, BRINDLEWAKE_DRIVE_C=str(folder))
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    start = time.perf_counter()
    told = subprocess.run(
        command, check=True, stdout=subprocess.PIPE, text=True, timeout=300, cwd=folder, env=environment
    ).stdout.split()
    seconds = time.perf_counter() - start
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    processor = after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime
    own = {key: float(value) for key, value in zip(told[0::2], told[1::2])}
    return {"seconds": seconds, "processor": processor} | own


def use_windows(build, port, display, folder):
    told = desk.use_windows(build, "reading", display, folder, pop3=f"127.0.0.1:{port}")
    told["seconds"] = told["opening-seconds"] + told["saving-seconds"]
    told["processor"] = told["opening-processor"] + told["saving-processor"]
    return told


def race(build, folder, rounds):
    """Returns what each program told of itself, for each thing a list, and the size of the message."""
    attachment = messages.large_attachment()
    message = messages.with_attachment(attachment)
    told = {}
    with Server(message) as server, desk.virtual_display() as display:
        programs = {OWN: lambda place: use_windows(build, server.port, display, place)}
        for name, command in commands(build, server.port).items():
            programs[name] = lambda place, command=command: run(command, place)
        for _ in range(rounds):
            for name, program in programs.items():
                # Each begins in an empty folder.
                place = folder / "saved"
                place.mkdir()
                words = program(place)
                if (place / "FILE.BIN").read_bytes() != attachment:
                    raise SystemExit(f"{name} has saved another file")
                shutil.rmtree(place)
                for key, value in words.items():
                    told.setdefault(name, {}).setdefault(key, []).append(value)
    return told, len(message)


def show(title, name, values):
    print(
        f"  {title:14} {name:12} {statistics.median(values) * 1000:8.1f} ms"
        f"  ({min(values) * 1000:.1f} to {max(values) * 1000:.1f})"
    )


def judge(told, message_bytes):
    own = statistics.median(told[OWN]["seconds"])
    for name, goal in GOALS.items():
        ratio = own / statistics.median(told[name]["seconds"])
        print(f"  {OWN} / {name}: {ratio:.2f}, wanted at most {goal}: {'yes' if ratio <= goal else 'NO'}")
    grown = zip(told[OWN]["memory-before"], told[OWN]["memory-after"])
    most = max(after - before for before, after in grown) * 1024 / message_bytes
    print(
        f"  memory grows by {most:.2f} times the message's size, wanted at most {MEMORY_GOAL}: "
        f"{'yes' if most <= MEMORY_GOAL else 'NO'}"
    )


def compare(build, folder, rounds):
    told, message_bytes = race(build, folder, rounds)
    print(f"Opening and saving a 25 MB attachment, medians of {rounds} interleaved rounds")
    for name, words in told.items():
        show("wait", name, words["seconds"])
    for name, words in told.items():
        show("processor", name, words["processor"])
    for name in (OWN, "plain C"):
        for step in ("opening", "saving"):
            show(f"of it, {step}", name, told[name][f"{step}-seconds"])
    for step in ("fetch", "parse", "save"):
        show(f"of it, {step}", PARTS, told[PARTS][step])
    judge(told, message_bytes)
