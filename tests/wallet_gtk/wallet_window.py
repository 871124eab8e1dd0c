"""kavio-wallet-gtk as a person uses it: what assistive technology finds in its windows, a keyboard, a clipboard.

Needs tests/gtk/run-on-display --accessible.
"""
import os
import re
import signal
import subprocess
import sys
import tempfile
import time
from pathlib import Path

import gi

gi.require_version("Gdk", "4.0")
from gi.repository import Gdk, Gio, GLib  # noqa: E402

sys.path.insert(0, str(Path(__file__).parents[1] / "sandbox"))

LIMIT = float(os.environ.get("KAVIO_WAIT_SECONDS", "60"))
STATES = {1: "active", 4: "checked", 11: "focusable", 12: "focused", 23: "selected", 24: "sensitive"}
PLACES = [(x, y) for x in (0.02, 0.5, 0.98) for y in (0.02, 0.5, 0.98)]  # of a widget, where a part of it may be seen
EDGE = 5  # pixels around a window that no window manager looks after
BARS = 60  # pixels at the top and at the bottom that may be under a bar
ROOT = ("org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root")


def wait_for(context, condition, seconds):
    """Answers and events end the waiting; an alarm now and then stands in for those that GTK does not send."""
    alarm = GLib.timeout_add(200, lambda: True)
    end = time.monotonic() + seconds
    while not (value := condition()) and time.monotonic() < end:
        context.iteration(True)
    GLib.source_remove(alarm)
    return value


def until(what, condition, seconds=LIMIT):
    """The first true value of the condition, which is asked after every event."""
    value = wait_for(GLib.MainContext.default(), condition, seconds)
    assert value, f"in vain: {what}"
    return value


class Bus:
    """The bus of assistive technology. All the questions of a list are asked at once: one by one takes far longer."""

    def __init__(self):
        session = Gio.bus_get_sync(Gio.BusType.SESSION)
        address = session.call_sync("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", None, None, 0, -1)[0]
        flags = Gio.DBusConnectionFlags
        self.connection = Gio.DBusConnection.new_for_address_sync(address, flags.AUTHENTICATION_CLIENT | flags.MESSAGE_BUS_CONNECTION, None, None)
        self.connection.signal_subscribe(None, None, None, None, None, 0, lambda *_: None)  # wakes who waits

    def ask(self, questions):
        """The answers, None where there is none, to questions of (name, path), interface, method, arguments."""
        answers, missing = [None] * len(questions), len(questions)

        def on_answer(connection, result, index):
            nonlocal missing
            missing -= 1
            try:
                answers[index] = connection.call_finish(result).unpack()
            except GLib.GError:
                pass  # has gone, or has no such interface

        for index, ((name, path), interface, method, arguments) in enumerate(questions):
            self.connection.call(name, path, interface, method, arguments, None, 0, int(LIMIT * 1000), None, on_answer, index)
        until("answers", lambda: missing == 0)
        return [answer and (answer[0] if len(answer) == 1 else answer) for answer in answers]

    def ask_all(self, nodes, interface, method, arguments=None):
        return self.ask([(node.place, "org.a11y.atspi." + interface, method, arguments) for node in nodes])

    def get_all(self, nodes, name):
        wanted = GLib.Variant("(ss)", ("org.a11y.atspi.Accessible", name))
        return self.ask([(node.place, "org.freedesktop.DBus.Properties", "Get", wanted) for node in nodes])


