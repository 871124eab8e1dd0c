#!/usr/bin/python3 -B
"""Uses kavio-wallet-gtk against the sandbox as people do: everything once, and every way to fail once.

Usage: run-on-display --accessible use_test.py WALLET SANDBOX [TEST]...
"""
import signal
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

from wallet_window import Wallet, copy_picture, from_right_to_left, until
from running_sandbox import RunningSandbox

PROGRAM, SANDBOX = sys.argv[1:3]
COFFEE = "Espresso corner, Alexanderplatz"
SEARCH = "Code, QR text or position"
ORDERS = "/machines/*/orders"
CARD = {"Card number": "4111111111111111", "Expiry month": "12", "Expiry year": "2039", "Security code": "123",
        "Name on the card": "Robin Sample", "E-mail address": "robin@kavio.example"}


class WalletTest(unittest.TestCase):
    """Each begins with a sandbox that nobody has used yet."""

    @classmethod
    def setUpClass(cls):
        cls.sandbox = RunningSandbox(SANDBOX)
        cls.addClassCleanup(cls.sandbox.__exit__)

    def setUp(self):
        self.sandbox.control("DELETE", "/state")

    def start(self, program=PROGRAM, **options):
        wallet = Wallet(program, self.sandbox, **options)
        self.addCleanup(wallet.close)
        return wallet

    def start_logged_in(self, number="151234567", **options):
        wallet = self.start(**options)
        wallet.log_in(number)
        wallet.find("tab", "Machines")
        return wallet

    def fault(self, path, **what):
        self.sandbox.control("POST", "/faults", {"path": path, **what})

    def account(self):
        return self.sandbox.control("GET", "/state")["accounts"][0]

    def purchases(self):
        """Every one that was ever made, as (machine, amount)."""
        made = self.sandbox.control("GET", "/state")["purchases"]
        return [(purchase["machine"], purchase["amount"]) for purchase in made]


