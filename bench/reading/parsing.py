"""Times the program's MIME parser, GMime's and Python's over the same messages, which lie in memory."""

import email
import email.policy
import gc
import statistics
import subprocess
import time

import messages

OWN = "Brindlewake"
# What is wanted: the ratio of our time to that of each of the others.
GOAL = 1.0
MEDIA_TYPES = ("application", "audio", "video", "image")
# Processor time that one measurement should take at least.
WORTH_TIMING = 0.02


def texts_and_names(part, alternative=False):
    """Yields the texts to show and the names of attachments; among alternatives only the plain text."""
    if part.is_multipart():
        for inner in part.get_payload():
            yield from texts_and_names(inner, part.get_content_type() == "multipart/alternative")
    elif part.get_content_maintype() == "text":
        if not alternative or part.get_content_subtype() == "plain":
            yield "text", part.get_payload(decode=True).decode(part.get_content_charset("utf-8"))
    elif part.get_content_maintype() in MEDIA_TYPES:
        yield "name", part.get_filename()


def read_with_python(message):
    # The policy compat32, which is the default, parses faster than email.policy.default.
    found = list(texts_and_names(email.message_from_bytes(message)))
    return "\r\n".join(what for kind, what in found if kind == "text"), [
        what for kind, what in found if kind == "name"
    ]


class PythonReaders:
    """Python's parser, to be asked in the same way as the program beside it."""

    def __init__(self, set_of_messages, read=read_with_python):
        self.messages = set_of_messages
        self.read = read

    def seconds(self, passes):
        gc.collect()
        gc.disable()
        start = time.thread_time()
        for _ in range(passes):
            results = [self.read(message) for message in self.messages]
        elapsed = (time.thread_time() - start) / passes
        gc.enable()
        return elapsed, results

    def results(self):
        return self.seconds(1)[1]


class CompiledReaders:
    """The program's parser and GMime's, in a process of their own; it ends with the block that uses it."""

    def __init__(self, build, folder):
        self.process = subprocess.Popen(
            [build / "bench" / "reading" / "bench_reading_parsers", folder],
            stdin=subprocess.PIPE,
            stdout=subprocess.PIPE,
            text=True,
        )

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.stdin.close()
        self.process.wait(timeout=10)

    def ask(self, *words):
        print(*words, file=self.process.stdin, flush=True)
        answer = self.process.stdout.readline()
        if not answer:
            raise SystemExit("the program with the parsers has ended")
        return answer

    def seconds(self, name, passes):
        return float(self.ask("time", name, passes))

    def results(self, name, path):
        self.ask("show", name, path)
        pieces = path.read_bytes().decode().split("\0")[:-1]
        return [(text, names.splitlines()) for text, names in zip(pieces[0::2], pieces[1::2])]


def lines_of(result):
    """What was read, without empty lines, and without the "--" that our parser leaves of a boundary."""
    text, names = result
    return [line for line in text.splitlines() if line not in ("", "--")], names


def require_same(title, expected, results, name):
    if len(expected) != len(results):
        raise SystemExit(f"{title}: {name} has read {len(results)} of {len(expected)} messages")
    for wanted, result in zip(expected, results):
        if not wanted[0] or lines_of(result) != lines_of(wanted):
            raise SystemExit(f"{title}: {name} has read something else")


def race(title, set_of_messages, build, folder, rounds):
    """Returns the seconds that each parser took for all messages, a list for each of them."""
    mailbox = folder / title.replace(" ", "-")
    mailbox.mkdir()
    for number, message in enumerate(set_of_messages):
        (mailbox / f"{number:03}").write_bytes(message)
    python = PythonReaders(set_of_messages)
    with CompiledReaders(build, mailbox) as compiled:
        readers = {
            OWN: lambda passes: compiled.seconds(OWN, passes),
            "GMime": lambda passes: compiled.seconds("GMime", passes),
            "Python": lambda passes: python.seconds(passes)[0],
        }
        expected = python.results()
        for name in (OWN, "GMime"):
            require_same(title, expected, compiled.results(name, folder / "shown"), name)
        passes = {name: 1 + int(WORTH_TIMING / read(1)) for name, read in readers.items()}
        times = {name: [] for name in readers}
        for _ in range(rounds):
            for name, read in readers.items():
                times[name].append(read(passes[name]))
    return times


def compare(build, folder, rounds):
    print(f"Parsing, processor time, medians of {rounds} interleaved rounds")
    for title, set_of_messages in messages.sets().items():
        times = race(title, set_of_messages, build, folder, rounds)
        medians = {name: statistics.median(values) for name, values in times.items()}
        told = "  ".join(f"{name} {seconds * 1e6:.1f} us" for name, seconds in medians.items())
        print(f"  {title:27} {told}")
        for name in ("GMime", "Python"):
            ratio = medians[OWN] / medians[name]
            verdict = "yes" if ratio < GOAL else "NO"
            print(f"  {'':27} {OWN} / {name}: {ratio:.4f}, wanted below {GOAL}: {verdict}")
