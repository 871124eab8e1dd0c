"""Kavio for Python: pay at unattended vending points. See docs/bindings.md."""
from . import _objects
from ._library import Closed, Session, build, version
from ._objects import *
from ._reports import Reports
from ._wallet import KavioError, Wallet

__all__ = ["Closed", "KavioError", "Reports", "Session", "Wallet", "build", "version"]
__all__ += _objects.__all__
