#!/usr/bin/python3 -B
"""Takes pictures of kavio-wallet-gtk's pages for people to look at; see scripts/screenshots.

Usage: run-on-display --accessible --screen SCREEN take_pictures.py WALLET SANDBOX FOLDER WIDTH HEIGHT
"""
import signal
import subprocess
import sys
import tempfile

from wallet_window import EDGE, Wallet, from_right_to_left, until
from running_sandbox import RunningSandbox

PROGRAM, SANDBOX, FOLDER, WIDTH, HEIGHT = sys.argv[1:]
SIZE = int(WIDTH), int(HEIGHT)
STYLES = {"light": {"ADW_DEBUG_COLOR_SCHEME": "prefer-light"}, "dark": {"ADW_DEBUG_COLOR_SCHEME": "prefer-dark"},
          "large": {"settings": "gtk-font-name=Sans 20"}}


def take(wallet, name):
    """As soon as nothing moves any more, which takes a moment after everything is there."""
    last = [None]

    def is_still():
        before, last[0] = last[0], subprocess.check_output(["import", "-window", "root", "rgb:-"])
        return before == last[0]
    wallet.resize(*SIZE)  # after a page that needed more
    wallet.point(0, SIZE[1] - 1)
    until("stillness", is_still)
    subprocess.run(["import", "-window", "root", "-crop", f"{WIDTH}x{HEIGHT}+{EDGE}+{EDGE}", "+repage",
                    f"{FOLDER}/wallet-{name}-{WIDTH}.png"], check=True)


def buy(wallet, sandbox, style):
    """Until the order is on its way, where it stays."""
    wallet.open("Espresso corner, Alexanderplatz")
    wallet.open("Cappuccino")
    take(wallet, f"machine-{style}")
    sandbox.control("PUT", "/clock", {"isStopped": True})
    wallet.press("Pay .+")
    wallet.payment_says("was placed")
    sandbox.control("POST", "/clock", {"stepMs": 2000})
    wallet.payment_says("was approved")
    take(wallet, f"order-{style}")


for style, options in STYLES.items():
    with RunningSandbox(SANDBOX, "--seed", "1") as sandbox, Wallet(PROGRAM, sandbox, size=SIZE, **options) as wallet:
        take(wallet, f"log-in-{style}")
        wallet.log_in()
        wallet.type("Code, QR text or position", "52.5219, 13.4132", enter=True)
        wallet.find("list item", "Cooler, platform 2")
        take(wallet, f"machines-{style}")
        buy(wallet, sandbox, style)
        sandbox.control("PUT", "/clock", {"isStopped": False})
        wallet.press("Dismiss")
        wallet.press("Back")
        wallet.tab("Wallet")
        wallet.find("list item", "Visa.*")
        take(wallet, f"methods-{style}")
        wallet.press("Add a card")
        wallet.type_all({"Card number": "4111111111111111", "Expiry month": "12", "Expiry year": "2039"})
        take(wallet, f"card-{style}")
        wallet.press("Back")
        wallet.tab("History")
        wallet.find("list item")
        take(wallet, f"history-{style}")
        sandbox.control("POST", "/faults", {"path": "/machines/*/orders", "drop": True, "handled": True})
        wallet.tab("Machines")
        wallet.buy_at("42100107")
        wallet.payment_says("not certain")
        wallet.press("Pay .+")
        wallet.find("button", "Pay anyway")
        take(wallet, f"doubt-{style}")

with tempfile.TemporaryDirectory() as folder, RunningSandbox(SANDBOX, "--seed", "1") as sandbox, \
        Wallet(sandbox=sandbox, size=SIZE, **from_right_to_left(PROGRAM, folder)) as wallet:
    wallet.log_in()
    buy(wallet, sandbox, "right-to-left")
    wallet.end(signal.SIGTERM)
