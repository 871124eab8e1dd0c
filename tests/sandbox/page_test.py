#!/usr/bin/env python3
"""Opens the sandbox's page in a browser and uses it, while a client talks to the sandbox.

Usage: page_test.py PROGRAM [FOLDER-FOR-PICTURES]
Ends with status 77 if there is no browser.
"""
import base64
import json
import os
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

from running_sandbox import RunningSandbox

NO_BROWSER = 77


class Browser:
    """Chromium, driven through a pipe by its DevTools protocol: messages of JSON, each ended by a zero byte."""

    def __init__(self, program):
        self.folder = tempfile.TemporaryDirectory(ignore_cleanup_errors=True)  # its own processes may still write
        theirs_in, self.out = os.pipe()
        self.inward, theirs_out = os.pipe()
        self.process = subprocess.Popen(
            ["sh", "-c", f'exec "$@" 3<&{theirs_in} 4>&{theirs_out}', "sh", program, "--headless=new", "--no-sandbox",
             "--remote-debugging-pipe", "--ignore-certificate-errors", "--disable-gpu", "--disable-dev-shm-usage",
             "--no-first-run", "--disable-extensions", "--disable-background-networking", "--disable-component-update",
             f"--user-data-dir={self.folder.name}", "about:blank"],
            pass_fds=(theirs_in, theirs_out), stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(theirs_in)
        os.close(theirs_out)
        self.last = 0
        self.received = b""
        self.pages = {}

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.terminate()
        self.process.wait()
        self.folder.cleanup()

    def hear(self):
        while b"\0" not in self.received:
            piece = os.read(self.inward, 1 << 16)
            assert piece, "the browser has ended"
            self.received += piece
        text, self.received = self.received.split(b"\0", 1)
        message = json.loads(text)
        if "method" in message and (page := self.pages.get(message.get("sessionId"))):
            page.hear(message["method"], message["params"])
        return message

    def call(self, method, session=None, **parameters):
        self.last += 1
        asked = {"id": self.last, "method": method, "params": parameters}
        if session:
            asked["sessionId"] = session
        os.write(self.out, json.dumps(asked).encode() + b"\0")
        while (message := self.hear()).get("id") != self.last:
            pass
        assert "error" not in message, (method, message)
        return message["result"]

    def page(self):
        target = self.call("Target.createTarget", url="about:blank")["targetId"]
        return Page(self, self.call("Target.attachToTarget", targetId=target, flatten=True)["sessionId"])


class Page:
    def __init__(self, browser, session):
        self.browser, self.session = browser, session
        self.complaints = []  # what the browser's console shows as wrong
        self.is_loaded = False
        browser.pages[session] = self
        for domain in "Page", "Runtime", "Log":
            self.call(domain + ".enable")

    def call(self, method, **parameters):
        return self.browser.call(method, self.session, **parameters)

    def hear(self, event, told):
        if event == "Runtime.exceptionThrown":
            self.complaints.append(told["exceptionDetails"])
        if event == "Log.entryAdded" and told["entry"]["level"] in ("warning", "error"):
            self.complaints.append(told["entry"]["text"])
        if event == "Runtime.consoleAPICalled" and told["type"] in ("warning", "error"):
            self.complaints.append(told["args"])
        if event == "Page.loadEventFired":
            self.is_loaded = True

    def eval(self, script):
        done = self.call("Runtime.evaluate", expression=script, returnByValue=True, awaitPromise=True)
        assert "exceptionDetails" not in done, done
        return done["result"].get("value")

    def go_to(self, url):
        self.call("Page.navigate", url=url)
        while not self.is_loaded:
            self.browser.hear()

    def until(self, condition):
        """Waits in the page, which looks before each picture that it draws."""
        assert self.eval(f"""new Promise(tell => {{
            const end = performance.now() + 20_000;
            const look = () => {condition} ? tell(true) : performance.now() > end ? tell(false) : requestAnimationFrame(look);
            look();
        }})"""), "in vain: " + condition

    def shows(self, section, text):
        self.until(f"document.getElementById({json.dumps(section)}).innerText.includes({json.dumps(text)})")

    def shows_order(self, order, status):
        self.until(f"document.querySelector('[data-order=\"{order}\"] .badge')?.innerText === {json.dumps(status)}")

    def click(self, selector, text=""):
        """A real click in the middle of the first element that has this text."""
        place = self.eval(f"""(() => {{
            const found = [...document.querySelectorAll({json.dumps(selector)})].find(e => e.innerText.includes({json.dumps(text)}));
            found.scrollIntoView({{block: "center", behavior: "instant"}});
            const box = found.getBoundingClientRect();
            return {{x: box.x + box.width / 2, y: box.y + box.height / 2}};
        }})()""")
        for kind in "mousePressed", "mouseReleased":
            self.call("Input.dispatchMouseEvent", type=kind, button="left", clickCount=1, **place)

    def press(self, key, code, text=""):
        for kind in "keyDown", "keyUp":
            self.call("Input.dispatchKeyEvent", type=kind, key=key, code=key, windowsVirtualKeyCode=code,
                      **({"text": text} if text and kind == "keyDown" else {}))

    def resize(self, width, height):
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=1,
                  mobile=width < 500)

    def picture(self, file, scheme, width, height):
        self.resize(width, height)
        self.call("Emulation.setEmulatedMedia", features=[{"name": "prefers-color-scheme", "value": scheme},
                                                         {"name": "prefers-reduced-motion", "value": "reduce"}])
        self.eval("scrollTo({top: 0, behavior: 'instant'})")
        file.write_bytes(base64.b64decode(self.call("Page.captureScreenshot")["data"]))


