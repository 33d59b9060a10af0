#!/usr/bin/env python3
"""Prints a line per style of a style database: name, mode, sections, bytes of compiled CSS.

Usage: describe_document.py DOCUMENT [WANTED]
Exits 0 only if there are at least WANTED styles (default 1) and every one of them was compiled.
"""

import json
import sys


def mode(style):
    return {"": "placeholders", "uso": "placeholders", "default": "custom properties"}.get(
        style["preprocessor"].lower(), style["preprocessor"].lower()
    )


def compiled(style):
    """The texts that a compilation has left in the style; none where it has not been compiled."""
    data = style["styleData"]
    if "compSections" in data:
        return [section["code"] for section in data["compSections"]]
    return [s["compiledcode"] for s in data["sections"] if "compiledcode" in s]


def main():
    with open(sys.argv[1], encoding="utf-8") as document:
        styles = json.load(document)["styles"]
    wanted = int(sys.argv[2]) if len(sys.argv) > 2 else 1
    good = len(styles) >= wanted
    for style in styles:
        texts = compiled(style)
        size = sum(len(text.encode()) for text in texts)
        good = good and size > 0
        print(
            f"{style['styleData']['name']}: {mode(style)}, "
            f"{len(style['styleData']['sections'])} sections, {len(style['userVariables'])} variables, "
            + (f"{size} bytes of compiled CSS" if texts else "not compiled")
        )
    return 0 if good else 1


sys.exit(main())
