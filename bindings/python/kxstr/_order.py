"""The order of a language."""
from __future__ import annotations

import ctypes
import threading
from functools import lru_cache
from typing import NamedTuple

from . import _native as native
from ._text import Form, convert

# ISO 639 and locales in small letters; `kx sort --list` has the same. Codes of the library are in capital letters.
_LANGUAGES = {
    "en": "US", "af": "AF", "ar": "AR", "ca": "CA", "hr": "HR", "cs": "CZ", "da": "DK", "nl": "NL", "en_au": "OZ",
    "en_ca": "CE", "en_gb": "UK", "fa": "FA", "fi": "SU", "fr_ca": "CF", "fr": "FR", "gl": "GA", "de": "DE",
    "de_ch": "SD", "el": "GR", "he": "HE", "hu": "MA", "is": "IS", "it": "IT", "no": "NO", "nb": "NO", "nn": "NO",
    "pl": "PL", "pt_br": "BR", "pt": "PO", "ru": "RU", "sk": "SL", "es": "ES", "sv": "SV", "uk": "YK", "ur": "UR",
    "tr": "TK", "ja": "JP", "ko": "KR", "zh_tw": "CT", "zh_hk": "CT", "zh_mo": "CT", "zh_hant": "CT", "zh": "CS",
    "en_uk": "UK", "en_ie": "UK", "de_li": "SD",
}  # fmt: skip

# Where the comparison knows no letters of the language, those of the library's table stand before it (HR ...); where it
# knows some of them, the others of the table are put in behind theirs (CZ ...).
_BY_TABLE = frozenset({"HR", "MA", "PL"})
_REFINED = frozenset({"CZ", "IS", "SL", "TK", "YK"})
_EAST_ASIAN = {"JP": 932, "KR": 949, "CT": 950, "CS": 936, "LA": 0, "TA": 0}
_UPPER_FIRST = "GR"
# Letters join with those behind them; elsewhere the values of a character are its own.
_CONTRACTIONS = frozenset({"CA", "CZ", "ES", "SL"})

_TABLE_END = 0x1000  # no character from here on has a value in the table
_REFINED_END = 0x200
_NO_VALUE = 0xFF
_DOTLESS_CAPITAL, _CAPITAL_WITH_DOT = 0x01EE, 0x0182

_UTF8 = Form(native.UTF8, 0)

# The library has one table for all languages, which is set up for one at a time.
_table_lock = threading.Lock()


class _Rules(NamedTuple):
    code: str
    number: int
    page: int
    table: dict[int, str]  # by character: its level of the table, in hexadecimal; only of _BY_TABLE
    divided: frozenset[int]  # values of the first level that letters share which only the table tells apart
    places: dict[int, int]  # by character: its place among those
    known: dict[tuple[int, bool], tuple[str, str, str]]  # values of characters, and whether case counts


def _code_of(language: str) -> str:
    """The library's code. LookupError for a language without rules: nothing falls back to another order."""
    name = language.split(".", 1)[0].replace("-", "_")
    library = native.kxstr()
    if len(name) == 2 and name.isupper():
        # The number 0 is that of languages without rules of their own, too.
        if name in ("US", "EN") or library.KxLanguage(name.encode()) != 0:
            return "US" if name == "EN" else name
        raise LookupError(f"unknown language: {language}")
    small = name.lower()
    code = _LANGUAGES.get(small) or _LANGUAGES.get(small.split("_", 1)[0])
    if code is None:
        raise LookupError(f"unknown language: {language}")
    return code


def _table_values(code: str) -> list[int]:
    library = native.kxstr()
    library.setsseq(code.encode())
    return [library.xch2col(library.wtolower(ch)) for ch in range(_TABLE_END)]


def _places(values: list[int], number: int) -> dict[int, int]:
    """How far behind the plain letter of its value the table has each character that shares one."""
    value_of = native.kxstr().f_KX60ColVal
    plain_letters = {value_of(letter, number): letter for letter in range(ord("a"), ord("z") + 1)}
    places = {}
    for ch in range(0x100, _REFINED_END):
        primary = value_of(ch, number)
        letter = plain_letters.get(primary)
        if letter is None or primary != value_of(ch, 0):
            continue
        if values[ch] != _NO_VALUE and values[ch] > values[letter]:
            places[ch] = values[ch] - values[letter]
    return places


@lru_cache(maxsize=None)
def _rules_of(language: str) -> _Rules:
    code = _code_of(language)
    library = native.kxstr()
    number = library.KxLanguage(code.encode())
    table: dict[int, str] = {}
    places: dict[int, int] = {}
    divided: frozenset[int] = frozenset()
    if code in _BY_TABLE or code in _REFINED:
        with _table_lock:
            # Turkish has another code there.
            values = _table_values("TR" if code == "TK" else code)
            library.lVaskSetupLang()  # for the language of the process again
        if code in _BY_TABLE:
            table = {ch: f"{v:02X}" for ch, v in enumerate(values) if v != _NO_VALUE}
        else:
            places = _places(values, number)
            divided = frozenset(library.f_KX60ColVal(ch, number) for ch in places)
    return _Rules(code, number, _EAST_ASIAN.get(code, 0), table, divided, places, {})


def _units(text: str, rules: _Rules) -> tuple[list[int], list[int]]:
    """KX text, and the code points of characters that it lacks: KX_NONE stands in their places."""
    data = text.split("\0", 1)[0].encode("utf-8", "surrogatepass")
    form = Form(native.KX, rules.page)
    out = bytearray()
    lacking = []
    at = 0
    while True:
        stop = convert(data, at, _UTF8, form, out, True)
        if stop.reason == native.DONE:
            break
        size = 3 if stop.reason == native.MALFORMED else stop.size  # only surrogates are malformed
        lacking.append(ord(data[stop.at : stop.at + size].decode("utf-8", "surrogatepass")[0]))
        out += native.KX_NONE.to_bytes(2, "little")
        at = stop.at + size
    units = memoryview(out).cast("H").tolist()
    if rules.code == "TK":
        turkish = {ord("I"): _DOTLESS_CAPITAL, _CAPITAL_WITH_DOT: ord("I")}
        units = [turkish.get(unit, unit) for unit in units]
    return units, lacking