def use(page, sandbox):
    """Everything that a tester does with the page, in the order in which it would be done."""
    page.go_to(sandbox.origin + "/")
    page.shows("accounts", "Nobody has logged in yet")
    page.shows("machines", "Espresso corner, Alexanderplatz")
    page.shows("cards", "a challenge that declines, whatever code is entered")

    sandbox.log_in()
    page.shows("accounts", "+49 151234567")
    page.shows("accounts", "50.00 EUR")

    # An order moves while nobody asks for it.
    page.click("#stop")
    page.shows("clock", "stopped")
    order = sandbox.buy(150)["id"]
    page.shows_order(order, "created")
    page.click("[data-step]", "Step 1 s")
    page.shows_order(order, "started")
    page.click("[data-step]", "10 s")
    page.shows_order(order, "completed")
    page.shows("accounts", "48.50 EUR")

    # What costs more than there is says so.
    refused = sandbox.buy(999_999)["id"]
    page.shows_order(refused, "created")
    page.click("[data-step]", "10 s")
    page.shows_order(refused, "limitExceeded")

    # The keyboard will do, too.
    page.eval("document.getElementById('stop').focus()")
    page.press("Enter", 13, "\r")
    page.shows("clock", "going on")

    # A fault is set with a click, and hits.
    page.click("#presets button", "500 to the next request")
    page.shows("fault-list", "0 hits of 1")
    assert sandbox.api("GET", "/account?")[0] == 500
    page.shows("fault-list", "1 hit of 1")
    page.until("document.querySelector('#request-list details')?.innerText.includes('fault 1')")

    # One that nothing can ever hit is pointed out.
    page.eval("document.querySelector('#faults details').open = true")
    page.click("#fault-form [name=path]")
    page.call("Input.insertText", text="/v1/time")
    page.click("#fault-form button")
    page.shows("fault-list", "Never hit: no request has this path: leave out /v1.")

    # Secrets are there for those who ask.
    page.eval("document.querySelectorAll('#request-list details').forEach(each => each.open = true)")
    html = "document.documentElement.innerHTML"
    assert not page.eval(f"{html}.includes({json.dumps(sandbox.token)})")
    page.click("#secrets")
    page.until(f"{html}.includes({json.dumps(sandbox.token)})")
    page.click("#secrets")
    page.until(f"!{html}.includes({json.dumps(sandbox.token)})")

    # Whatever comes from outside is text.
    sandbox.send("POST", "/v1/<img/src=x/onerror=alert(1)>", {"<script>": "</pre><img src=x onerror=alert(2)>"})
    page.shows("request-list", "/v1/<img/src=x/onerror=alert(1)>")
    assert page.eval("document.images.length + document.scripts.length") == 1

    page.resize(360, 800)
    assert page.eval("document.documentElement.scrollWidth") == 360, "the page is wider than a phone"
    page.resize(1280, 900)


def take_pictures(page, sandbox, folder):
    sandbox.log_in()
    sandbox.control("POST", "/faults", {"path": "/account", "status": 503, "body": "{}", "times": 3})
    sandbox.api("GET", "/account?")
    sandbox.buy(9900)
    sandbox.control("POST", "/clock", {"stepMs": 10_000})
    page.shows_order(sandbox.buy(220)["id"], "created")
    sandbox.api("GET", "/machines/2001/products?")
    sandbox.control("PUT", "/clock", {"isStopped": True})
    page.shows("clock", "stopped")
    page.eval("document.querySelector('#faults details').open = false")
    for scheme in "light", "dark":
        for width, height in (1280, 1240), (360, 800):
            page.picture(folder / f"sandbox-{scheme}-{width}.png", scheme, width, height)


def main(program, folder=None):
    chromium = shutil.which("chromium")
    if not chromium:
        print("SKIPPED: chromium is not installed; scripts/install-packages does it")
        return NO_BROWSER
    with RunningSandbox(program, "--seed", "1") as sandbox, Browser(chromium) as browser:
        page = browser.page()
        page.resize(1280, 900)
        use(page, sandbox)
        page.click("#reset")
        page.shows("accounts", "Nobody has logged in yet")
        page.shows("orders", "No orders yet")
        page.shows("faults", "Nothing goes wrong by itself")
        page.shows("requests", "No requests yet")
        if folder:
            take_pictures(page, sandbox, Path(folder))
        assert page.complaints == [], page.complaints
    return 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
