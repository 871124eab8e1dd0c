"""kavio-wallet-gtk as a person uses it: what assistive technology finds in its windows, a pointer, keys, a clipboard.

Needs tests/gtk/run-on-display --accessible.
"""
import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time
from pathlib import Path

import gi

gi.require_version("Gdk", "4.0")
gi.require_version("Gtk", "4.0")
from gi.repository import Gdk, Gio, GLib, Gtk  # noqa: E402

sys.path.insert(0, str(Path(__file__).parents[1] / "sandbox"))

LIMIT = float(os.environ.get("KAVIO_WAIT_SECONDS", "120"))
EDGE = 5   # pixels around a window that no window manager looks after
BARS = 60  # pixels at the top and at the bottom of a window that may be under a bar
ROOT = "org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root"
CHILDREN = "org.a11y.atspi.Accessible", "GetChildren", None
STATES = {4: "checked", 12: "focused", 23: "selected", 24: "sensitive"}
PLACES = [(x, y) for x in (0.02, 0.5, 0.98) for y in (0.02, 0.5, 0.98)]  # of a widget, where a part of it may be seen


def until(what, condition):
    """The first true value of the condition, which is asked after every event; an alarm stands in for those that GTK does not send."""
    alarm = GLib.timeout_add(200, lambda: True)
    end = time.monotonic() + LIMIT
    while not (value := condition()) and time.monotonic() < end:
        GLib.MainContext.default().iteration(True)
    GLib.source_remove(alarm)
    assert value, f"in vain: {what}"
    return value


class Bus:
    """The bus of assistive technology. All the questions of a list are asked at once: one by one takes far longer."""

    def __init__(self):
        session, flags = Gio.bus_get_sync(Gio.BusType.SESSION), Gio.DBusConnectionFlags
        address = session.call_sync("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", None, None, 0, -1)[0]
        self.connection = Gio.DBusConnection.new_for_address_sync(
            address, flags.AUTHENTICATION_CLIENT | flags.MESSAGE_BUS_CONNECTION, None, None)
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

        for index, (place, *method, arguments) in enumerate(questions):
            self.connection.call(*place, *method, arguments, None, 0, int(LIMIT * 1000), None, on_answer, index)
        until("answers", lambda: missing == 0)
        return [answer and (answer[0] if len(answer) == 1 else answer) for answer in answers]

    def ask_all(self, nodes, interface, method, arguments=None):
        return self.ask([(node.place, "org.a11y.atspi." + interface, method, arguments) for node in nodes])


class Node:
    """A widget, as it was when it was looked at."""

    def __init__(self, bus, place):
        self.bus, self.place, self.children = bus, place, []

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
        name = GLib.Variant("(ss)", ("org.a11y.atspi.Accessible", "Name"))
        names = bus.ask([(node.place, "org.freedesktop.DBus.Properties", "Get", name) for node in every])
        roles, states = (bus.ask_all(every, "Accessible", method) for method in ("GetRoleName", "GetState"))
        boxes = bus.ask_all(every, "Component", "GetExtents", GLib.Variant("(u)", (1,)))
        for node, name, role, state, box in zip(every, names, roles, states, boxes):
            node.name, node.role, node.box = name or "", role or "", box or (0, 0, 0, 0)
            node.states = {STATES[bit] for bit in STATES if state and state[0] >> bit & 1}
        root.prune(cls.under_a_pointer(bus, every) | {node.place for node, box in zip(every, boxes) if not box})
        return root

    @staticmethod
    def under_a_pointer(bus, nodes):
        """GTK does not tell which pages of a stack are hidden, but under a pointer there is nothing of them."""
        seen = set()
        for right, down in PLACES:
            asked = [node for node in nodes if node.place not in seen and min(node.box[2:]) > 0]
            points = [(int(x + width * right), int(y + height * down), 1) for x, y, width, height in (node.box for node in asked)]
            found = bus.ask([(node.place, "org.a11y.atspi.Component", "GetAccessibleAtPoint", GLib.Variant("(iiu)", point))
                             for node, point in zip(asked, points)])
            seen |= {node.place for node, under in zip(asked, found) if under and not under[1].endswith("/null")}
        return seen

    def prune(self, seen):
        """What cannot be used is not under a pointer, nor are the innards of an entry."""
        self.children = [child for child in self.children if child.place in seen or "sensitive" not in child.states
                         or not (child.children or child.role == "label")]
        for child in self.children:
            if "sensitive" in child.states:
                child.prune(seen)

    def nodes(self):
        return [self] + [node for child in self.children for node in child.nodes()]

    def texts(self):
        return [node.name for node in self.nodes() if node.role in ("label", "status") and node.name]

    def find_all(self, roles, name=""):
        """Those of these roles whose names, or one of whose labels, match."""
        return [node for node in self.nodes() if node.role in roles.split("|") and node.is_called(name)]

    def find(self, roles, name=""):
        return next(iter(self.find_all(roles, name)), None)

    def is_called(self, name):
        return not name or any(re.fullmatch(name, each, re.DOTALL) for each in (self.name, *self.texts()))

    def has_focus(self):
        return any("focused" in node.states for node in self.nodes())

    def call(self, interface, method, kinds, *arguments):
        return self.bus.ask_all([self], interface, method, GLib.Variant(kinds, arguments))