class Flows(WalletTest):
    def test_log_in_and_out(self):
        wallet = self.start()
        wallet.type_all({"Country code": "49", "Phone number": "151234567", "Country, two letters": "Germany"})
        wallet.press("Send code")
        wallet.says("such as DE", "alert")
        wallet.log_in(code="654321")
        wallet.says("code was not accepted")
        wallet.press("Use another number")
        wallet.says("code was not accepted", is_said=False)
        wallet.log_in()
        wallet.says("Your machines")
        wallet.tab("Wallet")
        wallet.press("Log out")
        wallet.find("text box", "Phone number")
        self.assertEqual((self.account()["phone"], self.account()["sessions"]), ("+49 151234567", 0))

    def test_machines(self):
        wallet = self.start_logged_in()
        wallet.find("list item", COFFEE)
        for text, name, details in [
            ("42100178", "Cooler, platform 2", "Cold drinks · Berlin · ready"),
            ("https://qr.kavio.example/m/42100107", COFFEE, "Hot drinks · Berlin · ready"),
            ("52.5219, 13.4132", COFFEE, "Hot drinks · 130 m · ready"),
            ("", "Snack wall", "Snacks · Berlin · ready"),
        ]:
            with self.subTest(text):
                wallet.type(SEARCH, text, enter=True)
                until(f"{name}, {details}", lambda: any(row.is_called(details) for row in wallet.window().find_all("list item", name)))

    def test_pictures_of_codes(self):
        wallet = self.start_logged_in()
        picture = Path(wallet.folder.name, "code.png")
        subprocess.run(["qrencode", "-o", picture, "https://qr.kavio.example/m/42100178"], check=True)
        copy_picture(picture)
        for way, take in [("Ctrl+V", lambda: wallet.key("ctrl+v")),
                          ("Paste a picture", lambda: wallet.press("Paste a picture")),
                          ("Open a picture", lambda: (wallet.press("Open a picture"), wallet.choose_file(picture))),
                          ("drop", lambda: wallet.drop_file(picture))]:
            with self.subTest(way):
                wallet.find("search box", SEARCH)
                take()
                wallet.find("list item", "Lemonade")
                wallet.press("Back")
                wallet.type(SEARCH, "")
                wallet.says("Your machines")
        subprocess.run(["convert", "-size", "9x9", "xc:white", picture], check=True)
        copy_picture(picture)
        wallet.press("Paste a picture")
        self.assertRegex(wallet.notice(), "QR code")

    def test_purchases(self):
        wallet = self.start_logged_in()
        expected = []
        for method, product, button, cents in [("Wallet.*", "Espresso", "Pay 1.50 EUR", 150), ("Visa.*", "Cappuccino", "Pay 2.20 EUR", 220),
                                               ("Prepaid.*", "Tea", "Pay", 120)]:
            with self.subTest(method):
                wallet.open(COFFEE)
                wallet.choose("Pay with", method)
                wallet.open(product)
                sold_out = wallet.find("list item", "Hot chocolate")
                self.assertEqual((sold_out.is_called("sold out"), "sensitive" in sold_out.states), (True, False))
                self.sandbox.control("PUT", "/clock", {"isStopped": True})
                wallet.press(button)
                for sentence, more in [("was placed", 2000), ("was approved", 1000), ("is complete", 1)]:
                    wallet.payment_says(sentence)
                    self.sandbox.control("POST", "/clock", {"stepMs": more})
                self.sandbox.control("PUT", "/clock", {"isStopped": False})
                wallet.press("Dismiss")
                wallet.press("Back")
                expected.append((42100107, cents))
                self.assertEqual(self.purchases(), expected)

    def test_top_ups(self):
        wallet = self.start_logged_in()
        before = self.account()["balance"]
        for made, fault in [(1, None), (2, {"drop": True}), (3, {"body": "null"})]:
            with self.subTest(fault):
                if fault:
                    self.fault("/deposits/", handled=True, **fault)
                wallet.tab("Wallet")
                wallet.press("Top up")
                wallet.choose("Card to charge", "Mastercard.*")
                wallet.type("Amount", "20")
                wallet.press("Top up")
                if fault and "drop" in fault:
                    wallet.payment_says("not certain")
                    wallet.press("Find out")
                wallet.payment_says("The top-up was made")
                wallet.press("Dismiss")
                self.assertEqual(self.account()["balance"], before + made * 2000)

    def test_cards(self):
        wallet = self.start_logged_in()
        for number, is_checked, code in [("5555 5555 5555 4444", False, ""), ("4000000000001018", True, ""), ("4000000000001042", True, "1234")]:
            with self.subTest(number):
                before = len(self.account()["cards"])
                wallet.tab("Wallet")
                wallet.press("Add a card")
                wallet.type_all({**CARD, "Card number": number})
                if not is_checked:
                    wallet.open("Let the issuer check the card")
                wallet.press("Store the card")
                if code:
                    wallet.answer_issuer(code)
                self.assertRegex(wallet.notice(), "The card was stored")
                self.assertEqual(len(self.account()["cards"]), before + 1)
        wallet.press("Remove", within="list item", part=".*1042")
        wallet.press("Remove", within="alert")
        until("one card less", lambda: not wallet.window().find("list item", ".*1042"))
        self.assertEqual(len(self.account()["cards"]), before)

    def test_history(self):
        self.sandbox.log_in()
        for _ in range(30):
            self.sandbox.buy(150)
        wallet = self.start_logged_in()
        wallet.tab("History")

        def orders():
            return wallet.window().find_all("list item")
        until("a page of orders", lambda: len(orders()) == 30)
        wallet.press("Show older")
        until("all orders", lambda: len(orders()) == 33)
        self.assertEqual(len([text for text in wallet.window().texts() if text.startswith("20") and len(text) == 10]), 4, "days")
        oldest = orders()[-1].texts()
        wallet.type("Search", oldest[1].split(" · ")[-1])
        until("only that one", lambda: [order.texts() for order in orders()] == [oldest])


