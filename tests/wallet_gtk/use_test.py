#!/usr/bin/python3 -B
"""Uses kavio-wallet-gtk against the sandbox as people do: everything once, and every way to fail once.

Usage: run-on-display --accessible use_test.py WALLET SANDBOX [TEST]...
"""
import shutil
import signal
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

from wallet_window import Wallet, copy_picture, until
from running_sandbox import RunningSandbox

PROGRAM, SANDBOX = sys.argv[1:3]
COFFEE = "Espresso corner, Alexanderplatz"
ORDERS = "/machines/*/orders"
CARD = {"Card_number": "4111111111111111", "Expiry_month": "12", "Expiry_year": "2039", "Security_code": "123",
        "Name_on_the_card": "Robin Sample", "E_mail_address": "robin@kavio.example"}


class WalletTest(unittest.TestCase):
    """A sandbox with nobody in it for each test."""

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

    def state(self):
        return self.sandbox.control("GET", "/state")

    def account(self):
        return self.state()["accounts"][0]

    def purchases(self):
        """What was ever charged, as (machine, amount)."""
        return [(purchase["machine"], purchase["amount"]) for purchase in self.state()["purchases"]]


class Flows(WalletTest):
    def test_log_in_and_out(self):
        wallet = self.start()
        wallet.log_in(code="654321")
        wallet.says("code was not accepted")
        wallet.press("Other number")
        wallet.log_in()
        wallet.says("Your machines")
        self.assertNotIn("The code was not accepted", " ".join(wallet.reads()))
        self.assertEqual([account["phone"] for account in self.state()["accounts"]], ["+49 151234567"])
        wallet.tab("Wallet")
        wallet.press("Log out")
        wallet.find("text box", "Phone number")
        self.assertEqual(self.account()["sessions"], 0)

    def test_a_session_outlasts_the_program(self):
        with tempfile.TemporaryDirectory() as store:
            self.start_logged_in(store=store).close()
            self.start(store=store).says("Your machines")

    def test_machines(self):
        wallet = self.start_logged_in()
        wallet.find("list item", COFFEE)  # used before, says the service
        for text, name, subtitle in [
            ("42100178", "Cooler, platform 2", "cold drinks · Berlin · ready"),
            ("https://qr.kavio.example/m/42100107", COFFEE, "hot drinks · Berlin · ready"),
            ("52.5219, 13.4132", COFFEE, "hot drinks · 130 m · ready"),
            ("", "Snack wall", "snacks · Berlin · ready"),
        ]:
            with self.subTest(text):
                wallet.type("Code, QR text or position", text, enter=True)
                until(f"{name}, {subtitle}", lambda: (row := wallet.window().find("list item", name)) and row.is_called(subtitle))

    def test_pictures_of_codes(self):
        wallet = self.start_logged_in()
        picture = Path(wallet.store, "code.png")
        for way in "Ctrl+V", "Paste a picture", "Open a picture":
            with self.subTest(way):
                subprocess.run(["qrencode", "-o", picture, "https://qr.kavio.example/m/42100178"], check=True)
                copy_picture(picture)
                if way == "Ctrl+V":
                    wallet.key("ctrl+v")
                else:
                    wallet.press(way)
                if way == "Open a picture":
                    wallet.choose_file(picture)
                wallet.says("Cold drinks|Pay")
                wallet.press("Back")
        subprocess.run(["convert", "xc:white", picture], check=True)
        copy_picture(picture)
        wallet.press("Paste a picture")
        wallet.says("no QR code")

    def test_purchases(self):
        wallet = self.start_logged_in()
        expected = []
        wallet.says("Your machines")
        for method, product, amount in [("Wallet.*", "Espresso", "1.50"), ("Visa.*", "Cappuccino", "2.20"),
                                        ("Prepaid.*", "Tea", None)]:
            with self.subTest(method):
                wallet.open(COFFEE)
                wallet.choose("Pay with", method)
                wallet.open(product)
                self.assertNotIn("sensitive", wallet.find("list item", "Hot chocolate").states)
                self.assertIn("sold out", wallet.reads())
                self.sandbox.control("PUT", "/clock", {"isStopped": True})
                wallet.press(f"Pay {amount} EUR" if amount else "Pay")
                for sentence, more in [("was placed", 2000), ("was approved", 1000), ("is complete", 1)]:
                    wallet.payment_says(sentence)
                    self.sandbox.control("POST", "/clock", {"stepMs": more})
                self.sandbox.control("PUT", "/clock", {"isStopped": False})
                wallet.press("Dismiss")
                wallet.press("Back")
                expected.append((42100107, int(float(amount or 1.2) * 100)))
                self.assertEqual(self.purchases(), expected)

    def test_top_up(self):
        wallet = self.start_logged_in()
        before = self.account()["balance"]
        wallet.tab("Wallet")
        wallet.press("Top up")
        wallet.choose("From card", "Mastercard.*")
        wallet.type("Amount", "20")
        wallet.press("Top up")
        wallet.payment_says("The money was added")
        self.assertEqual(self.account()["balance"], before + 2000)

    def test_cards(self):
        wallet = self.start_logged_in()
        for number, secure, answer in [("4111 1111 1111 1111", False, None), ("4000000000001018", True, None),
                                       ("4000000000001042", True, "1234")]:
            with self.subTest(number):
                before = len(self.account()["cards"])
                wallet.tab("Wallet")
                wallet.press("Add a card")
                wallet.type_all(**{**CARD, "Card_number": number})
                if not secure:
                    wallet.open("Let the issuer check the card")
                wallet.press("Store the card")
                if answer:
                    wallet.answer_issuer(answer)
                wallet.says("The card was stored")
                wallet.find("list item", f".*{number[-4:]}.*")
                self.assertEqual(len(self.account()["cards"]), before + 1)
        wallet.press("Remove", within=lambda window: window.find("list item", "Mastercard.*"))
        wallet.press("Remove it")
        until("one card less", lambda: not wallet.window().find("list item", "Mastercard.*"))
        self.assertEqual(len(self.account()["cards"]), before)

    def test_history(self):
        self.sandbox.log_in()
        for _ in range(30):
            self.sandbox.buy(150)
        wallet = self.start_logged_in()
        wallet.tab("History")
        rows = lambda: [node for node in wallet.window().nodes() if node.role == "list item"]
        until("a page of orders", lambda: len(rows()) == 30)
        wallet.press("Older")
        until("all orders", lambda: len(rows()) == 33)
        wallet.says("2026")  # a day above its orders
        oldest = rows()[-1].texts()
        wallet.type("Search", oldest[1].split(" · ")[-1])
        until("only the one", lambda: [row.texts() for row in rows()] == [oldest])


