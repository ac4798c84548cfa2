"""What the comparisons of whole windows share: a display without anybody before it, and the program's settings."""

import contextlib
import os
import pathlib
import shutil
import subprocess

ASSETS = pathlib.Path(__file__).resolve().parent.parent / "assets"
INSTITUTION = "Example School"
SETTINGS = f"""ShowSetup=yes
[MailServer Info]
POPServer={{pop3}}
SMTPServer={{smtp}}
DomainName=example.org
[Institution Properties]
Institution={INSTITUTION}
[Application Options]
PlayWav={{sound}}
ShowDatabase=no
SendAttachments=yes
SaveDirectory=C:\\
AllowPrinting=yes
SaveCopy=no
ShowGetMail=yes
GetMailEvery=0
LDAPServer=directory.example.org
LDAPSearchBase=c=us
AddressLookup=Personal Address Book
"""


@contextlib.contextmanager
def virtual_display():
    """Starts an X server and gives the name of its display."""
    read_end, write_end = os.pipe()
    with subprocess.Popen(
        ["Xvfb", "-displayfd", str(write_end), "-screen", "0", "1280x800x24", "-nolisten", "tcp", "-noreset"],
        pass_fds=(write_end,),
        stderr=subprocess.DEVNULL,
    ) as server:
        os.close(write_end)
        try:
            with os.fdopen(read_end) as number:
                yield ":" + number.readline().strip()
        finally:
            server.terminate()


def prepare_folder(folder, sound="yes", pop3="127.0.0.1", smtp="127.0.0.1"):
    """Puts all that the program reads from its current folder there."""
    folder.chmod(0o700)
    for name in ("tolk.jpg", "Gotmail.wav"):
        shutil.copy(ASSETS / name, folder)
    settings = folder / "tolk.ini"
    settings.write_bytes(SETTINGS.format(sound=sound, pop3=pop3, smtp=smtp).replace("\n", "\r\n").encode())
    settings.chmod(0o600)


def environment(display, folder):
    return {
        "PATH": os.environ["PATH"],
        "HOME": str(folder),
        "XDG_RUNTIME_DIR": str(folder),
        "LC_ALL": "C.UTF-8",
        "DISPLAY": display,
        "QT_QPA_PLATFORM": "xcb",
        "BRINDLEWAKE_DRIVE_C": str(folder),
        "BRINDLEWAKE_DRIVE_D": str(folder.parent),
    }


def use_windows(build, job, display, folder, command=(), certificate=None, **servers):
    """Lets the program's windows do a job once, in a folder of its own; returns what was measured.

    D: is the folder above, for what the program is to find there. The command runs the program, for example in
    another network; the certificate is a file with a root to be trusted.
    """
    surroundings = environment(display, folder)
    if certificate:
        surroundings["SSL_CERT_FILE"] = str(certificate)
    prepare_folder(folder, sound="no", **servers)
    words = subprocess.run(
        [*command, build / "bench" / "windows" / "bench_windows", job],
        check=True,
        stdout=subprocess.PIPE,
        text=True,
        cwd=folder,
        env=surroundings,
        timeout=120,
    ).stdout.split()
    return {name: float(value) for name, value in zip(words[0::2], words[1::2])}