class _Values:
    """Asks the library for the values of a text, character by character."""

    def __init__(self, units: list[int], rules: _Rules, case: bool) -> None:
        self.string = (ctypes.c_uint16 * (len(units) + 1))(*units)
        self.start = ctypes.addressof(self.string)
        self.position = ctypes.c_void_p()
        self.primary = (ctypes.c_uint8 * 2)()
        self.secondary = ctypes.c_uint16()
        self.tertiary = ctypes.c_uint8()
        self.rules = rules
        self.case = case
        self.call = native.kxstr().getColValues

    def at(self, index: int, previous: int) -> tuple[bool, int, int, int, int]:
        """Whether the character counts on the first level, its values, and where the next one is."""
        self.position.value = self.start + 2 * index
        self.primary[0] = self.primary[1] = self.secondary.value = self.tertiary.value = 0
        counts = self.call(
            self.position, self.primary, self.secondary, self.tertiary, self.case, previous, self.rules.number
        )
        primary = self.primary[0] << 8 | self.primary[1]
        return bool(counts), primary, self.secondary.value, self.tertiary.value, (self.position.value - self.start) // 2


def _levels(rules: _Rules, ch: int, counts: bool, primary: int, secondary: int, tertiary: int, case: bool,
            kana: bool) -> tuple[str, str, str]:  # fmt: skip
    east_asian = rules.code in _EAST_ASIAN
    # A contraction or an expansion has two values of each level; no value of a letter is 0.
    two = not east_asian and counts and primary & 0xFF != 0
    first = ""
    if counts:
        first = f"{primary:04X}" if two or east_asian else f"{primary >> 8:02X}"
        if not two and primary >> 8 in rules.divided:
            first += f"{rules.places.get(ch, 0):02X}"
    if rules.code == _UPPER_FIRST:
        tertiary ^= 1
    if not case:
        tertiary = tertiary & 1 if east_asian else 0
    third = f"{(tertiary & 2) << 3 | tertiary & 1:02X}" if two else f"{tertiary:X}"
    if not case and not kana:
        third = ""
    return first, f"{secondary:08X}" if two else f"{secondary:04X}", third


def sort_key(text: str, language: str, *, ignore_case: bool = False, kana: bool = False) -> bytes:
    """A key that sorts a text in the order of a language: keys compare as bytes, and exactly as `compare` does.

    `language` is a code of the library ("CZ") or, in small letters, of ISO 639 or a locale ("cs", "pt_BR"); LookupError
    for one without rules. With `kana` hiragana sort before katakana that are otherwise the same. The key is that of
    `kx sort --keys`, so keys made here and there mix.

        >>> sorted(["cukr", "chata", "hora"], key=lambda word: sort_key(word, "cs"))
        ['cukr', 'hora', 'chata']
    """
    rules = _rules_of(language)
    case = not ignore_case
    units, lacking = _units(text, rules)
    levels: tuple[list[str], list[str], list[str]] = ([], [], [])
    values = _Values(units, rules, case)
    may_keep = rules.code not in _EAST_ASIAN and rules.code not in _CONTRACTIONS
    codes_lacking = iter(lacking)
    # A control unit at the start does not count.
    index = 1 if units and native.FIRST_CODE <= units[0] != native.KX_NONE else 0
    previous = 0
    while index < len(units):
        ch = units[index]
        if ch == native.KX_NONE:
            index, previous = index + 1, 0
            of_levels = (f"G{next(codes_lacking):08X}", "0000", "0" if case or kana else "")
        else:
            kept = rules.known.get((ch, case)) if may_keep else None
            if kept is not None:
                index, of_levels = index + 1, kept
            else:
                counts, previous, secondary, tertiary, index = values.at(index, previous)
                of_levels = _levels(rules, ch, counts, previous, secondary, tertiary, case, kana)
                if may_keep and not kana:
                    rules.known[ch, case] = of_levels
        for level, value in zip(levels, of_levels):
            level.append(value)
    parts = ["".join(level) for level in levels]
    if rules.code in _BY_TABLE:
        parts.insert(0, _level_of_table(units, lacking, rules))
    return ".".join(parts).encode("ascii")


def _level_of_table(units: list[int], lacking: list[int], rules: _Rules) -> str:
    lower = native.kxstr().wtolower
    codes_lacking = iter(lacking)
    level = []
    for ch in units:
        if ch == native.KX_NONE:
            level.append(f"G{next(codes_lacking):08X}")
        elif ch < native.FIRST_CODE:
            # Characters without a value lie behind all others, by their codes.
            level.append(rules.table.get(ch) or f"{_NO_VALUE:02X}{lower(ch):04X}")
    return "".join(level)


def compare(a: str, b: str, language: str, *, ignore_case: bool = False, kana: bool = False) -> int:
    """-1, 0 or 1 as a text sorts before, with or behind another in a language; arguments as for `sort_key`.

        >>> compare("chata", "cukr", "cs"), compare("chata", "cukr", "en")
        (1, -1)
    """
    key_a = sort_key(a, language, ignore_case=ignore_case, kana=kana)
    key_b = sort_key(b, language, ignore_case=ignore_case, kana=kana)
    return (key_a > key_b) - (key_a < key_b)
