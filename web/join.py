#!/usr/bin/env python3
"""join.py WEB MODULE.js PAGE: joins the page's parts and the compiled module into one HTML file, and lets no other script
or style run in it: its Content-Security-Policy names theirs by their hashes."""
import base64
import hashlib
import pathlib
import sys


def hash_of(text):
    return "'sha256-" + base64.b64encode(hashlib.sha256(text.encode()).digest()).decode() + "'"


def main():
    web, module, page = map(pathlib.Path, sys.argv[1:])
    style = (web / "style.css").read_text(encoding="utf-8")
    scripts = {"@module@": module.read_text(encoding="utf-8"), "@app@": (web / "app.js").read_text(encoding="utf-8")}
    if any("</script" in text for text in scripts.values()):
        sys.exit("a script would end the element that it stands in")
    text = (web / "index.html").read_text(encoding="utf-8")
    text = text.replace("@policy@", f"default-src 'none'; style-src {hash_of(style)}; "
                        f"script-src 'wasm-unsafe-eval' {' '.join(map(hash_of, scripts.values()))}; "
                        "base-uri 'none'; form-action 'none'")
    for place, part in {"@style@": style, "@wasm@": base64.b64encode(module.with_suffix(".wasm").read_bytes()).decode(),
                        **scripts}.items():
        text = text.replace(place, part)
    page.parent.mkdir(parents=True, exist_ok=True)
    page.write_text(text, encoding="utf-8")
    print(f"{page}: {len(text.encode())} bytes")


if __name__ == "__main__":
    main()
