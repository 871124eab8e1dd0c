"""What an operation reports that reports more than once."""
from __future__ import annotations

import asyncio
from typing import Generator, Generic, TypeVar

T = TypeVar("T")


class Reports(Generic[T]):
    """Awaited, gives the last report once the operation is over; `async for` gives each as it comes. Both raise
    `KavioError` if the last report is a failure. The operation goes on whether anybody listens or not."""

    def __init__(self, operation: asyncio.Task[T | None], reports: asyncio.Queue[T]) -> None:
        self._operation, self._reports = operation, reports

    def __await__(self) -> Generator[None, None, T | None]:
        return asyncio.shield(self._operation).__await__()

    def __aiter__(self) -> Reports[T]:
        return self

    async def __anext__(self) -> T:
        if self._reports.empty():
            report = asyncio.ensure_future(self._reports.get())
            await asyncio.wait((report, self._operation), return_when=asyncio.FIRST_COMPLETED)
            if report.done():
                return report.result()
            report.cancel()
        if self._reports.empty():
            await self._operation
            raise StopAsyncIteration
        return self._reports.get_nowait()
