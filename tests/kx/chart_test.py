#!/usr/bin/env python3
"""chart_test.py KX: what the pages of `kx chart` hold, against the tables and Python's own. How they look: tests/browser."""
import html.parser
import json
import pathlib
import re
import tempfile
import unicodedata
import unittest

from kx_tool import KxTest

DATA = pathlib.Path(__file__).resolve().parents[2] / "data" / "charset" / "kxset.txt"
CODECS = {"932": "cp932", "936": "gbk", "949": "cp949", "950": "cp950"} | {
    page: f"cp{page}" for page in "437 737 775 850 852 855 857 860 861 862 863 865 866 869 1250 1251 1252 1253 1254".split()}


class Page(html.parser.HTMLParser):
    """The page's data; that its elements close in order, and that it takes nothing from elsewhere."""
    def __init__(self, text):
        super().__init__()
        self.open, self.data = [], ""
        self.feed(text)
        self.close()
        assert not self.open, self.open

    def handle_starttag(self, tag, attributes):
        assert not {"src", "href", "onclick"} & dict(attributes).keys(), (tag, attributes)
        self.wanted = ("id", "data") in attributes
        if tag not in ("meta", "input"):
            self.open.append(tag)

    def handle_endtag(self, tag):
        assert self.open.pop() == tag, tag
        self.wanted = False

    def handle_data(self, data):
        if self.open and self.wanted:
            self.data += data


class Chart(KxTest):
    def chart(self, arguments=""):
        text = Page(self.output(*f"chart {arguments}".split()).decode()).data
        self.assertNotIn("<", text)
        data = json.loads(text)
        for chart in data["charts"]:
            for cell in chart["cells"]:
                cell[3] = cell[3] if cell[3] != 0 else data["ideograph"] + f"{cell[2]:04X}"
                cell[8] = {code: [data["pages"][int(page)][0] for page in pages.split(",")]
                           for code, pages in re.findall("([0-9A-F]+):([0-9,]+)", cell[8])}
        return data

    def test_all_sets(self):
        cells = {cell[1]: cell for chart in self.chart()["charts"] for cell in chart["cells"]}
        tables = {}
        for row in DATA.read_text().splitlines():
            if row.startswith("0x"):
                kx, unicode, name = row.split(maxsplit=2)
                tables[int(kx, 16)] = [int(unicode, 16), name]
        self.assertEqual({kx: cell[3] for kx, cell in cells.items() if 0x100 <= kx < 0xF00 and kx >> 8 != 12},
                         {kx: name for kx, (_, name) in tables.items()})
        self.assertEqual([sum(kx >> 8 == number for kx in cells) for number in (0, 12)], [95, 255])
        for kx, cell in cells.items():
            unicode, name = cell[2], cell[3]
            if kx in tables and unicode != tables[kx][0]: # an Arabic letter in the place of its isolated form
                self.assertEqual(unicodedata.normalize("NFKC", chr(tables[kx][0])), chr(unicode))
            elif kx >= 0x2400 and not 0xE000 <= unicode <= 0xF8FF:
                self.assertEqual(name, unicodedata.name(chr(unicode)))
            for code, pages in cell[8].items():
                for page in CODECS.keys() & set(pages):
                    single = len(code) == 2 and page in ("932", "936", "949", "950")
                    if int(code, 16) >= 0x80 and not single and kx >= 0x100 and kx >> 8 != 12 and not 0xE000 <= unicode <= 0xF8FF:
                        self.assertEqual(bytes.fromhex(code).decode(CODECS[page]), chr(unicode), (f"{kx:04X}", page))
        self.assertGreater(len(cells), 40000)
        small, capital = cells[0x129], cells[0x128]
        self.assertEqual(small[4:7] + capital[4:7], [0x128, 0x65, 0x106, 0x129, 0x45, 0x106])
        wide = [cell for cell in cells.values() if cell[2] == 0xFF21]  # in the sets of all four countries
        self.assertEqual([cells[cell[4]][2] for cell in wide], 4 * [0xFF41])

    def test_languages(self):
        def values(language):
            cells = [cell for chart in self.chart(f"--set {0 if language == 'ja' else 1} -l {language}")["charts"]
                     for cell in chart["cells"]]
            return {chr(cell[2]): cell[7] for cell in cells}

        plain, czech, german = values("en"), values("cs"), values("de")
        self.assertEqual(plain["č"][0], plain["ç"][0])
        self.assertGreater(czech["č"][0], czech["ç"][0])
        self.assertRegex(german["ß"][0], r"^(..) \1$")
        self.assertRegex(values("ja")["a"][0], r"^[0-9A-F]{4}$")

    def test_pages(self):
        (chart,) = self.chart("--page 852")["charts"]
        self.assertEqual([cell[0] for cell in chart["cells"]], list(range(256)))
        self.assertEqual("".join(chr(cell[2]) for cell in chart["cells"][0x80:]), bytes(range(0x80, 0x100)).decode("cp852"))
        charts = {chart["title"]: chart["cells"] for chart in self.chart("--page 932")["charts"]}
        self.assertEqual(charts["Code page 932"][0x88][3], "lead byte")
        self.assertEqual([chr(cell[2]) for cell in charts["Code page 932, lead byte 88"]][:2], ["亜", "唖"])

    def test_command_line(self):
        for arguments, message in (("--set 20", "no characters in set 20"), ("--set 1x", "'1x' is no number"),
                                   ("--set 300", "no set '300'"), ("--page 7", "no code page '7'"),
                                   ("--page utf-8", "no code page 'utf-8'"), ("--set 1 --page 852", "not both"),
                                   ("-l xx", "no language 'xx'"), ("file", "takes no files")):
            self.assert_fails(*f"chart {arguments}".split(), message=message, status=2)
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder) / "chart.html"
            self.output("chart", "--set", "1", "-o", path)
            self.assertEqual(path.read_bytes(), self.output("chart --set 1"))


if __name__ == "__main__":
    unittest.main()