class Node:
    """A widget, as it was when it was looked at."""

    def __init__(self, bus, place):
        self.bus, self.place = bus, place
        self.children = []

    def __repr__(self):
        return f"{self.role} {self.name!r} {sorted(self.states)} {self.box}"

    @classmethod
    def tree(cls, bus, place):
        """The widget at this place and all below it that is there to be seen."""
        root = cls(bus, place)
        generation = every = [root]
        while generation:
            for node, children in zip(generation, bus.ask_all(generation, "Accessible", "GetChildren")):
                node.children = [cls(bus, child) for child in dict.fromkeys(children or ())]
            generation = [child for node in generation for child in node.children]
            every = every + generation
        names, roles = bus.get_all(every, "Name"), bus.ask_all(every, "Accessible", "GetRoleName")
        states = bus.ask_all(every, "Accessible", "GetState")
        boxes = bus.ask_all(every, "Component", "GetExtents", GLib.Variant("(u)", (1,)))
        for node, name, role, state, box in zip(every, names, roles, states, boxes):
            node.name, node.role, node.box = name or "", role or "", box
            node.states = {STATES[bit] for bit in STATES if state and state[0] >> bit & 1}
        seen = cls.under_a_pointer(bus, every)
        root.prune(seen)
        return root

    @staticmethod
    def under_a_pointer(bus, nodes):
        """GTK does not tell which pages of a stack are hidden, but under a pointer there is nothing of them."""
        seen = {node.place for node in nodes if not node.box}
        for right, down in PLACES:
            asked = [node for node in nodes if node.place not in seen and min(node.box[2:]) > 0]
            found = bus.ask([(node.place, "org.a11y.atspi.Component", "GetAccessibleAtPoint", GLib.Variant(
                "(iiu)", (int(node.box[0] + node.box[2] * right), int(node.box[1] + node.box[3] * down), 1)))
                for node in asked])
            seen |= {node.place for node, under in zip(asked, found) if under and not under[1].endswith("/null")}
        return seen

    def prune(self, seen):
        """Nothing that cannot be used is under a pointer, nor are the innards of an entry."""
        self.children = [child for child in self.children if child.place in seen or "sensitive" not in child.states
                         or (not child.children and child.role != "label")]
        for child in self.children:
            if "sensitive" in child.states:
                child.prune(seen)

    def nodes(self):
        return [self] + [node for child in self.children for node in child.nodes()]

    def texts(self):
        return [node.name for node in self.nodes() if node.role == "label" and node.name]

    def said(self):
        return [node.name for node in self.nodes() if node.role in ("label", "status") and node.name]

    def find(self, roles, name=""):
        """The first one of these roles whose name or one of whose labels matches; or None."""
        return next((node for node in self.nodes() if node.role in roles.split("|") and node.is_called(name)), None)

    def is_called(self, name):
        return not name or any(re.fullmatch(name, each, re.DOTALL) for each in (self.name, *self.texts()))

    def call(self, interface, method, kinds="", *arguments):
        return self.bus.ask_all([self], interface, method, GLib.Variant(f"({kinds})", arguments))[0]

    def value(self):
        return self.call("Text", "GetText", "ii", 0, self.call("Text", "GetCharacterCount") or 1000)