class Failures(WalletTest):
    def test_replies_odd_and_late(self):
        wallet = self.start_logged_in()
        for fault, sentence in [({"drop": True}, "connection was lost"), ({"status": 503, "body": "{}"}, "service has a problem"),
                                ({"body": "<html>"}, "not be understood")]:
            with self.subTest(sentence):
                self.fault("/prepaidCards", times=-1, **fault)
                wallet.tab("Wallet")
                wallet.says(sentence, "alert")
                self.sandbox.control("DELETE", "/faults")
                wallet.press("Try again")
                wallet.find("list item", "Visa.*")
                wallet.says(sentence, is_said=False)
                wallet.tab("Machines")
        self.fault("/machines/*/products", status=503, body="{}")
        wallet.open("Snack wall")
        wallet.find("button", "Try again")
        wallet.press("Back")  # what there was to try goes with the page
        wallet.says("service has a problem", is_said=False)
        self.fault("/machines/byValue", delayMs=3_000)
        wallet.type(SEARCH, "42100178", enter=True)
        wallet.tab("Wallet")  # the window waits for nothing
        wallet.find("button", "Add a card")
        wallet.tab("Machines")
        wallet.find("list item", "Cooler, platform 2")

    def test_the_session_has_ended(self):
        wallet = self.start_logged_in()
        self.sandbox.control("DELETE", "/tokens")
        wallet.tab("Wallet")
        wallet.says("session has ended", "alert")
        wallet.log_in()
        wallet.find("button", "Add a card")
        wallet.says("session has ended", is_said=False)

    def test_an_order_that_fails(self):
        wallet = self.start_logged_in("151234000")
        before = self.account()["balance"]
        wallet.buy_at("42100107")
        wallet.payment_says("balance is too small")
        self.assertEqual((self.purchases(), self.account()["balance"]), ([(42100107, 150)], before))

    def find_out(self, wallet):
        wallet.payment_says("not certain")
        wallet.press("Find out")
        wallet.payment_says("is complete")
        self.assertEqual(self.purchases(), [(42100107, 150)])

    def test_a_reply_without_the_order(self):
        for what, fault in [("no reply", {"drop": True}), ("no order in it", {"body": "null"})]:
            with self.subTest(what):
                self.sandbox.control("DELETE", "/state")
                wallet = self.start_logged_in()
                self.fault(ORDERS, handled=True, **fault)
                wallet.buy_at("42100107")
                self.find_out(wallet)
                wallet.close()

    def test_nobody_pays_twice_unawares(self):
        wallet = self.start_logged_in()
        self.fault(ORDERS, drop=True, handled=True)
        wallet.buy_at("42100107")
        wallet.payment_says("not certain")
        wallet.press("Pay 1.50 EUR")
        wallet.says("in doubt", "alert")
        self.assertEqual(len(self.purchases()), 1)
        self.sandbox.control("PUT", "/clock", {"isStopped": True})
        wallet.press("Pay anyway")
        wallet.payment_says("was placed")
        wallet.press("Pay 1.50 EUR")
        wallet.says("still under way", "alert")
        self.assertEqual(len(self.purchases()), 2)

    def test_killed_while_paying(self):
        with tempfile.TemporaryDirectory() as store:
            wallet = self.start_logged_in(store=store)
            self.fault(ORDERS, delayMs=600_000)
            wallet.buy_at("42100107")
            until("a purchase", self.purchases)
            wallet.end(signal.SIGKILL)
            self.sandbox.control("DELETE", "/faults")
            wallet = self.start(store=store)
            self.find_out(wallet)
            wallet.close()
            wallet = self.start(store=store)
            wallet.says("Your machines")
            self.assertIsNone(wallet.window().find("list", "Payments"))

    def test_nonsense(self):
        wallet = self.start_logged_in()
        for text in "95, 13.41", "52.52, 13.41, 7", "?!", "9" * 40:
            with self.subTest(text):
                wallet.type(SEARCH, text, enter=True)
                self.assertRegex(wallet.notice(), "neither")
        wallet.tab("Wallet")
        wallet.press("Add a card")
        for entry, text, sentence in [("Card number", "4111111111111112", "number"), ("Expiry month", "13", "month"),
                                      ("Expiry year", "1999", "year|over|expired"), ("Security code", "1", "code"),
                                      ("Name on the card", "", "name"), ("E-mail address", "robin", "e-mail")]:
            with self.subTest(entry):
                wallet.type_all({**CARD, entry: text})
                wallet.press("Store the card")
                self.assertRegex(wallet.notice(), sentence)
        wallet.press("Back")
        wallet.press("Top up")
        for text in "", "-1", "1.234", "many", "9" * 30, "0":
            with self.subTest(text):
                wallet.type("Amount", text)
                wallet.press("Top up")
                self.assertRegex(wallet.notice(), "amount")
        self.assertEqual((len(self.account()["cards"]), len(self.account()["orders"])), (2, 3))


