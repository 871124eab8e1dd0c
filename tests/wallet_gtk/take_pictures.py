#!/usr/bin/python3 -B
"""Takes pictures of kavio-wallet-gtk's pages for people to look at; see scripts/screenshots.

Usage: run-on-display --accessible --screen SCREEN take_pictures.py WALLET SANDBOX FOLDER WIDTH HEIGHT
"""
import subprocess
import sys

from wallet_window import EDGE, Wallet
from running_sandbox import RunningSandbox

PROGRAM, SANDBOX, FOLDER, WIDTH, HEIGHT = sys.argv[1:]


def take_all(style, scheme):
    with RunningSandbox(SANDBOX, "--seed", "1") as sandbox, \
            Wallet(PROGRAM, sandbox, size=(int(WIDTH), int(HEIGHT)), ADW_DEBUG_COLOR_SCHEME=scheme) as wallet:
        def picture(page):
            wallet.pointer(0, int(HEIGHT) - 1)  # over nothing
            wallet.until_still()
            subprocess.run(["import", "-window", "root", "-crop", f"{WIDTH}x{HEIGHT}+{EDGE}+{EDGE}", f"{FOLDER}/wallet-{page}-{style}-{WIDTH}.png"], check=True)

        picture("log-in")
        wallet.log_in()
        wallet.type("Code, QR text or position", "52.5219, 13.4132", enter=True)
        wallet.find("list item", "Cooler, platform 2")
        picture("machines")
        wallet.open("Espresso corner, Alexanderplatz")
        wallet.open("Cappuccino")
        picture("machine")
        sandbox.control("PUT", "/clock", {"isStopped": True})
        wallet.press("Pay .*")
        wallet.payment_says("placed")
        sandbox.control("POST", "/clock", {"stepMs": 2000})
        wallet.payment_says("✓.*✓")
        picture("order")
        sandbox.control("PUT", "/clock", {"isStopped": False})
        wallet.press("Dismiss")
        wallet.press("Back")
        wallet.tab("Wallet")
        wallet.find("list item", "Visa.*")
        picture("wallet")
        wallet.press("Add a card")
        wallet.type_all(Card_number="4111111111111111", Expiry_month="12", Expiry_year="2039")
        picture("card")
        wallet.press("Back")
        wallet.tab("History")
        wallet.find("list item")
        picture("history")
        sandbox.control("POST", "/faults", {"path": "/machines/*/orders", "drop": True, "handled": True})
        wallet.tab("Machines")
        wallet.buy_at("42100107")
        wallet.payment_says("not certain")
        wallet.press("Pay .*")
        wallet.find("button", "Pay all the same")
        picture("doubt")


take_all("light", "prefer-light")
take_all("dark", "prefer-dark")
