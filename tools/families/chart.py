"""The page of `kx chart`: data/chart/ -> chart_page.cpp, with the style and the script in their places."""
from . import _emit

PER_LITERAL = 100  # lines; a compiler need not take a literal of any length


def literal(text):
    lines = text.splitlines(keepends=True)
    return "\n".join('    R"~(' + "".join(lines[i : i + PER_LITERAL]) + ')~"' for i in range(0, len(lines), PER_LITERAL))


def generate(data):
    parts = {name: (data / "chart" / name).read_text(encoding="utf-8") for name in ("chart.html", "chart.css", "chart.js")}
    page = parts["chart.html"].replace("@chart.css@", parts["chart.css"]).replace("@chart.js@", parts["chart.js"])
    head, tail = page.split("@data@")
    text = _emit.header("data/chart/") + (
        '#include "tables/chart_page.h"\n\n'
        "namespace kxstr::tables {\n\n"
        f"const std::string_view kChartHead{{\n{literal(head)}}};\n\n"
        f"const std::string_view kChartTail{{\n{literal(tail)}}};\n\n"
        "} // namespace kxstr::tables\n")
    return {"chart_page.cpp": text}
