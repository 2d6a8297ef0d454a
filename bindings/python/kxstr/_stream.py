"""Document streams that nobody vouches for."""
from __future__ import annotations

import codecs
import re
from collections.abc import Iterable, Iterator
from enum import IntEnum
from typing import NamedTuple

from . import _native as native
from ._text import Form, decode_form, form_of


class Kind(IntEnum):
    """What a code of a stream is."""

    TEXT = 1  #: a character, a space, a hyphen or a line end
    ATTRIBUTE = 2  #: an attribute goes on or off
    FUNCTION = 3  #: a function of one byte
    FIXED = 4  #: a code of fixed length that is none of these
    GROUP = 5  #: a group: what it holds is no text of the stream
    END = 6  #: the terminator


class Fault(IntEnum):
    """What is wrong with a code."""

    SOUND = 0
    CUT_OFF = 1  #: it runs behind the end
    NO_ROOM = 2  #: a group whose size leaves no room for its ends
    NOT_CLOSED = 3  #: its last byte is not that of such a code
    OTHER_SIZE = 4  #: read from its end it has another size


class Code(NamedTuple):
    """One code of a stream."""

    offset: int
    data: bytes  #: its bytes; one for a code with a fault
    kind: Kind
    fault: Fault
    character: int | None  #: the KX character or KX code

    @property
    def attribute(self) -> tuple[int, bool] | None:
        """The number of an attribute, and whether it goes on."""
        if self.kind is not Kind.ATTRIBUTE or self.fault is not Fault.SOUND:
            return None
        return self.data[1], self.data[0] == 0xF2

    def text(self, page: int | str = 1252) -> str:
        """The character, empty for other codes; `page` is that of the document, for its East Asian characters.

        A hard line end is a line feed and a soft one a carriage return. UnicodeDecodeError for what Unicode lacks.
        """
        if self.kind is not Kind.TEXT or self.character is None:
            return ""
        form = Form(native.KXLE, form_of(page).page)
        return decode_form(self.character.to_bytes(2, "little"), form, "kx", "strict", True)[0]


_KINDS = {kind.value: kind for kind in Kind}
_FAULT_OF = {fault.value: fault for fault in Fault}


class _Walker:
    """Looks at single codes of a stream."""

    def __init__(self, data: bytes) -> None:
        self.data = data
        self.start = native.address_of(data)
        self.code = native.StreamCode()
        self.next_code = native.kxstr().KxStreamNext

    def at(self, at: int) -> Code:
        """The code that begins there, before the end."""
        code = self.code
        self.next_code(self.start + at, len(self.data) - at, code)
        character = code.character
        return Code(
            at,
            self.data[at : at + code.size],
            _KINDS[code.kind],
            _FAULT_OF[code.fault],
            None if character == native.KX_NONE else character,
        )


def walk(stream: bytes | bytearray | memoryview) -> Iterator[Code]:
    """The codes of a document stream, one after another, to the end of the bytes. Every byte may be anything.

        >>> [code.kind.name for code in walk(b"A\\xf2\\x0c\\xf2\\xcc")]
        ['TEXT', 'ATTRIBUTE', 'TEXT']
    """
    data = bytes(stream)
    walker = _Walker(data)
    at = 0
    while at < len(data):
        code = walker.at(at)
        yield code
        at += len(code.data)


_KEPT = {"hard": (0xF90A, 0xF90C), "soft": (0xF90D,), "tabs": (0xF909,)}
_SOFT_END = 0xF90D
_HYPHEN_CODES = (0x84, 0x85, 0xFB05)
_PLAIN = re.compile(rb"[ -~]+")
_FIRST_EAST_ASIAN, _BEHIND_EAST_ASIAN = 0x2400, 0xE000
_FAULTS = {
    Fault.CUT_OFF: "the code is cut off",
    Fault.NO_ROOM: "the group has no room for its ends",
    Fault.NOT_CLOSED: "the code is not closed",
    Fault.OTHER_SIZE: "the code has another size at its end",
}


def strip(
    stream: bytes | bytearray | memoryview,
    *,
    keep: Iterable[str] = (),
    hyphens: bool = False,
    soft_as_space: bool = False,
    page: int | str = 1252,
    errors: str = "strict",
) -> str:
    """The text of a document stream, as `kx strip` gives it: characters and spaces.

    `keep` names what else stays: "hard" and "soft" line ends (line feeds and carriage returns), "tabs". With `hyphens`
    the hyphen codes are hyphens, with `soft_as_space` soft line ends that are not kept are spaces. `page` is that of the
    document, for its East Asian characters. A code that cannot be read, and a character that Unicode lacks, is an error
    of decoding that `errors`, a handler of `codecs`, answers; the place is that in the stream.

        >>> strip(b"A\\xcc\\xf0\\x29\\x01\\xf0", keep=["hard"])
        'A\\né'
    """
    rules = _StripRules(tuple(keep), hyphens, soft_as_space, page)
    data = bytes(stream)
    walker = _Walker(data)
    text: list[str] = []
    at = 0
    while at < len(data):
        plain = _PLAIN.match(data, at)
        if plain:
            text.append(plain[0].decode("ascii"))
            at = plain.end()
            continue
        code = walker.at(at)
        end = at + len(code.data)
        try:
            if code.fault is not Fault.SOUND:
                raise UnicodeDecodeError("kx-stream", data, at, end, _FAULTS[code.fault])
            if code.kind is Kind.END and end != len(data):
                raise UnicodeDecodeError("kx-stream", data, at, end, "a terminator before the end")
            if code.kind is Kind.TEXT:
                text.append(rules.text_of(code, data))
            at = end
        except UnicodeDecodeError as fault:
            replacement, at = codecs.lookup_error(errors)(fault)
            text.append(str(replacement))
    return "".join(text)


class _StripRules:
    def __init__(self, keep: tuple[str, ...], hyphens: bool, soft_as_space: bool, page: int | str) -> None:
        unknown = set(keep) - set(_KEPT)
        if unknown:
            raise ValueError(f"cannot keep {', '.join(sorted(unknown))}; hard, soft and tabs can be kept")
        self.form = Form(native.KXLE, form_of(page).page)
        self.known: dict[int, str] = {code: "-" if hyphens else "" for code in _HYPHEN_CODES}
        self.known[_SOFT_END] = " " if soft_as_space else ""
        kept = [code for name in keep for code in _KEPT[name]]
        self.known.update({code: chr(code & 0xFF) for code in kept})

    def text_of(self, code: Code, data: bytes) -> str:
        """The text of a code, by its character; that of a function code of a hyphen is the code itself."""
        ch = native.KX_NONE if code.character is None else code.character
        if len(code.data) == 1:
            first = code.data[0]
            if first < 0x20 or first == 0x7F:
                return ""
            if first in _HYPHEN_CODES:
                ch = first
        text = self.known.get(ch)
        if text is None:
            text = self.known[ch] = self._text(ch, code, data)
        return text

    def _text(self, ch: int, code: Code, data: bytes) -> str:
        if not _FIRST_EAST_ASIAN <= ch < _BEHIND_EAST_ASIAN and not native.kxstr().ValidKxCharacter(ch):
            return ""
        try:
            return decode_form(ch.to_bytes(2, "little"), self.form, "kx", "strict", True)[0]
        except UnicodeDecodeError as fault:
            end = code.offset + len(code.data)
            raise UnicodeDecodeError("kx-stream", data, code.offset, end, fault.reason) from None