class Failures(WalletTest):
    def test_replies_odd_and_late(self):
        wallet = self.start_logged_in()
        for fault, sentence in [
            ({"drop": True}, "connection was lost"),
            ({"status": 503, "body": "{}"}, "service has a problem"),
            ({"body": "<html>"}, "not understood"),
        ]:
            with self.subTest(sentence):
                self.fault("/prepaidCards", times=3, **fault)
                wallet.tab("Wallet")
                wallet.says(sentence)
                self.sandbox.control("DELETE", "/faults")
                wallet.press("Try again")
                wallet.find("list item", "Visa.*")
                wallet.says_no_more(sentence)
                wallet.tab("Machines")
        self.fault("/machines/byValue", delayMs=3_000)
        wallet.type("Code, QR text or position", "42100178", enter=True)
        wallet.tab("Wallet")  # the window does not wait
        wallet.find("button", "Add a card")
        wallet.tab("Machines")
        wallet.find("list item", "Cooler, platform 2")

    def test_no_service(self):
        with RunningSandbox(SANDBOX) as gone:
            with Wallet(PROGRAM, gone) as wallet:
                gone.process.terminate()
                gone.process.wait()
                wallet.type_all(Country_code="49", Phone_number="151234567", Country="DE")
                wallet.press("Send code")
                wallet.says("service cannot be reached")
                wallet.find("button", "Try again")

    def test_the_session_has_ended(self):
        wallet = self.start_logged_in()
        self.sandbox.control("DELETE", "/tokens")
        wallet.tab("Wallet")
        wallet.says("session has ended")
        wallet.log_in()
        wallet.says("Your machines|Balance")

    def test_payments_that_are_not_made(self):
        for number, machine, sentence, charged in [
            ("151234000", "42100107", "balance is too small", 150),
            ("151234567", "42102488", "was canceled", 100),
        ]:
            with self.subTest(sentence):
                self.sandbox.control("DELETE", "/state")
                wallet = self.start_logged_in(number)
                wallet.buy_at(machine)
                wallet.payment_says(sentence)
                self.assertEqual(self.purchases(), [(int(machine), charged)])
                wallet.close()

    def test_a_lost_reply(self):
        wallet = self.start_logged_in()
        self.fault(ORDERS, drop=True, handled=True)
        wallet.buy_at("42100107")
        wallet.payment_says("not certain")
        wallet.press("Find out")
        wallet.payment_says("is complete")
        self.assertEqual(self.purchases(), [(42100107, 150)])

    def test_killed_while_paying(self):
        with tempfile.TemporaryDirectory() as store:
            wallet = self.start_logged_in(store=store)
            self.fault(ORDERS, delayMs=600_000)
            wallet.buy_at("42100107")
            until("a purchase", self.purchases)
            wallet.end(signal.SIGKILL)
            self.sandbox.control("DELETE", "/faults")
            wallet = self.start(store=store)
            wallet.payment_says("not certain")
            wallet.press("Find out")
            wallet.payment_says("is complete")
            wallet.press("Dismiss")
            wallet.close()
            self.start(store=store).says("Your machines")
            self.assertEqual(self.purchases(), [(42100107, 150)])

    def test_nonsense(self):
        wallet = self.start_logged_in()
        for text in "95, 13.41", "52.52, 13.41, 7", "?!", "9" * 40:
            with self.subTest(text):
                wallet.type("Code, QR text or position", text, enter=True)
                self.assertTrue(wallet.notice())
        wallet.tab("Wallet")
        wallet.press("Add a card")
        for entry, text, sentence in [
            ("Card_number", "4111111111111112", "number"), ("Expiry_month", "13", "month"),
            ("Expiry_year", "1999", "year|over|expired"), ("Security_code", "1", "code"), ("Name_on_the_card", "", "name"),
            ("E_mail_address", "robin", "e-mail"),
        ]:
            with self.subTest(entry):
                wallet.type_all(**{**CARD, entry: text})
                wallet.press("Store the card")
                self.assertRegex(wallet.notice(), sentence)
        wallet.press("Back")
        wallet.press("Top up")
        for text in "", "-1", "1.234", "many", "9" * 30, "0":
            with self.subTest(text):
                wallet.type("Amount", text)
                wallet.press("Top up")
                self.assertRegex(wallet.notice(), "amount")
        self.assertEqual(len(self.account()["cards"]), 2)


