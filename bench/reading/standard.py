"""Times the standard reader, GMime and Python over the same messages: fields, text, names and numbers of bytes."""

import email
import email.policy
import statistics

import messages
import parsing

OWN = "Standard"
# What is wanted: at most so many times the time of the other.
GOALS = {"GMime": 1.3, "GMimeWithBytes": 1.3, "Python": 0.1}


def texts_and_attachments(part, alternative=False):
    """Yields the texts to show, and each attachment with its number of bytes."""
    if part.is_multipart():
        inner = part.get_content_type() == "multipart/alternative"
        for one in part.get_payload():
            yield from texts_and_attachments(one, inner)
    elif part.get_content_maintype() == "text":
        if not alternative or part.get_content_subtype() == "plain":
            yield "text", part.get_content()
    else:
        yield "name", f"{part.get_filename()} {len(part.get_payload(decode=True))}"


def read_with_python(message):
    found = list(texts_and_attachments(email.message_from_bytes(message, policy=email.policy.default)))
    return "\r\n".join(what for kind, what in found if kind == "text"), [
        what for kind, what in found if kind == "name"
    ]


def compare(build, folder, rounds):
    print(f"The standard reader, processor time, medians of {rounds} interleaved rounds")
    for title, set_of_messages in messages.standard_sets().items():
        mailbox = folder / title.replace(" ", "-")
        mailbox.mkdir()
        for number, message in enumerate(set_of_messages):
            (mailbox / f"{number:03}").write_bytes(message)
        python = parsing.PythonReaders(set_of_messages, read_with_python)
        with parsing.CompiledReaders(build, mailbox) as compiled:
            readers = {
                name: (lambda passes, name=name: compiled.seconds(name, passes))
                for name in (OWN, "GMime", "GMimeWithBytes")
            }
            readers["Python"] = lambda passes: python.seconds(passes)[0]
            expected = python.results()
            for name in (OWN, "GMimeWithBytes"):
                parsing.require_same(title, expected, compiled.results(name, folder / "shown"), name)
            passes = {name: 1 + int(parsing.WORTH_TIMING / read(1)) for name, read in readers.items()}
            times = {name: [] for name in readers}
            for _ in range(rounds):
                for name, read in readers.items():
                    times[name].append(read(passes[name]))
        tell(title, {name: statistics.median(values) for name, values in times.items()})


def tell(title, medians):
    told = "  ".join(f"{name} {seconds * 1e3:.2f} ms" for name, seconds in medians.items())
    print(f"  {title:27} {told}")
    for name, goal in GOALS.items():
        ratio = medians[OWN] / medians[name]
        verdict = "yes" if ratio <= goal else "NO"
        print(f"  {'':27} {OWN} / {name}: {ratio:.4f}, wanted at most {goal}: {verdict}")
