"""The libraries, and what is called in them. Their headers say what each function does."""
from __future__ import annotations

import ctypes
import ctypes.util
import os
import sys
from ctypes import POINTER, Structure, c_char_p, c_int32, c_size_t, c_uint8, c_uint16, c_uint32, c_uint64, c_void_p
from functools import lru_cache
from pathlib import Path
from typing import Any

# kxstr/text.h
CODE_PAGE, UTF8, UTF16LE, UTF16BE, KX, KXLE = 1, 2, 4, 5, 6, 7
DONE, FULL, INCOMPLETE, NO_EQUIVALENT, MALFORMED = range(5)
KX_NONE = 0xFFFF
FIRST_CODE = 0xF900


class LibraryNotFound(ImportError):
    """The C library is not installed, or not where KXSTR_LIBRARY says."""


class TextForm(Structure):
    _fields_ = [("form", c_uint32), ("code_page", c_uint32), ("page", c_void_p)]


class Converter(Structure):
    _fields_ = [("opaque", c_uint64 * 1536)]


class TextResult(Structure):
    _fields_ = [("read", c_size_t), ("written", c_size_t), ("replaced", c_size_t), ("fault", c_size_t)]


class StreamCode(Structure):
    _fields_ = [("size", c_size_t), ("kind", c_uint32), ("fault", c_uint32), ("character", c_uint16)]


class DetectGuess(Structure):
    _fields_ = [
        ("page", c_char_p),
        ("language", c_char_p),
        ("share", c_uint32),
        ("broken", c_uint32),
        ("same", c_uint64),
    ]


# Buffers go as addresses, so that a call can begin inside one.
_KXSTR: dict[str, tuple[Any, list[Any]]] = {
    "KxTextPrepare": (c_uint32, [POINTER(Converter), POINTER(TextForm), POINTER(TextForm), c_uint32]),
    "KxTextConvert": (
        c_uint32,
        [POINTER(Converter), c_void_p, c_size_t, c_uint32, c_void_p, c_size_t, POINTER(TextResult)],
    ),
    "KxStreamNext": (c_uint32, [c_void_p, c_size_t, POINTER(StreamCode)]),
    "ValidKxCharacter": (c_uint32, [c_uint32]),
    "KxLanguage": (c_int32, [c_char_p]),
    "getColValues": (
        c_uint32,
        [
            POINTER(c_void_p),
            POINTER(c_uint8),
            POINTER(c_uint16),
            POINTER(c_uint8),
            c_uint32,
            c_uint32,
            c_uint32,
        ],
    ),
    "f_KX60ColVal": (c_uint32, [c_uint32, c_uint32]),
    "xch2col": (c_uint8, [c_uint32]),
    "wtolower": (c_uint16, [c_uint32]),
    "setsseq": (None, [c_char_p]),
    "lVaskSetupLang": (None, []),
}
_KXDETECT: dict[str, tuple[Any, list[Any]]] = {
    "KxDetect": (c_size_t, [c_void_p, c_size_t, POINTER(DetectGuess), c_size_t]),
    "KxDetectPageName": (c_char_p, [ctypes.c_uint]),
}


def _places(name: str) -> list[str]:
    """Where a library may be, the likeliest place first."""
    file = f"{name}.dll" if sys.platform == "win32" else f"lib{name}.so.1"
    setting = os.environ.get("KXSTR_LIBRARY")
    if setting:
        path = Path(setting)
        if path.is_dir():
            return [str(path / file)]
        # The setting names the file of kxstr itself; the detector lies beside it, or where the system finds it.
        if name == "kxstr":
            return [str(path)]
        return [str(path.with_name(file)), file]
    found = ctypes.util.find_library(name)
    return [file] if found is None else [file, found]


def _load(name: str, functions: dict[str, tuple[Any, list[Any]]]) -> ctypes.CDLL:
    reasons = []
    for place in _places(name):
        try:
            library = ctypes.CDLL(place)
        except OSError as error:
            reasons.append(str(error))
            continue
        for function, (result, arguments) in functions.items():
            entry = getattr(library, function)
            entry.restype = result
            entry.argtypes = arguments
        return library
    raise LibraryNotFound(f"the library {name} cannot be loaded: {'; '.join(reasons)}")


@lru_cache(maxsize=None)
def kxstr() -> ctypes.CDLL:
    return _load("kxstr", _KXSTR)


@lru_cache(maxsize=None)
def kxdetect() -> ctypes.CDLL:
    return _load("kxdetect", _KXDETECT)


def address_of(data: bytes) -> int:
    """Where the bytes lie; only as long as the caller holds them."""
    return ctypes.cast(c_char_p(data), c_void_p).value or 0
