#!/usr/bin/env python3
"""Ends with status 0 when the X selection named on the command line has an owner, with 1 when it has none.

Compositing managers and trays make themselves known by owning a selection, and no command of x11-utils tells that.
"""

import ctypes
import sys


def has_owner(selection: str) -> bool:
    x11 = ctypes.CDLL("libX11.so.6")
    x11.XOpenDisplay.argtypes = [ctypes.c_char_p]
    x11.XOpenDisplay.restype = ctypes.c_void_p
    x11.XInternAtom.argtypes = [ctypes.c_void_p, ctypes.c_char_p, ctypes.c_int]
    x11.XInternAtom.restype = ctypes.c_ulong
    x11.XGetSelectionOwner.argtypes = [ctypes.c_void_p, ctypes.c_ulong]
    x11.XGetSelectionOwner.restype = ctypes.c_ulong
    display = x11.XOpenDisplay(None)
    if not display:
        return False
    return x11.XGetSelectionOwner(display, x11.XInternAtom(display, selection.encode(), 0)) != 0


if __name__ == "__main__":
    sys.exit(0 if has_owner(sys.argv[1]) else 1)