class Everybody(WalletTest):
    def test_the_keyboard_alone(self):
        wallet = self.start_logged_in()
        wallet.find("list item", COFFEE)
        for roles, name, key, what in [("list item", COFFEE, "Return", ("checkbox", "Espresso")),
                                       ("list item", "Espresso", "space", ("button", "Pay 1.50 EUR")),
                                       ("button", "Pay 1.50 EUR", "Return", ("button", "Dismiss")),
                                       ("button", "Dismiss", "space", None)]:
            wallet.tab_to(roles, name)
            wallet.key(key)
            if what:
                wallet.find(*what)
        until("no payment", lambda: not wallet.window().find("list", "Payments"))
        self.assertEqual(self.purchases(), [(42100107, 150)])

    def test_everything_has_a_name(self):
        wallet = self.start_logged_in()
        for enter in [lambda: wallet.find("list item", COFFEE), lambda: wallet.tab("History"), lambda: wallet.tab("Wallet"),
                      lambda: wallet.press("Top up"), lambda: wallet.press("Top up"),  # and a notice
                      lambda: (wallet.press("Back"), wallet.tab("Machines"), wallet.open(COFFEE), wallet.find("checkbox"))]:
            enter()
            usable = wallet.window().find_all("button|tab|text box|search box|combo box|switch|checkbox")
            # GTK names what has no name after its class.
            self.assertEqual([node for node in usable if not node.name or node.name.startswith(("Gtk", "Adw"))], [])

    def test_from_right_to_left(self):
        with tempfile.TemporaryDirectory() as folder:
            wallet = self.start_logged_in(**from_right_to_left(PROGRAM, folder))
            wallet.open(COFFEE)
            row = wallet.find("list item", "Espresso")
            self.assertGreater(row.find("checkbox").box[0], row.find("label", "Espresso").box[0])
            wallet.end(signal.SIGTERM)

    def test_large_text_on_a_phone(self):
        wallet = self.start_logged_in(settings="gtk-font-name=Sans 20", size=(360, 720))
        self.assertGreater(wallet.find("label", COFFEE).box[3], 25)

        def assert_fit():
            wallet.resize(360, 720)  # as small as that it can be
            wide = [node for node in wallet.window().nodes() if node.box[0] < -1 or node.box[0] + node.box[2] > 361]
            self.assertEqual(wide, [])
        for tab in "Wallet", "History", "Machines":
            wallet.tab(tab)
            wallet.find("list item")
            assert_fit()
        self.sandbox.control("PUT", "/clock", {"isStopped": True})
        wallet.buy_at("42100107")
        wallet.payment_says("was placed")
        assert_fit()


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[3:]], verbosity=2)
