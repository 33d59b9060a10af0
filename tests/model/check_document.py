"""Reads a document strictly and holds it against what was put into it.

Usage: check_document.py DOCUMENT EXPECTED
A line of EXPECTED is a style: its identifier, the bits of its date, its name and code in hex.
"""

import json
import struct
import sys


def refuse(text):
    raise ValueError(text)


def fields(pairs):
    if len(dict(pairs)) != len(pairs):
        refuse("a key occurs twice")
    return dict(pairs)


with open(sys.argv[1], encoding="utf-8", errors="strict") as document:
    text = document.read()
styles = json.loads(text, parse_constant=refuse, object_pairs_hook=fields)["styles"]
with open(sys.argv[2], encoding="ascii") as expected:
    lines = [line.split() for line in expected]

assert len(styles) == len(lines)
for style, (identifier, date, name, code) in zip(styles, lines):
    assert type(style["uniqueID"]) is int and style["uniqueID"] == int(identifier)
    assert struct.unpack("<Q", struct.pack("<d", style["dateModified"]))[0] == int(date)
    assert style["styleData"]["name"].encode().hex() == name[1:]
    assert style["styleData"]["sections"][0]["code"].encode().hex() == code[1:]
    assert style["exclURL"] == [] and "currentValue" not in style["userVariables"][1]
    assert style["userVariables"][1]["rangeOptions"]["max"] == sys.float_info.max
