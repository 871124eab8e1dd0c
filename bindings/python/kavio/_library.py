"""libkavio-c, through ctypes."""
from __future__ import annotations

import ctypes
import json
import os
from typing import Any, Mapping

_ABI = 1
_OK, _TIMEOUT, _CLOSED, _FAILED = range(4)


class Closed(Exception):
    """The session has been closed."""


def _load() -> ctypes.CDLL:
    library = ctypes.CDLL(os.environ.get("KAVIO_LIBRARY", "libkavio-c.so.1"))
    pointer, text = ctypes.c_void_p, ctypes.c_char_p
    # Lines come as plain pointers: they must be given back.
    functions: list[tuple[str, Any, list[Any]]] = [
        ("create", ctypes.c_int, [text, ctypes.POINTER(pointer), ctypes.POINTER(pointer)]),
        ("send", ctypes.c_int, [pointer, text, ctypes.c_size_t]),
        ("receive", ctypes.c_int, [pointer, ctypes.c_int, ctypes.POINTER(pointer), ctypes.POINTER(ctypes.c_size_t)]),
        ("descriptor", ctypes.c_int, [pointer]),
        ("close", ctypes.c_int, [pointer]),
        ("destroy", None, [pointer]),
        ("free", None, [pointer]),
        ("version", text, []),
        ("build", text, []),
        ("abi", ctypes.c_int, []),
    ]
    for name, result, parameters in functions:
        function = library[f"kavio_{name}"]
        function.restype, function.argtypes = result, parameters
    if library.kavio_abi() != _ABI:
        raise ImportError(f"libkavio-c has the ABI {library.kavio_abi()}; this package needs {_ABI}")
    return library


_library = _load()


def version() -> str:
    """The library's version, such as "1.0.0"."""
    return str(_library.kavio_version().decode())


def build() -> str:
    """The library's build number."""
    return str(_library.kavio_build().decode())


def _check(status: int) -> None:
    if status == _CLOSED:
        raise Closed("the session is closed")
    if status != _OK:
        raise MemoryError(f"libkavio-c returned {status}")  # the only other reason here


def _take(line: ctypes.c_void_p) -> str:
    text = ctypes.string_at(line.value or 0).decode()
    _library.kavio_free(line)
    return text


class Session:
    """Lines of JSON, as docs/bindings.md describes them. May be used from any thread."""

    def __init__(self, options: Mapping[str, Any]) -> None:
        self._handle, error = ctypes.c_void_p(), ctypes.c_void_p()
        status = _library.kavio_create(json.dumps(options).encode(), ctypes.byref(self._handle), ctypes.byref(error))
        if status == _FAILED:
            raise ValueError(json.loads(_take(error))["message"])
        _check(status)

    def send(self, line: str) -> None:
        data = line.encode()
        _check(_library.kavio_send(self._handle, data, len(data)))

    def receive(self, milliseconds: int = -1) -> str | None:
        """The next line; None if there is none within the limit. Without one, waits for as long as it takes."""
        line = ctypes.c_void_p()
        status = _library.kavio_receive(self._handle, milliseconds, ctypes.byref(line), None)
        if status == _TIMEOUT:
            return None
        _check(status)
        return _take(line)

    def fileno(self) -> int:
        """Can be read from, for a selector or an event loop, as long as there is a line to receive."""
        return int(_library.kavio_descriptor(self._handle))

    def close(self) -> None:
        """Ends whatever waits, and gives up work under way."""
        _library.kavio_close(self._handle)

    # Only here: as long as anybody holds the session, it may be in use.
    def __del__(self) -> None:
        _library.kavio_destroy(self._handle)
