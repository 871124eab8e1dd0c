"""The suite's adapter for Python: reads what to do from standard input, as bindings/suite/run says."""
import asyncio
import json
import sys

import kavio


def show(line: str) -> None:
    print(line, flush=True)


def receive(session: kavio.Session) -> None:
    while (line := session.receive(0)) is not None:
        show(line)


async def main() -> None:
    loop = asyncio.get_running_loop()
    session: kavio.Session | None = None
    while text := (await loop.run_in_executor(None, sys.stdin.readline)).removesuffix("\n"):
        if text[0] == "+":
            try:
                session = kavio.Session(json.loads(text[1:]))
                loop.add_reader(session.fileno(), receive, session)
            except ValueError as problem:
                show(json.dumps({"event": "error", "message": str(problem)}))
        elif text[0] == ">" and session is not None:
            session.send(text[1:])
        elif session is not None:
            loop.remove_reader(session.fileno())
            session.close()
            session = None


asyncio.run(main())
