"""Case of names: data/names/upper_case.txt -> upper_case.cpp."""
from . import _emit


def generate(data):
    rows = [(int(a, 16), int(b, 16), int(step), int(add)) for a, b, step, add in
            _emit.read_rows(data / "names" / "upper_case.txt", 4)]
    for (_, last, _, _), (first, end, step, _) in zip(rows, rows[1:]):
        if not last < first <= end or step not in (1, 2):
            raise ValueError(f"upper_case.txt: the run at {_emit.hex16(first)} is out of order")
    # The sum wraps in 16 bits, so a step down is stored as its 16-bit complement.
    items = [f"{{{_emit.hex16(a)}, {_emit.hex16(b)}, {step}, {_emit.hex16(add & 0xFFFF)}}}"
             for a, b, step, add in rows]
    text = _emit.header("data/names/upper_case.txt") + (
        '#include "tables/upper_case.h"\n\n'
        "namespace kxstr::tables {\n\n"
        f"constexpr CaseRun kRuns[{len(items)}] = {{\n{_emit.lines_of(items, 3)}}};\n\n"
        "constinit const std::span<const CaseRun> kUpperCaseRuns{kRuns};\n\n"
        "} // namespace kxstr::tables\n")
    return {"upper_case.cpp": text}