class Wallet:
    """The running program. What is looked for is waited for."""

    def __init__(self, program, sandbox, store=None, settings="", size=(1000, 780), **environment):
        self.folder = tempfile.TemporaryDirectory()
        self.store = store or self.folder.name + "/store"
        configuration = Path(self.folder.name, "gtk-4.0")
        configuration.mkdir()
        (configuration / "settings.ini").write_text(f"[Settings]\ngtk-enable-animations=0\n{settings}\n")
        self.start([program, "--connect-to", f"127.0.0.1:{sandbox.port}", "--ca-file", sandbox.authority, "--store-dir",
                    self.store, "--api-key", "demo-key"], {"XDG_CONFIG_HOME": self.folder.name, **environment})
        self.resize(*size)

    def start(self, command, environment):
        self.bus = Bus()
        self.process = subprocess.Popen(command, env={**os.environ, **environment})
        until("a window", self.window)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def close(self):
        if self.process.poll() is None:
            self.end(signal.SIGTERM)
        self.folder.cleanup()

    def end(self, sign):
        self.process.send_signal(sign)
        self.process.wait()

    def windows(self):
        """The places of the program's windows, the oldest first."""
        assert self.process.poll() is None, f"the program has ended with {self.process.returncode}"
        children = "org.a11y.atspi.Accessible", "GetChildren", None
        programs = self.bus.ask([(ROOT, *children)])[0] or ()
        owners = self.bus.ask([(("org.freedesktop.DBus", "/"), "org.freedesktop.DBus", "GetConnectionUnixProcessID",
                                GLib.Variant("(s)", (name,))) for name, _ in programs])
        own = [(place, *children) for place, owner in zip(programs, owners) if owner == self.process.pid]
        return [window for windows in self.bus.ask(own) for window in windows or ()]

    def window(self, number=0):
        """What there is to see in it now, if it is there."""
        places = self.windows()
        return Node.tree(self.bus, places[number]) if len(places) > number else None

    def find(self, roles, name=""):
        return until(f"a {roles} {name!r}", lambda: self.window().find(roles, name))

    def reads(self):
        return self.window().texts()

    def says(self, pattern):
        """Waits for a text that contains this."""
        return until(f"{pattern!r}", lambda: next((text for text in self.reads() if re.search(pattern, text)), None))

    def says_no_more(self, pattern):
        until(f"no {pattern!r}", lambda: not any(re.search(pattern, text) for text in self.reads()))

    def press(self, name, roles="button", within=lambda window: window):
        def sensitive():
            button = (found := within(self.window())) and found.find(roles, name)
            return button if button and "sensitive" in button.states else None
        until(f"{name!r} to press", sensitive).call("Action", "DoAction", "i", 0)

    def tab(self, name):
        self.press(name, roles="tab")

    def type(self, name, text, enter=False):
        self.find("text box|search box|entry", name).call("EditableText", "SetTextContents", "s", text)
        if enter:
            self.click(lambda window: window.find("text box|search box|entry", name))
            self.key("Return")

    def type_all(self, **texts):
        for name, text in texts.items():
            self.type(name.replace("E_", "E-").replace("_", " "), text)

    def open(self, name):
        """Activates a row, which chooses its radio button or turns its switch if it has one."""
        self.click(lambda window: window.find("list item", name))

    def choose(self, combo, item):
        self.click(lambda window: window.find("combo box", combo))
        def rows():
            lists = [node for node in self.window().find("combo box", combo).nodes() if node.role == "list"]
            return lists[-1].children if lists and any(row.is_called(item) for row in lists[-1].children) else None
        rows = until(f"{item!r} to choose", rows)
        chosen = next(i for i, row in enumerate(rows) if "selected" in row.states)
        wanted = next(i for i, row in enumerate(rows) if row.is_called(item))
        self.key(*["Down" if wanted > chosen else "Up"] * abs(wanted - chosen), "Return")

    def click(self, find):
        """GTK 4.8 has no other way to what has no action. Turns the wheel until it is in sight."""
        def place():
            node = find(window := self.window())
            if not node or "sensitive" not in node.states:
                return None
            x, y = (node.box[i] + node.box[i + 2] // 2 for i in (0, 1))
            low, high = BARS, window.box[3] - BARS
            if low < y < high:
                return x, y
            self.pointer(window.box[2] // 2, window.box[3] // 2, "click", "4" if y < low else "5")
            return None
        self.pointer(*until("something to click", place), "click", "1")

    def pointer(self, x, y, *more):
        subprocess.run(["xdotool", "mousemove", str(x + EDGE), str(y + EDGE), *more], check=True)

    def key(self, *keys):
        subprocess.run(["xdotool", "key", *keys], check=True)

    def resize(self, width, height):
        window = subprocess.check_output(["xdotool", "search", "--name", "^Kavio Wallet$"], text=True).split()[-1]
        subprocess.run(["xdotool", "windowsize", window, str(width + 2 * EDGE), str(height + 2 * EDGE)], check=True)
        until(f"{width} by {height}", lambda: self.window().box == (0, 0, width, height))

    def until_still(self):
        """Until nothing moves any more, except a cursor that blinks."""
        last = [None]

        def is_still():
            before, last[0] = last[0], subprocess.check_output(["import", "-window", "root", "rgb:-"])
            return before == last[0]
        until("stillness", is_still)

    def notice(self):
        """The sentence of the notice, which goes when it has been read."""
        def sentence():
            notice = self.window().find("alert")
            return notice and " ".join(notice.texts())
        text = until("a notice", sentence)
        self.press("Close", within=lambda window: window.find("alert"))
        until("no notice", lambda: not self.window().find("alert"))
        return text

    def payment_says(self, pattern):
        def sentence():
            payments = self.window().find("list", "Payments")
            return payments and re.search(pattern, " ".join(payments.said()))
        until(f"{pattern!r} about a payment", sentence)

    def buy_at(self, machine):
        """The cheapest way through the pages to a purchase from the wallet."""
        self.type("Code, QR text or position", machine, enter=True)
        self.says("Machines found")
        self.open("")
        self.find("combo box", "Pay with")
        self.click(lambda window: next((node for node in window.nodes() if node.role == "list item" and node.find("checkbox|radio")), None))
        self.press("Pay .*")

    def tab_to(self, roles, name):
        """With Tab to each widget, and with Down from row to row of a list, until the focus is there."""
        def is_there():
            node = self.window().find(roles, name)
            return node and any("focused" in each.states for each in node.nodes())

        def focused():
            return next((node for node in self.window().nodes() if "focused" in node.states), None)
        for _ in range(40):
            self.key("Tab")
            before = None
            while not is_there() and (row := focused()) and row.role == "list item" and row.place != before:
                before = row.place
                self.key("Down")
            if is_there():
                return
        raise AssertionError(f"the keyboard does not lead to {name!r}")

    def answer_issuer(self, code):
        """Types into the issuer's page, which has the focus as soon as it is there, and presses Enter."""
        def focus():
            scene = self.window(1)
            page = scene and scene.find("document")
            return page and "focused" in page.states
        until("the issuer's page", focus)
        self.key(*code, "Return")

    def choose_file(self, file):
        """In the dialog, a slash begins to ask for a path."""
        until("a dialog", lambda: (dialog := self.window(1)) and dialog.find("button", "Open"))
        subprocess.run(["xdotool", "type", str(file)], check=True)
        self.key("Return")

    def log_in(self, number="151234567", code="123456"):
        self.type_all(Country_code="49", Phone_number=number, Country="DE")
        self.press("Send code")
        self.type("Code", code)
        self.press("Log in")


def copy_picture(file):
    """Puts a picture on the clipboard, where it stays as long as this process goes on asking."""
    clipboard = Gdk.Display.open(os.environ["DISPLAY"]).get_clipboard()
    clipboard.set_content(Gdk.ContentProvider.new_for_bytes("image/png", GLib.Bytes.new(Path(file).read_bytes())))

