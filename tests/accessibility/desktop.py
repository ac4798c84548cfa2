"""A display and buses that nobody else uses, the built program on them, and an ear for what it tells screen readers.

What tests in this folder share. Whoever imports it ends with 77 where this computer has no such buses.
"""

import os
import shutil
import subprocess
import sys
import time
from pathlib import Path

LAUNCHER = Path("/usr/libexec/at-spi-bus-launcher")
PATIENCE = 30  # seconds
NOTHING_TO_LISTEN_TO = 77
ACCESSIBLE = "org.a11y.atspi.Accessible"
REGISTRY = ("org.a11y.atspi.Registry", "/org/a11y/atspi/registry", "org.a11y.atspi.Registry")

try:
    from gi.repository import Gio, GLib
except ImportError:
    print("python3-gi is not installed", file=sys.stderr)
    sys.exit(NOTHING_TO_LISTEN_TO)


def settings_text(pop_server, smtp_server):
    return f"""ShowSetup=yes
[MailServer Info]
POPServer={pop_server}
SMTPServer={smtp_server}
DomainName=example.org
[Institution Properties]
Institution=Listening School
[Application Options]
PlayWav=no
ShowDatabase=yes
SendAttachments=no
SaveDirectory=C:\\
AllowPrinting=no
SaveCopy=no
ShowGetMail=yes
GetMailEvery=0
LDAPServer=localhost
LDAPSearchBase=c=us
AddressLookup=Personal Address Book
"""


def wait_until(what, condition):
    """Lets messages come until the condition holds, and returns what it returns."""
    context = GLib.MainContext.default()
    deadline = time.monotonic() + PATIENCE
    while True:
        while context.iteration(False):
            pass
        if result := condition():
            return result
        if time.monotonic() > deadline:
            raise SystemExit(f"{what} did not come within {PATIENCE} seconds")
        time.sleep(0.02)


def connected(address):
    return Gio.DBusConnection.new_for_address_sync(
        address,
        Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION,
        None,
        None,
    )


def call(bus, name, path, interface, method, arguments=None):
    return bus.call_sync(
        name, path, interface, method, arguments, None, Gio.DBusCallFlags.NONE, PATIENCE * 1000, None
    ).unpack()


def ask(bus, place, method, arguments=None, interface=ACCESSIBLE):
    """Asks the thing at the place, which is the name of its program and its path there."""
    return call(bus, *place, interface, method, arguments)


def property_of(bus, place, name):
    return ask(bus, place, "Get", GLib.Variant("(ss)", (ACCESSIBLE, name)), "org.freedesktop.DBus.Properties")[0]


def strings_in(value):
    if isinstance(value, str):
        yield value
    elif isinstance(value, dict):
        for key, element in value.items():
            yield from strings_in(key)
            yield from strings_in(element)
    elif isinstance(value, (list, tuple)):
        for element in value:
            yield from strings_in(element)


class Monitor:
    """Everything that goes over a bus: who says it about what, and the texts in it."""

    def __init__(self, address):
        self.messages = []
        bus = connected(address)
        call(
            bus,
            "org.freedesktop.DBus",
            "/org/freedesktop/DBus",
            "org.freedesktop.DBus.Monitoring",
            "BecomeMonitor",
            GLib.Variant("(asu)", ([], 0)),
        )
        # Calls between others come here too, and must not be answered.
        bus.add_filter(self.remember)
        self.bus = bus

    def remember(self, _bus, message, _incoming):
        body = message.get_body()
        texts = list(strings_in(body.unpack())) if body else []
        self.messages.append((message.get_sender(), message.get_path(), message.get_member(), texts))

    def events(self, member):
        return [message for message in self.messages if message[2] == member]


class Computer:
    """A display and buses of their own, and the program on them, in a folder with the name of the test."""

    def __init__(self, build, name):
        self.build = build
        self.folder = build / "accessibility" / name
        shutil.rmtree(self.folder, ignore_errors=True)
        self.folder.mkdir(parents=True)
        runtime = self.folder / "runtime"
        runtime.mkdir(mode=0o700)
        self.processes = []
        self.environment = {
            "HOME": str(self.folder),
            "LC_ALL": "C.UTF-8",
            "PATH": os.environ["PATH"],
            "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1",
            "QT_QPA_PLATFORM": "xcb",
            "XDG_RUNTIME_DIR": str(runtime),
        }
        if "ASAN_OPTIONS" in os.environ:
            self.environment["ASAN_OPTIONS"] = os.environ["ASAN_OPTIONS"]

    def start(self, *command):
        log = open(self.folder / f"{Path(command[0]).name}.log", "w")
        process = subprocess.Popen(
            command, cwd=self.folder, env=self.environment, stdout=subprocess.PIPE, stderr=log, text=True
        )
        self.processes.append(process)
        return process

    def start_display_and_buses(self):
        display = self.start("Xvfb", "-displayfd", "1", "-screen", "0", "1280x800x24", "-nolisten", "tcp")
        self.environment["DISPLAY"] = ":" + display.stdout.readline().strip()
        session = self.start("dbus-daemon", "--session", "--nofork", "--print-address=1")
        address = session.stdout.readline().strip()
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = address
        self.start(str(LAUNCHER), "--launch-immediately")
        self.session = connected(address)
        return wait_until("the accessibility bus", self.accessibility_address)

    def accessibility_address(self):
        try:
            return call(self.session, "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress")[0]
        except GLib.Error:
            return None

    def press(self, *arguments):
        subprocess.run(["xdotool", *arguments], env=self.environment, check=True)

    def start_program(self, settings):
        """Starts it with these settings, and gives the keyboard to its login window."""
        (self.folder / "tolk.ini").write_bytes(settings.replace("\n", "\r\n").encode())
        (self.folder / "tolk.ini").chmod(0o600)
        self.program = self.start(str(self.build / "brindlewake"))
        self.focus("Listening School E-Mail")

    def windows_titled(self, title):
        """The visible windows with exactly that title, the newest one last."""
        if self.program.poll() is not None:
            raise SystemExit(f"the program has ended with {self.program.returncode}")
        search = ["xdotool", "search", "--onlyvisible", "--name", f"^{title}$"]
        found = subprocess.run(search, env=self.environment, capture_output=True, text=True).stdout.split()
        return sorted(found, key=int)

    def wait_for_windows(self, title, count):
        wait_until(f'{count} windows "{title}"', lambda: len(self.windows_titled(title)) == count)

    def focus(self, title):
        """Waits for a window with exactly that title, and gives it the keyboard, as nobody manages windows here."""
        self.press("windowfocus", "--sync", wait_until(f'the window "{title}"', lambda: self.windows_titled(title))[-1])

    def end(self):
        for process in reversed(self.processes):
            process.terminate()
            process.wait()


def listen_for(bus):
    """Programs tell only what somebody wants to hear."""

    def registered(event):
        try:
            call(bus, *REGISTRY, "RegisterEvent", GLib.Variant("(s)", (event,)))
        except GLib.Error:
            return False  # It is only just starting.
        return True

    for event in ("object:text-changed", "object:text-caret-moved", "object:state-changed", "focus:", "object:"):
        wait_until("the registry of the bus", lambda event=event: registered(event))


def can_listen():
    """False, after saying so, where something is missing that all of this needs."""
    if LAUNCHER.exists() and all(map(shutil.which, ("Xvfb", "xdotool", "dbus-daemon"))):
        return True
    print("an accessibility bus, a display or xdotool is not installed", file=sys.stderr)
    return False
