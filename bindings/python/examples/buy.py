"""Logs in and buys. Usage: buy.py STORE AUTHORITY.pem HOST:PORT"""
import asyncio
import sys

import kavio


async def main(store: str, authority: str, address: str) -> int:
    async with kavio.Wallet(api_key="api-key", store_dir=store, ca_file=authority, connect_to=address) as wallet:
        try:
            await wallet.login("49", "151234567")
            await wallet.verify(input("Code: "), "DE", "49", "151234567")
            balance = kavio.PaymentMethod("0", "", kavio.PaymentType.KAVIO)
            order = None
            async for order in wallet.place_order(42100107, balance, 150):
                print(order.status.value)
            return 0 if order and order.status == kavio.OrderStatus.COMPLETED else 1
        except kavio.KavioError as failure:
            print(failure, file=sys.stderr)
            for payment in await wallet.unsettled_payments():
                print("In doubt; settle_payment finds out:", payment.id, file=sys.stderr)
            return 1


sys.exit(asyncio.run(main(*sys.argv[1:])))
