#!/usr/bin/python3
"""browser_test.py KX PAGE: the charts of `kx chart`, and the page of web/, in headless Chromium. Ends with 77 without it."""
import functools
import http.server
import pathlib
import shutil
import subprocess
import sys
import tempfile
import threading
import time
import unittest

try:
    from selenium import webdriver
    from selenium.webdriver.chrome.service import Service
except ImportError:
    webdriver = None
if webdriver is None or not (shutil.which("chromium") and shutil.which("chromedriver")):
    print("skipped: needs chromium, chromium-driver and python3-selenium (`tools/deps.sh browser`)")
    sys.exit(77)

KX, PAGE = (pathlib.Path(argument).resolve() for argument in (sys.argv.pop(1), sys.argv.pop(1)))
TEXTS = pathlib.Path(__file__).resolve().parents[2] / "examples" / "texts"
DROP = """const files = new DataTransfer();
files.items.add(new File([new Uint8Array(arguments[1])], arguments[0]));
document.dispatchEvent(new DragEvent("drop", {dataTransfer: files, cancelable: true}));"""
FOLDER = pathlib.Path(tempfile.mkdtemp(prefix="kxstr-browser-"))


class Quiet(http.server.SimpleHTTPRequestHandler):
    def log_message(self, *_):
        pass

    def do_GET(self):
        if self.path == "/favicon.ico":  # every browser asks
            self.send_response(204)
            self.end_headers()
        else:
            super().do_GET()


def wait_for(what, seconds=20):
    end = time.monotonic() + seconds
    while not (found := what()):
        if time.monotonic() > end:
            raise AssertionError("nothing came of it")
        time.sleep(0.05)
    return found


class BrowserTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        options = webdriver.ChromeOptions()
        for argument in ("--headless=new", "--no-sandbox", "--disable-gpu", "--window-size=1200,900", "--lang=en"):
            options.add_argument(argument)
        options.add_experimental_option("prefs", {"download.default_directory": str(FOLDER)})
        options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
        cls.browser = webdriver.Chrome(service=Service(shutil.which("chromedriver")), options=options)
        cls.addClassCleanup(cls.browser.quit)

    def tearDown(self):
        self.assertEqual(self.browser.get_log("browser"), [])  # errors of scripts, and what the page's policy forbids

    def at(self, name):
        return self.browser.find_element("id", name)

    def script(self, text):
        return self.browser.execute_script("return " + text)


class Chart(BrowserTest):
    def open(self, *arguments):
        path = FOLDER / "chart.html"
        subprocess.run([KX, "chart", *arguments, "-o", path], check=True)
        self.browser.get(path.as_uri())

    def search(self, query):
        self.at("query").clear()
        self.at("query").send_keys(query)
        found = self.script("[...document.querySelectorAll('#results button')].map(one => one.textContent)")
        self.at("query").submit()
        return found

    def test_search(self):
        self.open("-l", "cs")
        self.assertGreater(self.script("document.querySelectorAll('td[data-at]').length"), 40000)
        for query, code, name in (
            ("č", "0163", "LATIN SMALL LETTER C WITH CARON"), ("U+20AC", "0448", "EURO SIGN"),
            ("0a0e", "0A0E", "CYRILLIC CAPITAL LETTER ZHE"), ("8abf", None, "CJK UNIFIED IDEOGRAPH-8ABF"),
            ("dotless j", "0119", "Latin small letter dotless j"), ("hiragana small a", None, "HIRAGANA LETTER SMALL A"),
        ):
            with self.subTest(query):
                found = [one for one in self.search(query) if one.endswith(name) and (code or "") in one]
                self.assertTrue(found)
        self.search("č")
        about = self.at("about").text
        for fact in ("0163", "U+010D", "0162 Č", "0063 c + 0113", "Czech (CZ)", "9F in 852", "E8 in 1250"):
            self.assertIn(fact, about)
        self.assertEqual(self.search("no such name"), [])

    def test_looks(self):
        def picture(**features):
            self.browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {
                "media": features.pop("media", ""), "features": [{"name": "prefers-color-scheme", "value": features["scheme"]}]})
            return self.browser.get_screenshot_as_png(), self.script("getComputedStyle(document.body).backgroundColor")

        self.open("--set", "1")
        (light, paper), (dark, night) = picture(scheme="light"), picture(scheme="dark")
        self.assertGreater(min(len(light), len(dark)), 30000)  # a blank page of this size has less than a tenth
        self.assertEqual((paper, night), ("rgb(255, 255, 255)", "rgb(22, 24, 27)"))
        self.assertNotEqual(light, dark)
        picture(scheme="dark", media="print")
        self.assertEqual(self.script("getComputedStyle(document.getElementById('finder')).display"), "none")
        self.assertEqual(self.script("getComputedStyle(document.body).backgroundColor"), paper)
        picture(scheme="light")
        # By the keyboard: into the grid, to the right, over what is empty, and choose.
        self.script("document.querySelector('td[data-at]').focus()")
        for key in ("\ue014", "\ue007"):
            self.browser.switch_to.active_element.send_keys(key)
        self.assertIn("0110", self.at("about").text)
        self.open("--page", "932")
        self.assertIn("88A0", [cell for cell in self.script("[...document.querySelectorAll('.code')].map(one => one.textContent)")])


