"""Fetches a message with Python's poplib and saves its attachment: <port> <file>."""

import email
import os
import poplib
import sys
import time


def main():
    start = time.perf_counter()
    pop = poplib.POP3("127.0.0.1", int(sys.argv[1]))
    pop.user("reader")
    pop.pass_("demo")
    pop.stat()
    pop.list(1)
    _, lines, _ = pop.retr(1)
    pop.quit()
    message = email.message_from_bytes(b"\r\n".join(lines))
    for part in message.walk():
        if part.get_content_maintype() == "application":
            with open(sys.argv[2], "wb") as file:
                file.write(part.get_payload(decode=True))
                os.fsync(file.fileno())
    print("seconds", time.perf_counter() - start)


main()
