"""Messages of all shapes, made by a generator of random numbers that begins with the same one in each run."""

import base64
import quopri
import random

WORDS = {
    "us-ascii": "the timetable of next term is on the board and all rooms are open".split(),
    "utf-8": "Grüße aus Zürich naïve café € – “quoted” 日本語 😀 שלום ещё".split(),
    "iso-8859-1": "Grüße aus Zürich naïve café Ångström".split(),
    "windows-1252": "Grüße “quoted” € – naïve".split(),
    "koi8-r": "завтра будет письмо из школы".split(),
    "iso-2022-jp": "日本 日曜日 こんにちは".split(),
    "gb18030": "中文 邮件 学校".split(),
    "big5": "中文 郵件 學校".split(),
}
TYPES = {
    "application/pdf": "pdf",
    "application/octet-stream": "bin",
    "image/png": "png",
    "image/jpeg": "jpg",
    "text/csv": "csv",
    "application/zip": "zip",
}


class Mail:
    """One message, and the faults that were put into it on purpose."""

    def __init__(self, seed):
        self.random = random.Random(seed)
        self.faults = set()
        self.boundaries = 0
        self.bytes = self.message()

    def one_of(self, *choices):
        return self.random.choice(choices)

    def rarely(self, fault):
        if self.random.random() < 0.02:
            self.faults.add(fault)
            return True
        return False

    def words(self, charset, most=12):
        return " ".join(self.random.choices(WORDS[charset], k=self.random.randint(1, most)))

    # Header fields

    def encoded_word(self, text, charset):
        data = text.encode(charset)
        if self.one_of(True, False):
            return f"=?{charset}?{self.one_of('B', 'b')}?{base64.b64encode(data).decode()}?="
        safe = "".join(
            chr(byte) if chr(byte).isascii() and chr(byte).isalnum() else "_" if byte == 32 else f"={byte:02X}"
            for byte in data
        )
        return f"=?{charset}?{self.one_of('Q', 'q')}?{safe}?="

    def unstructured(self):
        charset = self.one_of(*WORDS)
        if charset == "us-ascii":
            return self.words(charset)
        words = [self.encoded_word(self.words(charset, 4), charset) for _ in range(self.random.randint(1, 3))]
        if self.one_of(True, False):
            words.insert(0, "Re:")
        return self.one_of(" ", "\r\n ", "\r\n\t").join(words)

    def header(self):
        zone = self.one_of("+0100", "-0500", "GMT", "-0000")
        day = self.random.randint(1, 28)
        return (
            f"From: {self.encoded_word(self.words('utf-8', 2), 'utf-8')} <ann@example.org>\r\n"
            f"To: reader@example.org\r\nSubject: {self.unstructured()}\r\n"
            f"Date: {day} Nov 2026 17:42:00 {zone}\r\nMIME-Version: 1.0\r\n"
        )

    # Parts

    def text(self, subtype):
        charset = self.one_of(*WORDS)
        lines = [self.words(charset) for _ in range(self.random.randint(1, 12))]
        content = "\r\n".join(lines)
        if subtype == "html":
            content = "<html><body>" + "".join(f"<p>{line}</p>" for line in lines) + "</body></html>"
        named = self.one_of(charset, charset.upper(), f'"{charset}"')
        data = content.encode(charset)
        if self.rarely("a charset that nobody knows"):
            named = "x-nobody"
        fields = f"Content-Type: text/{subtype}; charset={named}\r\n"
        return self.encoded(fields, data, is_text=True)

    def encoded(self, fields, data, is_text=False):
        choices = ["base64"] + (["quoted-printable", "8bit"] if is_text else [])
        encoding = self.random.choice(choices)
        if encoding == "base64":
            width = self.one_of(76, 76, 76, 60, 64, 4)
            digits = base64.b64encode(data).decode()
            if self.rarely("base64 without its padding"):
                digits = digits.rstrip("=")
            body = "\r\n".join(digits[at : at + width] for at in range(0, len(digits), width)).encode()
            if self.rarely("text behind base64") and digits.endswith("="):
                body += b"\r\n\r\n_____ a footer, of a list."
        elif encoding == "quoted-printable":
            body = quopri.encodestring(data.replace(b"\r\n", b"\n")).replace(b"\n", b"\r\n")
        else:
            body = data
        label = self.one_of(encoding, encoding.upper())
        if encoding == "8bit" and self.rarely("an encoding that nobody knows"):
            label = "x-nobody"
        return f"{fields}Content-Transfer-Encoding: {label}\r\n\r\n".encode() + body

    def name_parameter(self, key, name):
        percent = "".join(f"%{byte:02X}" for byte in name.encode())
        form = self.one_of("plain", "extended", "pieces", "word", "raw")
        if name.isascii() and form in ("plain", "raw"):
            return self.one_of(f'{key}="{name}"', f"{key}={name}" if " " not in name else f'{key}="{name}"')
        if form == "pieces":
            half = len(percent) // 6 * 3
            return f"{key}*0*=utf-8''{percent[:half]};\r\n {key}*1*={percent[half:]}"
        if form == "word" or form == "raw":
            return f'{key}="{self.encoded_word(name, "utf-8")}"'
        if form == "extended" and self.one_of(True, False):
            self.faults.add("a name in both forms")
            return f"{key}=\"fallback\"; {key}*=utf-8''{percent}"
        return f"{key}*=utf-8''{percent}"

    def attachment(self):
        media_type, extension = self.one_of(*TYPES.items())
        name = self.words(self.one_of("us-ascii", "utf-8"), 2).replace("“", "").replace("”", "") + "." + extension
        fields = f"Content-Type: {media_type}\r\n"
        if self.rarely("an attachment without a name"):
            fields += "Content-Disposition: attachment\r\n"
        elif media_type.startswith("text/") or self.one_of(True, False):
            fields += f"Content-Disposition: attachment; {self.name_parameter('filename', name)}\r\n"
        else:
            fields = f"Content-Type: {media_type}; {self.name_parameter('name', name)}\r\n"
        return self.encoded(fields, self.random.randbytes(self.random.choice((0, 1, 2, 3, 57, 1000))))

    def inner_message(self):
        return b"Content-Type: message/rfc822\r\n\r\n" + self.header().encode() + b"\r\ninner text\r\nof two lines"

    def multipart(self, kind, parts):
        self.boundaries += 1
        boundary = self.one_of(f"cut{self.boundaries}", f"----=_Part_{self.boundaries}.x", f"=_{self.boundaries}'()+_,-./:=?")
        quoted = boundary if boundary.startswith("cut") and self.one_of(True, False) else f'"{boundary}"'
        lines = [f"Content-Type: multipart/{kind};{self.one_of(' ', chr(13) + chr(10) + chr(9))}boundary={quoted}\r\n\r\n".encode()]
        lines.append(self.one_of(b"", b"This is a multi-part message in MIME format.\r\n"))
        for part in parts:
            lines.append(b"--" + boundary.encode() + self.one_of(b"", b"", b" ") + b"\r\n" + part + b"\r\n")
        if not self.rarely("no closing boundary"):
            lines.append(b"--" + boundary.encode() + b"--\r\n")
        return b"".join(lines)

    def alternative(self):
        html = self.text("html")
        if self.one_of(True, False):
            html = self.multipart("related", [html, self.attachment()])
        return self.multipart("alternative", [self.text("plain"), html])

    def body(self, depth=0):
        kind = self.one_of("plain", "html", "alternative", "mixed", "mixed", "signed")
        if kind == "plain" or kind == "html":
            return self.text(kind)
        if kind == "alternative" or depth > 2:
            return self.alternative()
        if kind == "signed":
            signature = b"Content-Type: application/pgp-signature; name=s.asc\r\n\r\nsignature"
            return self.multipart("signed; protocol=\"application/pgp-signature\"", [self.body(depth + 1), signature])
        parts = [self.body(depth + 1)]
        for _ in range(self.random.randint(1, 4)):
            parts.append(self.one_of(self.attachment, self.attachment, self.inner_message, lambda: self.text("plain"))())
        return self.multipart("mixed", parts)

    def message(self):
        header = self.header().encode()
        if self.rarely("no empty line behind the header"):
            return header + b"Here the text begins at once.\r\n"
        return header + self.body() + b"\r\n"
