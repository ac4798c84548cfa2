"""Lists a mailbox with Python's poplib: the very commands, and the work, of the C++ client beside it."""

import poplib
import sys
import time

BODY_LINES = 25


class Summary:
    """What is kept of one message; texts are bytes, as they came."""

    def __init__(self):
        self.sender = b""
        self.subject = b"'"
        self.date = b"'"
        self.content_type = b""
        self.boundary = b""
        self.header_text = bytearray()
        self.body_text = bytearray()
        self.size = 0

    def add_header(self, line):
        """Takes one header line; a continuation line has no field."""
        if line[:1] in (b" ", b"\t"):
            field, value = b"", line
        else:
            field, _, value = line.partition(b":")
            if value[:1] in (b" ", b"\t"):
                value = value[1:]
        self.header_text += field + b": " + value + b"\r\n"
        name = field.upper()
        if name == b"CONTENT-TYPE" or (self.content_type and not field):
            self.content_type += value
            self.find_boundary()
        elif name == b"SUBJECT":
            self.subject = value
        elif name == b"FROM":
            self.sender = value
        elif name == b"DATE":
            self.date = value

    def find_boundary(self):
        parameter = self.content_type.find(b"boundary=")
        if parameter < 0:
            return
        opening = self.content_type.find(b'"', parameter)
        closing = self.content_type.find(b'"', opening + 1)
        self.boundary = self.content_type[opening + 1 : closing]

    def kept(self):
        texts = (self.header_text, self.body_text, self.sender, self.subject, self.date, self.boundary)
        return sum(len(text) for text in texts)


def fetch(host, port):
    """Returns the summaries of all messages, and how many header and body lines they have."""
    header_lines = body_lines = 0
    summaries = []
    pop = poplib.POP3(host, port)
    pop.user("reader")
    pop.pass_("demo")
    count, _ = pop.stat()
    for number in range(1, count + 1):
        summary = Summary()
        summary.size = int(pop.list(number).split()[2])
        _, lines, _ = pop.top(number, BODY_LINES)
        in_body = False
        for line in lines:
            if in_body:
                body_lines += 1
                summary.body_text += line + b"\r\n"
            elif line:
                header_lines += 1
                summary.add_header(line)
            else:
                in_body = True
        summaries.append(summary)
    pop.quit()
    return summaries, header_lines, body_lines


def main():
    host, port = sys.argv[1].split(":")
    start, work = time.perf_counter(), time.process_time()
    summaries, header_lines, body_lines = fetch(host, int(port))
    elapsed, work = time.perf_counter() - start, time.process_time() - work
    sizes = sum(summary.size for summary in summaries)
    kept = sum(summary.kept() for summary in summaries)
    print(
        f"seconds {elapsed} processor {work} messages {len(summaries)} sizes {sizes} header-lines {header_lines}"
        f" body-lines {body_lines} bytes-kept {kept}"
    )


main()
