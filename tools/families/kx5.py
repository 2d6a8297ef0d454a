"""KX 5 and KX 6 characters in terms of each other: the rules of data/kx5 worked out for every index of their sets."""
import re

from ._emit import header, hex16, lines_of, read_rows

SOURCE = "data/kx5/generations.txt"
INDEXES = range(256)
NONE = 0xFFFF
MARKS = {"": 0, "v": 0x0B3D, "h": 0x0B3E}
RULES = ("same", "none", "table", "pairs", "shift")

# Name in the C++ file by name in the data.
DIRECTIONS = {"kx6_to_kx5": "kKx6ToKx5", "kx5_to_kx6": "kKx5ToKx6"}


def read_directions(path):
    """Direction -> set -> rules, each a list of its kind and its values."""
    directions = {}
    for word, *values in read_rows(path):
        if word == "direction":
            sets = directions[values[0]] = {}
        elif word == "set":
            rules = sets[int(values[0])] = []
        elif word in RULES:
            rules.append([word, *values])
        else:
            rules[-1] += [word, *values]
    return directions


def value_of(text, set_number):
    """The KX character that a value stands for, and its mark."""
    if text == "-":
        return NONE, 0
    if text.startswith("0x"):
        return int(text, 16), 0
    index, mark = re.fullmatch(r"(\d+)([vh]?)", text).groups()
    assert int(index) in INDEXES, text
    return set_number << 8 | int(index), MARKS[mark]


def ranges_of(texts):
    for text in texts:
        first, _, last = text.partition("..")
        yield from range(int(first), int(last or first) + 1)


def covered_by(kind, values, set_number):
    """Index -> (character, mark) of one rule."""
    if kind == "same":
        return {index: (set_number << 8 | index, 0) for index in ranges_of(values)}
    if kind == "none":
        return {index: (NONE, 0) for index in ranges_of(values)}
    if kind == "table":
        first = int(values[0])
        return {first + n: value_of(text, set_number) for n, text in enumerate(values[1:])}
    pairs = [text.split(":") for text in values]
    if kind == "pairs":
        return {int(index): value_of(text, set_number) for index, text in pairs}
    thresholds = [int(index) for index, _ in pairs]
    assert thresholds == sorted(thresholds, reverse=True), thresholds
    covered = {}
    for first, amount in reversed(pairs):
        for index in range(int(first), len(INDEXES)):
            covered[index] = (set_number << 8 | (index + int(amount)) % len(INDEXES), 0)
    return covered


def work_out(rules, set_number):
    result = {index: (set_number << 8 | index, 0) for index in INDEXES}
    for kind, *values in reversed(rules):
        result |= covered_by(kind, values, set_number)
    assert sorted(result) == list(INDEXES), f"set {set_number}: a rule leaves the set"
    return [result[index] for index in INDEXES]


def array(name, values):
    return f"constinit const std::array<KxChar, 256> {name}{{{{\n{lines_of([hex16(v) for v in values], 16)}}}}};\n\n"


def generate(data):
    directions = read_directions(data / "kx5" / "generations.txt")
    arrays, count, tables = "", 0, ""
    for direction, name in DIRECTIONS.items():
        sets = directions[direction]
        rows = ["0"] * (max(sets) + 1)
        for number, rules in sets.items():
            worked_out = work_out(rules, number)
            characters = [hex16(character) for character, _ in worked_out]
            arrays += f"    {{{{ // {count}: set {number}\n{lines_of(characters, 16, '        ')}    }}}},\n"
            count += 1
            rows[number] = str(count)
            marks = [mark for _, mark in worked_out]
            if any(marks):
                assert name == "kKx5ToKx6" and number == 11, "marks follow katakana only"
                tables += array("kKx5Marks", marks)
        tables += f"constinit const std::array<std::uint8_t, {len(rows)}> {name}{{\n{lines_of(rows, 16)}}};\n\n"
    text = (
        header(SOURCE) + '#include "tables/kx5.h"\n\nnamespace kxstr::tables {\n\n' +
        f"constinit const std::array<std::array<KxChar, 256>, {count}> kKx5Sets{{{{\n{arrays}}}}};\n\n" + tables +
        "} // namespace kxstr::tables\n"
    )
    return {"kx5.cpp": text}
