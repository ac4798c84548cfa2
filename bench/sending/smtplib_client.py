"""Sends a ready-made message with Python's smtplib: <port> <message>."""

import smtplib
import sys
import time


def main():
    start = time.perf_counter()
    with open(sys.argv[2], "rb") as file:
        message = file.read()
    with smtplib.SMTP("127.0.0.1", int(sys.argv[1])) as server:
        server.sendmail("ann@example.org", ["bob@example.org"], message)
    print("seconds", time.perf_counter() - start)


main()
