"""The messages that are read: the same in every run."""

import base64
import quopri
import random

ATTACHMENT_BYTES = 25_000_000
ATTACHMENT_NAME = "FILE.BIN"
# As mail programs write them: one that no encoded text can contain, and one of letters and digits alone.
BOUNDARY = "------------bW9kZXN0IGJvdW5kYXJ5"
PLAIN_BOUNDARY = "0000000000001f3c0c05f5d8a1b2"
INNER_BOUNDARY = "=_inner_0c9d1e"
WORDS = "the timetable of next term is on the board café and all rooms are open until half past four".split()


def text(generator, lines):
    return "".join(" ".join(generator.choices(WORDS, k=11)) + "\r\n" for _ in range(lines))


def header(number, content_type):
    hops = "".join(
        f"Received: from relay{hop}.example.org (relay{hop}.example.org [192.0.2.{hop}])\r\n"
        f"\tby relay{hop - 1}.example.net (Postbox) with ESMTPS id 4F{number}{hop}A\r\n"
        f"\tfor <reader@example.com>; Mon, 3 Mar 2025 09:10:0{hop} +0000\r\n"
        for hop in (3, 2, 1)
    )
    return (
        f"Return-Path: <ann@example.org>\r\nDelivered-To: reader@example.com\r\n{hops}"
        f"Message-ID: <{number}.20250303@example.org>\r\nDate: Mon, 3 Mar 2025 09:10:00 +0000\r\n"
        f'From: "Ann" <ann@example.org>\r\nTo: reader@example.com\r\nSubject: Letter {number}\r\n'
        f"MIME-Version: 1.0\r\nContent-Type: {content_type}\r\nUser-Agent: Letterbox 3.2\r\n\r\n"
    )


def text_part(content, subtype="plain"):
    return (
        f"Content-Type: text/{subtype}; charset=utf-8\r\nContent-Transfer-Encoding: 8bit\r\n\r\n{content}"
    ).encode()


def attachment_part(content, name, media_type="application/octet-stream"):
    return (
        f'Content-Type: {media_type};\r\n name="{name}"\r\n'
        f'Content-Disposition: attachment;\r\n filename="{name}"\r\n'
        "Content-Transfer-Encoding: base64\r\n\r\n"
    ).encode() + base64.encodebytes(content).replace(b"\n", b"\r\n")


def joined(parts, boundary):
    opening = f"--{boundary}\r\n".encode()
    return b"".join(opening + part for part in parts) + f"--{boundary}--\r\n".encode()


def multipart(number, parts, boundary=BOUNDARY):
    opening = header(number, f'multipart/mixed;\r\n boundary="{boundary}"').encode()
    return opening + b"This is a multi-part message in MIME format.\r\n" + joined(parts, boundary)


def alternative(generator, lines):
    texts = [text_part(text(generator, lines)), text_part(f"<p>{text(generator, lines)}</p>\r\n", "html")]
    opening = f'Content-Type: multipart/alternative;\r\n boundary="{INNER_BOUNDARY}"\r\n\r\n'.encode()
    return opening + joined(texts, INNER_BOUNDARY)


def large_attachment():
    return random.Random(1).randbytes(ATTACHMENT_BYTES)


def with_attachment(attachment, boundary=BOUNDARY):
    parts = [text_part(text(random.Random(2), 20)), attachment_part(attachment, ATTACHMENT_NAME)]
    return multipart(1, parts, boundary)


def two_texts(number, generator):
    return multipart(
        number, [text_part(text(generator, 20)), text_part(f"<p>{text(generator, 20)}</p>\r\n", "html")]
    )


def twenty_parts(generator):
    parts = []
    for number in range(10):
        parts.append(text_part(text(generator, 30)))
        parts.append(attachment_part(generator.randbytes(5000), f"FILE{number}.BIN"))
    return multipart(1, parts)


def nested(number, generator, attachment_bytes=5000):
    picture = attachment_part(generator.randbytes(attachment_bytes), "PICTURE.JPG", "image/jpeg")
    return multipart(number, [alternative(generator, 40), picture])


def encoded_texts(number, generator):
    """Texts as most programs send them: one in quoted-printable, one in base64."""
    lines = text(generator, 40).replace("\r\n", "\n")
    parts = [
        b"Content-Type: text/plain; charset=utf-8\r\nContent-Transfer-Encoding: quoted-printable\r\n\r\n"
        + quopri.encodestring(lines.encode()).replace(b"\n", b"\r\n"),
        b"Content-Type: text/plain; charset=iso-8859-15\r\nContent-Transfer-Encoding: base64\r\n\r\n"
        + base64.encodebytes(lines.encode("iso-8859-15")).replace(b"\n", b"\r\n"),
    ]
    return multipart(number, parts)


def mixed(number, generator):
    return encoded_texts(number, generator) if number % 3 == 0 else typical(number, generator)


def three_attachments():
    third = large_attachment()[: ATTACHMENT_BYTES // 3]
    parts = [text_part(text(random.Random(2), 20))]
    parts += [attachment_part(third, f"FILE{number}.BIN") for number in (1, 2, 3)]
    return multipart(1, parts)


def typical(number, generator):
    """One of a mailbox: most are short, every tenth has a larger attachment."""
    kind = number % 10
    if kind == 0:
        return nested(number, generator, generator.randrange(100_000, 400_000))
    if kind < 3:
        return nested(number, generator, generator.randrange(5_000, 30_000))
    if kind < 6:
        return two_texts(number, generator)
    if kind < 8:
        return multipart(number, [alternative(generator, generator.randrange(10, 80))])
    return (header(number, "text/plain; charset=utf-8") + text(generator, generator.randrange(5, 80))).encode()


def sets():
    """What the parsers are compared with: each a name, and its messages."""
    generator = random.Random(3)
    attachment = large_attachment()
    return {
        "two texts": [two_texts(1, generator)],
        "25 MB attachment": [with_attachment(attachment)],
        "the same, boundary 0000...": [with_attachment(attachment, PLAIN_BOUNDARY)],
        "20 parts": [twenty_parts(generator)],
        "nested alternative": [nested(1, generator)],
        "200 messages": [typical(number, generator) for number in range(200)],
    }


def standard_sets():
    """What the standard reader is compared with, where two texts of HTML would be no comparison."""
    generator = random.Random(4)
    return {
        "200 mixed messages": [
            mixed(number, generator) if number % 10 not in (3, 4, 5) else encoded_texts(number, generator)
            for number in range(200)
        ],
        "25 MB, three attachments": [three_attachments()],
    }
