#!/usr/bin/python3
"""pictures.py KX: draws docs/images/chart.png, a part of a real chart, with headless Chromium."""
import pathlib
import subprocess
import sys
import tempfile

from selenium import webdriver
from selenium.webdriver.chrome.service import Service

TARGET = pathlib.Path(__file__).resolve().parent.parent / "docs" / "images" / "chart.png"


def main():
    options = webdriver.ChromeOptions()
    for argument in ("--headless=new", "--no-sandbox", "--disable-gpu", "--window-size=1000,790", "--hide-scrollbars"):
        options.add_argument(argument)
    browser = webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)
    try:
        with tempfile.TemporaryDirectory() as folder:
            page = pathlib.Path(folder) / "chart.html"
            subprocess.run([sys.argv[1], "chart", "--set", "1", "-l", "cs", "-o", page], check=True)
            browser.get(page.as_uri())
            browser.find_element("id", "query").send_keys("č")
            browser.find_element("id", "finder").submit()
            browser.execute_script("scrollTo(0, 0)")
            TARGET.parent.mkdir(exist_ok=True)
            browser.save_screenshot(str(TARGET))
    finally:
        browser.quit()
    print(f"{TARGET}: {TARGET.stat().st_size} bytes")


if __name__ == "__main__":
    main()
