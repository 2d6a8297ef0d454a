"""The languages that have a model, from data/detect/languages.txt."""
from pathlib import Path


def read(path):
    """{code: (name, its names in packages, its pages)}"""
    rows = [line.split("; ") for line in path.read_text(encoding="utf-8").splitlines() if line and line[0] != "#"]
    return {code: (name, names.split(), pages) for code, name, names, pages in rows}


LANGUAGES = read(Path(__file__).resolve().parents[2] / "data" / "detect" / "languages.txt")
