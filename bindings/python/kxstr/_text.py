"""Bytes of any page to text and back."""
from __future__ import annotations

import codecs
import ctypes
import re
import threading
from functools import lru_cache
from typing import NamedTuple

from . import _native as native


class Form(NamedTuple):
    """What bytes are written in: one of the library's forms, and its code page or 0."""

    form: int
    page: int


_UTF8 = Form(native.UTF8, 0)
# The names of `kx convert`, in small letters and figures; all else in a name does not count.
_NAMES = {
    "utf8": _UTF8,
    "utf16le": Form(native.UTF16LE, 0),
    "utf16be": Form(native.UTF16BE, 0),
    "kx": Form(native.KXLE, 0),
}
for _page, _of_page in (
    (895, "kamenicky"),
    (896, "mazovia"),
    (932, "shiftjis sjis windows31j mskanji"),
    (936, "gbk gb2312 euccn"),
    (949, "euckr uhc ksc56011987"),
    (950, "big5"),
    (10001, "macintosh macroman"),
    (28591, "latin1 l1"),
    (28592, "latin2 l2"),
):
    _NAMES.update((name, Form(native.CODE_PAGE, _page)) for name in _of_page.split())
_NUMBERED = re.compile(r"(?:windows|codepage|dos|ibm|win|cp|ms)?(\d{3,5})")
_ISO_8859 = re.compile(r"iso8859(\d{1,2})")

# Bytes that a call takes at most: enough for the call to cost nothing, little enough for the room it needs.
_PIECE = 1 << 16
# A byte of a page becomes 3 bytes at most.
_ROOM = 3 * _PIECE + 4


class _Kept(threading.local):
    """A thread's own converters: one is for one thread at a time, and holds no part of a text between calls."""

    def __init__(self) -> None:
        self.converters: dict[tuple[Form, Form], native.Converter] = {}
        self.room = ctypes.create_string_buffer(_ROOM)
        self.result = native.TextResult()


_kept = _Kept()


def _number(page: int | str) -> Form | None:
    if isinstance(page, int):
        return Form(native.CODE_PAGE, page) if 0 < page <= 0xFFFF else None
    name = re.sub(r"[^a-z0-9]", "", page.lower()) if page.isascii() else ""
    numbered = _NUMBERED.fullmatch(name)
    if numbered:
        return Form(native.CODE_PAGE, int(numbered[1]))
    iso = _ISO_8859.fullmatch(name)
    if iso:
        return Form(native.CODE_PAGE, 28590 + int(iso[1]))
    return _NAMES.get(name)


@lru_cache(maxsize=None)
def form_of(page: int | str) -> Form:
    """The form of a number or a name. LookupError when the library does not know it."""
    form = _number(page)
    if form is None or _converter(form, _UTF8) is None:
        raise LookupError(f"unknown code page: {page}")
    return form


def _converter(source: Form, target: Form) -> native.Converter | None:
    converter = _kept.converters.get((source, target))
    if converter is None:
        converter = native.Converter()
        if not native.kxstr().KxTextPrepare(
            converter, native.TextForm(source.form, source.page, None), native.TextForm(target.form, target.page, None), 0
        ):
            return None
        _kept.converters[source, target] = converter
    return converter


class Stop(NamedTuple):
    """Where a conversion ended and why; `size` is that of the character that ended it."""

    reason: int
    at: int
    size: int


def convert(data: bytes, at: int, source: Form, target: Form, out: bytearray, final: bool) -> Stop:
    """Converts from a place on, to the end or to the first character that cannot be."""
    converter = _converter(source, target)
    if converter is None:
        raise LookupError("unknown code page")
    call, room, result = native.kxstr().KxTextConvert, _kept.room, _kept.result
    start, end = native.address_of(data), len(data)
    while True:
        piece = min(_PIECE, end - at)
        last = at + piece == end
        reason = call(converter, start + at, piece, final and last, room, _ROOM, result)
        out += memoryview(room)[: result.written]
        at += result.read
        more = reason in (native.DONE, native.INCOMPLETE) and not last
        if not more and reason != native.FULL:
            return Stop(reason, at, result.fault)


def decode_form(data: bytes, form: Form, name: str, errors: str, final: bool) -> tuple[str, int]:
    """The text, and how many bytes of the data were done; all of them when it is the final piece."""
    text: list[str] = []
    at = 0
    while True:
        out = bytearray()
        stop = convert(data, at, form, _UTF8, out, final)
        text.append(out.decode())
        if stop.reason in (native.DONE, native.INCOMPLETE):
            return "".join(text), stop.at
        reason = "no character" if stop.reason == native.MALFORMED else "a character that Unicode lacks"
        fault = UnicodeDecodeError(name, data, stop.at, stop.at + stop.size, reason)
        replacement, at = codecs.lookup_error(errors)(fault)
        if not isinstance(replacement, str):
            raise TypeError("a handler of decoding errors must give text")
        text.append(replacement)
        at = _place(at, len(data))


def _place(at: int, length: int) -> int:
    if at < 0:
        at += length
    if not 0 <= at <= length:
        raise IndexError(f"position {at} from error handler out of bounds")
    return at


def encode_form(text: str, form: Form, name: str, errors: str) -> tuple[bytes, int]:
    """The bytes, and how many characters were done: all."""
    data = text.encode("utf-8", "surrogatepass")
    out = bytearray()
    at = counted = characters = 0  # bytes done; bytes of which the characters have been counted, and these
    while True:
        stop = convert(data, at, _UTF8, form, out, True)
        characters += len(data[counted : stop.at].decode("utf-8", "surrogatepass"))
        counted = stop.at
        if stop.reason == native.DONE:
            return bytes(out), len(text)
        # A surrogate is the only text that is malformed, and has three bytes then.
        size = 3 if stop.reason == native.MALFORMED else stop.size
        end = characters + len(data[counted : counted + size].decode("utf-8", "surrogatepass"))
        fault = UnicodeEncodeError(name, text, characters, end, "the code page lacks it")
        replacement, next_character = codecs.lookup_error(errors)(fault)
        if isinstance(replacement, bytes):
            out += replacement
        else:
            instead = replacement.encode("utf-8", "surrogatepass")
            if convert(instead, 0, _UTF8, form, out, True).reason != native.DONE:
                raise fault
        next_character = _place(next_character, len(text))
        if next_character == end:
            counted += size
        else:
            counted = len(text[:next_character].encode("utf-8", "surrogatepass"))
        at, characters = counted, next_character


def decode(data: bytes | bytearray | memoryview, page: int | str, errors: str = "strict") -> str:
    """The text of bytes in a code page, by the published mapping of the page.

    `page` is a number, as the library or as Windows has it, or a name: "852", "cp852", "iso-8859-2", "utf-16le", "kx"
    (KX text, low bytes first). `errors` is any handler of `codecs`. LookupError for a page that is not known.

        >>> decode(b"\\x9fe\\xe7tina", 852)
        'čeština'
    """
    return decode_form(bytes(data), form_of(page), f"kx-{page}", errors, True)[0]


def encode(text: str, page: int | str, errors: str = "strict") -> bytes:
    """The bytes of a text in a code page; `page` and `errors` as for `decode`.

        >>> encode("čeština", 852)
        b'\\x9fe\\xe7tina'
    """
    return encode_form(text, form_of(page), f"kx-{page}", errors)[0]