class Everybody(WalletTest):
    def test_with_the_keyboard_alone(self):
        wallet = self.start_logged_in()
        wallet.find("list item", COFFEE)
        wallet.tab_to("list item", COFFEE)
        wallet.key("Return")
        wallet.find("list item", "Espresso")
        wallet.tab_to("list item|checkbox|radio", "Espresso")
        wallet.key("space")
        wallet.tab_to("button", "Pay .*")
        wallet.key("Return")
        wallet.payment_says("is complete")
        wallet.tab_to("button", "Dismiss")
        wallet.key("space")
        until("nothing about payments", lambda: not wallet.window().find("list", "Payments"))
        self.assertEqual(self.purchases(), [(42100107, 150)])

    def test_from_right_to_left(self):
        """GTK goes by the language that the program has been translated to: here by nobody."""
        with tempfile.TemporaryDirectory() as folder:
            catalog = Path(folder, "share/locale/ar/LC_MESSAGES/kavio-wallet.mo")
            for place in catalog.parent, Path(folder, "bin"):
                place.mkdir(parents=True)
            header = 'msgid ""\nmsgstr "Content-Type: text/plain; charset=UTF-8\\n"\n'
            subprocess.run(["msgfmt", "-o", catalog, "-"], input=header, text=True, check=True)
            program = shutil.copy(PROGRAM, Path(folder, "bin"))
            wallet = self.start_logged_in(program=program, LANGUAGE="ar", LC_ALL="C.UTF-8")
            wallet.open(COFFEE)
            row = wallet.find("list item", "Espresso")
            self.assertGreater(row.find("checkbox").box[0], row.find("label", "Espresso").box[0])

    def test_large_text_on_a_phone(self):
        wallet = self.start_logged_in(settings="gtk-xft-dpi=196608")
        for tab in "Machines", "Wallet", "History":
            wallet.tab(tab)
            wallet.resize(360, 720)
            for node in wallet.window().nodes():
                if node.role in ("label", "button") and node.box:
                    self.assertTrue(0 <= node.box[0] and node.box[0] + node.box[2] <= 360, node)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[3:]], verbosity=2)
