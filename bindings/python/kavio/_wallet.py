"""A wallet for asyncio."""
from __future__ import annotations

import asyncio
import datetime
import enum
import json
from typing import Any, Coroutine, Mapping

from . import _objects
from ._library import Closed, Session
from ._objects import Cause, Effect, Object, Operations, ResultType
from ._reports import Reports

# Long after every operation has ended by itself.
_NEVER = 10**12


class KavioError(Exception):
    """An operation failed. `cause` is for programs, and `effect` says whether it may have happened all the same; the
    message is for people."""

    def __init__(self, type: ResultType, cause: Cause, effect: Effect, message: str | None) -> None:
        super().__init__(type, cause, effect, message)
        self.type, self.cause, self.effect, self.message = type, cause, effect, message

    def __str__(self) -> str:
        return f"{self.message or self.type.value} (cause {self.cause.value}, effect {self.effect.value})"


def decode(kind: str, value: Any) -> Any:
    """A value of a line as the schema's kind of value."""
    if kind.endswith("?"):
        return None if value is None else decode(kind[:-1], value)
    if kind.endswith("[]"):
        return [decode(kind[:-2], item) for item in value or ()]
    if kind == "date":
        return datetime.datetime.fromisoformat(value) if value >= "0001" else None  # Python has no year 0
    known = getattr(_objects, kind, None)
    if known is None:
        return value
    if issubclass(known, enum.Enum):
        return known.__members__.get(value, value)  # a newer library may know more
    known = getattr(_objects, value.get("class", kind))
    return known(**{attribute: decode(kind, value[name]) for attribute, (name, kind) in known.MEMBERS.items()})


def encode(value: Any) -> Any:
    """A value as a line has it."""
    if isinstance(value, enum.Enum):
        return value.value
    if isinstance(value, datetime.datetime):
        text = value.astimezone(datetime.timezone.utc).isoformat(timespec="milliseconds")
        return text.replace("+00:00", "Z")
    if isinstance(value, Object):
        return {name: encode(getattr(value, attribute)) for attribute, (name, _) in value.MEMBERS.items()}
    if isinstance(value, (list, tuple)):
        return [encode(item) for item in value]
    return value


class Wallet(Operations):
    """One facade of the library, for one event loop. Operations run one after the other; each raises `KavioError` if it
    fails, and `ValueError` for an argument that the library cannot read. An operation that is cancelled goes on in the
    library, and the next one waits for its end. Leaving the `async with` gives up what is under way: a purchase that has
    not left never will, and one that has is in `unsettled_payments` next time.

    The options are those of libkavio-c. All wallets of a process share those from `store_dir` on."""

    def __init__(self, *, api_key: str = "demo-key", environment: str = "TEST", store_dir: str | None = None,
                 connect_to: str | None = None, ca_file: str | None = None, kavio_key: str | None = None,
                 bundle_version: str | None = None) -> None:
        self._options = {"apiKey": api_key, "environment": environment, "storeDir": store_dir, "connectTo": connect_to,
                         "caFile": ca_file, "kavioKey": kavio_key, "bundleVersion": bundle_version}
        self._one_at_a_time = asyncio.Lock()
        self._events: asyncio.Queue[Any] = asyncio.Queue()
        self._tasks: set[asyncio.Task[Any]] = set()

    async def __aenter__(self) -> Wallet:
        self._session = Session(self._options)
        asyncio.get_running_loop().add_reader(self._session.fileno(), self._receive)
        return self

    async def __aexit__(self, *_: object) -> None:
        asyncio.get_running_loop().remove_reader(self._session.fileno())
        self._session.close()
        for task in self._tasks:
            task.cancel()
        await asyncio.gather(*self._tasks, return_exceptions=True)

    def _receive(self) -> None:
        while (line := self._session.receive(0)) is not None:
            self._events.put_nowait(json.loads(line))

    def _start(self, operation: Coroutine[Any, Any, Any]) -> asyncio.Task[Any]:
        async def run() -> Any:
            try:
                return await operation
            except asyncio.CancelledError:  # by `__aexit__`, nobody else can
                raise Closed("the wallet is closed") from None

        task = asyncio.create_task(run())
        self._tasks.add(task)
        task.add_done_callback(self._tasks.discard)
        return task

    async def _perform(self, op: str, arguments: Mapping[str, Any], kind: str, payload: Mapping[str, str]) -> Any:
        async def perform() -> Any:
            async with self._one_at_a_time:
                event = await self._ask(op, arguments)
            return decode(kind, event["value"]) if event["event"] == "return" else _payload(event, payload)

        # The library goes on even if nobody waits any longer.
        return await asyncio.shield(self._start(perform()))

    def _follow(self, op: str, arguments: Mapping[str, Any], payload: Mapping[str, str]) -> Reports[Any]:
        reports: asyncio.Queue[Any] = asyncio.Queue()

        async def follow() -> Any:
            async with self._one_at_a_time:
                last = await self._ask(op, arguments)
                questions = 0
                event: Any = last
                # A facade is free as soon as it has made its last report.
                while event["event"] == "callback" or questions > 0 or event["value"]:
                    if event["event"] == "callback":
                        last = event
                        if event["result"]["type"] == "SUCCESS" and (report := _payload(event, payload)) is not None:
                            reports.put_nowait(report)
                        self._send("isBusy", {})
                        questions += 1
                    event = await self._events.get()
                    questions -= event["event"] == "return"
            return _payload(last, payload)

        return Reports(self._start(follow()), reports)

    def _send(self, op: str, arguments: Mapping[str, Any]) -> None:
        line = {"op": op, **{name: encode(value) for name, value in arguments.items()}, "timeoutMs": _NEVER}
        self._session.send(json.dumps(line))

    async def _ask(self, op: str, arguments: Mapping[str, Any]) -> Any:
        """The operation's answer, or its first report."""
        self._send(op, arguments)
        event = await self._events.get()
        if event["event"] == "error":
            raise ValueError(event["message"])
        return event


def _payload(event: Any, payload: Mapping[str, str]) -> Any:
    result = event["result"]
    if result["type"] != "SUCCESS":
        kinds = {"type": "ResultType", "cause": "Cause", "effect": "Effect", "message": "text?"}
        raise KavioError(*(decode(kind, result[name]) for name, kind in kinds.items()))
    for label, kind in payload.items():
        if label in event:
            return decode(kind.removesuffix("?") if kind.endswith("[]?") else kind, event[label])
    return None