class Wallet:
    """The running program. What is looked for is waited for."""

    def __init__(self, program, sandbox, store=None, settings="", size=(1000, 780), **environment):
        self.bus, self.folder = Bus(), tempfile.TemporaryDirectory()
        configuration = Path(self.folder.name, "gtk-4.0")
        configuration.mkdir()
        (configuration / "settings.ini").write_text(f"[Settings]\ngtk-enable-animations=0\ngtk-cursor-blink=0\n{settings}\n")
        self.process = subprocess.Popen(
            [program, "--connect-to", f"127.0.0.1:{sandbox.port}", "--ca-file", sandbox.authority,
             "--store-dir", store or self.folder.name + "/store"],
            env={**os.environ, "XDG_CONFIG_HOME": self.folder.name, **environment})
        try:
            until("a window", self.window)
            self.resize(*size)
        except BaseException:
            self.end(signal.SIGKILL)
            raise

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def close(self):
        try:
            if self.process.poll() is None:
                self.press("Close")
                assert self.process.wait(LIMIT) == 0
        finally:
            self.end(signal.SIGKILL)
            self.folder.cleanup()

    def end(self, sign):
        self.process.send_signal(sign)
        self.process.wait()

    def window(self, number=0):
        """What there is to see in it now, if it is there. The oldest is the first."""
        assert self.process.poll() is None, f"the program has ended with {self.process.returncode}"
        programs = self.bus.ask([(ROOT, *CHILDREN)])[0] or ()
        owners = self.bus.ask([(("org.freedesktop.DBus", "/"), "org.freedesktop.DBus", "GetConnectionUnixProcessID",
                                GLib.Variant("(s)", (name,))) for name, _ in programs])
        own = [(place, *CHILDREN) for place, owner in zip(programs, owners) if owner == self.process.pid]
        windows = [window for windows in self.bus.ask(own) for window in windows or ()]
        return Node.tree(self.bus, windows[number]) if len(windows) > number else None

    def find(self, roles, name=""):
        return until(f"a {roles} {name!r}", lambda: self.window().find(roles, name))

    def says(self, pattern, roles="window", is_said=True):
        """Waits for such a text in the window or a part of it, or until there is none any more."""
        def is_so():
            part = self.window().find(roles)
            return is_said == bool(part and re.search(pattern, "\n".join(part.texts())))
        until(f"{'' if is_said else 'no '}{pattern!r} in the {roles}", is_so)

    def payment_says(self, pattern):
        def is_so():
            payments = self.window().find("list", "Payments")
            return payments and re.search(pattern, " ".join(payments.texts()))
        until(f"{pattern!r} about a payment", is_so)

    def press(self, name, roles="button", within="window", part=""):
        """Once more if the button has gone in the meantime, with a list that is filled anew."""
        def is_pressed():
            buttons = [button for whole in self.window().find_all(within, part) for button in whole.find_all(roles, name)
                       if "sensitive" in button.states]
            return buttons and buttons[0].call("Action", "DoAction", "(i)", 0)[0]
        until(f"{name!r} to press", is_pressed)

    def tab(self, name):
        self.press(name, roles="tab")
        until(f"the tab {name}", lambda: not (tab := self.window().find("tab", name)) or "selected" in tab.states)

    def type(self, name, text, enter=False):
        entries = "text box|search box"
        until(f"an entry {name!r}", lambda: (entry := self.window().find(entries, name))
              and entry.call("EditableText", "SetTextContents", "(s)", text)[0])
        if enter:
            self.click(lambda window: window.find(entries, name))
            self.key("Return")

    def type_all(self, texts):
        for name, text in texts.items():
            self.type(name, text)

    def open(self, name):
        """Clicks on a row, which chooses its radio button or turns its switch if it has one."""
        self.click(lambda window: window.find("list item", name))

    def choose(self, combo, item):
        self.click(lambda window: window.find("combo box", combo))

        def offered():
            lists = self.window().find("combo box", combo).find_all("list")
            return lists and lists[-1].find(r"list item", item) and lists[-1].children
        rows = until(f"{item!r} to choose", offered)
        steps = [row.is_called(item) for row in rows].index(True) - ["selected" in row.states for row in rows].index(True)
        self.key(*["Down" if steps > 0 else "Up"] * abs(steps), "Return")

    def click(self, find):
        """For what has no action, because GTK 4.8 gives nothing the focus on demand. Turns the wheel until it is in sight."""
        def place():
            node = find(window := self.window())
            if not node or "sensitive" not in node.states:
                return None
            x, y = (node.box[i] + node.box[i + 2] // 2 for i in (0, 1))
            if BARS < y < window.box[3] - BARS:
                return x, y
            self.point(window.box[2] // 2, window.box[3] // 2, "click", "4" if y < BARS else "5")
            return None
        self.point(*until("something to click", place), "click", "1")

    def point(self, x, y, *more):
        xdotool("mousemove", str(x + EDGE), str(y + EDGE), *more)

    def key(self, *keys):
        xdotool("key", *keys)

    def resize(self, width, height):
        window = subprocess.check_output(["xdotool", "search", "--name", "^Kavio Wallet$"], text=True).split()[-1]
        xdotool("windowsize", window, str(width + 2 * EDGE), str(height + 2 * EDGE))
        until(f"{width} by {height}", lambda: self.window().box == (0, 0, width, height))

    def notice(self):
        """What the notice says, which goes when it has been read."""
        text = " ".join(self.find("alert", ".+").texts())
        self.press("Close", within="alert")
        until("no notice", lambda: not self.window().find("alert"))
        return text

    def log_in(self, number="151234567", code="123456"):
        self.type_all({"Country code": "49", "Phone number": number, "Country, two letters": "DE"})
        self.press("Send code")
        self.type("Code", code)
        self.press("Log in")

    def buy_at(self, machine):
        """Its first product, from the wallet."""
        self.type("Code, QR text or position", machine, enter=True)
        self.says("Machines found")
        self.open("")
        self.find("checkbox")
        self.open("")
        self.press("Pay .+")

    def tab_to(self, roles, name):
        """With Tab from widget to widget, and with Down from row to row of a list, until the focus is there."""
        for _ in range(40):
            self.key("Tab")
            before = None
            while not (window := self.window()).find(roles, name) or not window.find(roles, name).has_focus():
                row = next((row for row in window.find_all("list item") if row.has_focus()), None)
                if not row or row.place == before:
                    break
                before = row.place
                self.key("Down")
            else:
                return
        raise AssertionError(f"the keyboard does not lead to {name!r}")

    def answer_issuer(self, code):
        """Types into the issuer's page, which has the focus as soon as it is there, and presses Enter."""
        until("the issuer's page", lambda: (scene := self.window(1)) and (page := scene.find("document")) and page.has_focus())
        self.key(*code, "Return")

    def choose_file(self, file):
        """In the dialog, a slash begins to ask for a path."""
        until("a dialog", lambda: (dialog := self.window(1)) and dialog.find("button", "Open"))
        xdotool("type", str(file))
        self.key("Return")

    def drop_file(self, file):
        """Drags it from a window beside the wallet's, as from a file manager, and lets go as soon as the wallet would take it."""
        drags, source = [], Gtk.DragSource(actions=Gdk.DragAction.COPY)
        source.set_content(content("text/uri-list", (Path(file).as_uri() + "\r\n").encode()))
        source.connect("drag-begin", lambda _, drag: drags.append(drag))
        files = Gtk.Window(title="Files", default_width=150, default_height=150)
        files.add_controller(source)
        files.present()
        until("the files", lambda: files.get_surface().get_mapped())
        _, _, width, height = self.window().box
        xdotool("search", "--name", "^Files$", "windowmove", "--sync", str(width + 2 * EDGE), "0")
        self.point(width + 80, 80, "mousedown", "1", "mousemove_relative", "20", "20")
        until("a drag", lambda: drags)
        self.point(width // 2, height // 2)
        hand = GLib.timeout_add(100, lambda: xdotool("mousemove_relative", "1", "0"))  # a window is asked where a pointer moves
        until("a wallet that takes the file", lambda: drags[0].get_selected_action() == Gdk.DragAction.COPY)
        GLib.source_remove(hand)
        xdotool("mouseup", "1")
        files.destroy()


def xdotool(*words):
    subprocess.run(["xdotool", *words], check=True)
    return True


def content(kind, data):
    return Gdk.ContentProvider.new_for_bytes(kind, GLib.Bytes.new(data))


def copy_picture(file):
    """Puts a picture on the clipboard, where it stays as long as this process waits for something."""
    Gdk.Display.get_default().get_clipboard().set_content(content("image/png", Path(file).read_bytes()))


def from_right_to_left(program, folder):
    """How to start a copy of it, in this folder, that is laid out as for Arabic. End it with a signal: GTK's own "Close" is Arabic, too."""
    catalog = Path(folder, "share/locale/ar/LC_MESSAGES/kavio-wallet.mo")  # GTK goes by the languages that a program has
    for place in catalog.parent, Path(folder, "bin"):
        place.mkdir(parents=True)
    subprocess.run(["msgfmt", "-o", catalog, "-"], check=True, text=True,
                   input='msgid ""\nmsgstr "Content-Type: text/plain; charset=UTF-8\\n"\n')
    return {"program": shutil.copy(program, Path(folder, "bin")), "LANGUAGE": "ar", "LC_ALL": "C.UTF-8"}