class Convert(BrowserTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), functools.partial(Quiet, directory=PAGE.parent))
        cls.addClassCleanup(cls.server.server_close)
        cls.addClassCleanup(cls.server.shutdown)
        threading.Thread(target=cls.server.serve_forever, daemon=True).start()

    def open(self, path, dropped=False):
        self.browser.get(f"http://127.0.0.1:{self.server.server_port}/{PAGE.name}" if dropped else PAGE.as_uri())
        wait_for(lambda: self.at("file").is_enabled())
        if dropped:
            self.browser.execute_script(DROP, path.name, list(path.read_bytes()))
        else:
            self.at("file").send_keys(str(path))
        wait_for(lambda: self.at("chosen").is_displayed())

    def download(self, name):
        target = FOLDER / name
        target.unlink(missing_ok=True)
        self.at("download").click()
        return wait_for(lambda: target.exists() and target.read_bytes())

    def test_files(self):
        for name, page in (("czech-852", "852"), ("japanese-932", "932")):
            with self.subTest(name):
                self.open(TEXTS / f"{name}.txt")
                wanted = (TEXTS / "utf-8" / f"{name}.txt").read_bytes()
                guesses = self.script("[...document.querySelectorAll('.guess')].map(one => [one.querySelector('input').value, "
                                      "one.querySelector('pre').textContent])")
                self.assertEqual(guesses[0], [page, wanted.decode()])
                self.assertEqual(len(guesses), 3)
                self.assertEqual(self.script("document.getElementById('text').textContent"), wanted.decode())
                self.assertEqual(self.at("result").text, "Every character was converted.")
                self.assertEqual(self.download(f"{name}.utf8.txt"), wanted)

    def test_what_does_not_convert(self):
        path = FOLDER / "broken.txt"
        text = "日本語のテキスト\nは二行あります"
        path.write_bytes(text.encode("cp932") + b"\x85\x9f!")
        self.open(path, dropped=True)
        self.assertIn("1 place could not be converted", self.at("result").text)
        self.assertIn("line 2, byte 31: 85 9F", self.script("document.getElementById('places').textContent"))
        self.assertEqual(self.download("broken.utf8.txt").decode(), text + "\ufffd!")
        # Another page, by hand.
        self.browser.find_element("css selector", "#page option[value='437']").click()
        self.assertEqual(self.download("broken.utf8.txt").decode(), path.read_bytes().decode("cp437"))
        # All that the page could load or send is forbidden by its policy.
        self.assertIn("default-src 'none'", self.script("document.querySelector('meta[http-equiv]').content"))
        self.assertEqual(self.script("performance.getEntriesByType('resource').length"), 0)


if __name__ == "__main__":
    try:
        unittest.main(verbosity=2)
    finally:
        shutil.rmtree(FOLDER, ignore_errors=True)
