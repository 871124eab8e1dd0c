"""Logs in and stores a card with 3-D Secure, if the issuer asks for no page. Usage: enrol.py STORE AUTHORITY.pem
HOST:PORT CARD-NUMBER"""
import asyncio
import sys

import kavio


async def main(store: str, authority: str, address: str, number: str) -> int:
    async with kavio.Wallet(api_key="api-key", store_dir=store, ca_file=authority, connect_to=address) as wallet:
        await wallet.login("49", "151234567")
        await wallet.verify(input("Code: "), "DE", "49", "151234567")
        card = kavio.TDSPaymentCard(number, month=12, year=2039, security_code=123)
        try:
            await wallet.add_credit_card_tdsecure(card, kavio.TDSCardHolder("Robin Sample", "robin@kavio.example"))
        except kavio.KavioError as failure:
            print(failure, file=sys.stderr)
            return 3 if failure.cause == kavio.Cause.PAGE_NOT_SHOWN else 1
        for method in await wallet.get_payment_methods():
            print(type(method).__name__, method.number)
        return 0


sys.exit(asyncio.run(main(*sys.argv[1:])))
