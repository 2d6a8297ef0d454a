"""Which code page a text was written in."""
from __future__ import annotations

from functools import lru_cache
from typing import NamedTuple

from . import _native as native

# The detector knows a few pages that the library does not convert; these are in Python.
_PYTHON_CODECS = {
    "ascii": "ascii",
    "utf-7": "utf-7",
    "utf-8": "utf-8",
    "utf-16le": "utf-16-le",
    "utf-16be": "utf-16-be",
    "utf-32le": "utf-32-le",
    "utf-32be": "utf-32-be",
    "euc-jp": "euc-jp",
    "iso-2022-jp": "iso2022-jp",
    "koi8-r": "koi8-r",
    "koi8-u": "koi8-u",
    "mac-cyrillic": "mac-cyrillic",
    "iso-8859-5": "iso8859-5",
    "720": "cp720",
    "874": "cp874",
}
_MOST = 128


class Guess(NamedTuple):
    """One answer of the detector."""

    page: str  #: "852", "iso-8859-2", "koi8-r", "utf-8", "utf-16le", "ascii" or "binary"
    language: str  #: "cs"; empty where nothing tells
    share: float  #: of all answers, 0 to 1: how sure the answer is
    broken: int  #: UTF-8 only: bytes that are not UTF-8
    same: tuple[str, ...]  #: pages that decode these bytes to the same text

    @property
    def codec(self) -> str | None:
        """The name of a codec of Python for the page, for `bytes.decode` and `open`; None for binary data."""
        if self.page == "binary":
            return None
        return _PYTHON_CODECS.get(self.page, f"kx-{self.page}")


@lru_cache(maxsize=None)
def _page_name(bit: int) -> str | None:
    name = native.kxdetect().KxDetectPageName(bit)
    return None if name is None else str(name.decode())


def _guesses(data: bytes | bytearray | memoryview, most: int) -> list[Guess]:
    raw = bytes(data[: 1 << 20])
    answers = (native.DetectGuess * most)()
    count = native.kxdetect().KxDetect(raw, len(raw), answers, most)
    if count == 0:
        raise MemoryError("no memory to detect the code page")
    return [_guess(answers[number]) for number in range(count)]


def _guess(answer: native.DetectGuess) -> Guess:
    same, bits = [], answer.same
    while bits:
        name = _page_name((bits & -bits).bit_length() - 1)
        if name is not None:
            same.append(name)
        bits &= bits - 1
    return Guess(answer.page.decode(), answer.language.decode(), answer.share / 1000, answer.broken, tuple(same))


def detect_all(data: bytes | bytearray | memoryview) -> list[Guess]:
    """All pages in which the bytes can have been written, the likeliest first. No more than 1 MiB is looked at."""
    return _guesses(data, _MOST)


def detect(data: bytes | bytearray | memoryview) -> Guess:
    """The page in which the bytes were most likely written.

        >>> detect("Příliš žluťoučký kůň".encode("cp852")).page
        '852'
    """
    return _guesses(data, 1)[0]
