"""What the wallet for asyncio makes of the lines, against a sandbox. Usage: wallet_test.py ADDRESS AUTHORITY"""
import asyncio
import datetime
import sys
import tempfile
import unittest

import kavio

BALANCE = kavio.PaymentMethod("0", "", kavio.PaymentType.KAVIO)
OPTIONS: dict[str, str] = {}


class WalletTest(unittest.IsolatedAsyncioTestCase):
    async def asyncSetUp(self) -> None:
        self.wallet = await self.enterAsyncContext(kavio.Wallet(**OPTIONS))
        await self.wallet.login("49", "151234568")
        await self.wallet.verify("123456", "DE", "49", "151234568")

    async def test_objects_have_their_types(self) -> None:
        methods = await self.wallet.get_payment_methods()
        self.assertEqual([type(method) for method in methods],
                         [kavio.DepositCard, kavio.CreditCard, kavio.CreditCard, kavio.PrepaidCard, kavio.PrepaidCard])
        assert isinstance(methods[3], kavio.PrepaidCard) and methods[3].created is not None
        self.assertEqual(methods[3].created.tzinfo, datetime.timezone.utc)
        machine, = await self.wallet.get_machines(kavio.MachineFilter(value="42100107"))
        self.assertEqual((machine.kavio_id, machine.type), (42100107, kavio.MachineType.HOT_DRINKS))
        look = machine.campaigns[0].look_and_feel
        assert look is not None
        self.assertTrue(look.images[0].i_os)
        products = await self.wallet.get_machine_products(machine.id)
        self.assertEqual(products[0].name, "Espresso")
        before = kavio.TransactionFilter(transactions_before=datetime.datetime(2000, 1, 1, tzinfo=datetime.timezone.utc))
        self.assertEqual(await self.wallet.get_transactions(before), [])

    async def test_failures_say_why(self) -> None:
        with self.assertRaises(kavio.KavioError) as caught:
            await self.wallet.get_order("one")
        failure = caught.exception
        self.assertEqual((failure.type, failure.cause, failure.effect, failure.message),
                         (kavio.ResultType.BAD_INPUT, kavio.Cause.INVALID_INPUT, kavio.Effect.NONE,
                          "{one} is invalid order ID"))
        with self.assertRaisesRegex(ValueError, '"machineId" must be an integer'):
            await self.wallet.get_machine_products("2001")  # type: ignore[arg-type]
        with self.assertRaisesRegex(ValueError, "storeDir"):
            kavio.Session({"storeDir": "/nowhere"})

    async def test_a_purchase_reports_on_the_way_and_holds_back_what_follows(self) -> None:
        purchase = self.wallet.place_order(42100107, BALANCE, 150)
        logged_in = asyncio.create_task(self.wallet.is_logged_in())
        statuses = [order.status.value async for order in purchase]
        self.assertEqual(statuses, ["CREATED", "COMPLETED"])
        last = await purchase
        assert last is not None
        self.assertEqual(last.status, kavio.OrderStatus.COMPLETED)
        await logged_in
        with self.assertRaises(kavio.KavioError):
            await self.wallet.place_order(42100115, BALANCE, 150)

    async def test_an_operation_that_nobody_waits_for_goes_on(self) -> None:
        abandoned = asyncio.create_task(self.wallet.get_payment_methods())
        await asyncio.sleep(0)
        abandoned.cancel()
        with self.assertRaises(asyncio.CancelledError):
            await abandoned
        self.assertFalse(await self.wallet.is_busy())

    async def test_closing_ends_what_is_under_way(self) -> None:
        async with kavio.Wallet(**OPTIONS) as other:
            purchase = other.place_order(42103042, BALANCE, 150)  # never progresses
            self.assertEqual((await purchase.__anext__()).status, kavio.OrderStatus.CREATED)
        with self.assertRaises(kavio.Closed):
            await purchase

    async def test_secrets_are_not_shown(self) -> None:
        card = kavio.Card("4111111111111111", "12", "2039", "123", "a@b.example")
        self.assertNotRegex(repr(card), "4111|123")


if __name__ == "__main__":
    with tempfile.TemporaryDirectory() as folder:
        OPTIONS = {"store_dir": folder, "connect_to": sys.argv[1], "ca_file": sys.argv[2]}
        unittest.main(argv=sys.argv[:1])
