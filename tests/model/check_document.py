"""Reads a document strictly and holds it against what was put into it.

Usage: check_document.py DOCUMENT EXPECTED
EXPECTED holds, for each style and each closed by a zero byte: its identifier, the bits of its date,
its name and its code.
"""

import json
import struct
import sys


def refuse(text):
    raise ValueError(text)


def fields(pairs):
    return dict(pairs) if len(dict(pairs)) == len(pairs) else refuse("a key occurs twice")


text = open(sys.argv[1], "rb").read().decode("utf-8", "strict")
values = []
for style in json.loads(text, parse_constant=refuse, object_pairs_hook=fields)["styles"]:
    assert type(style["uniqueID"]) is int
    bits = struct.unpack("<Q", struct.pack("<d", style["dateModified"]))[0]
    code = style["styleData"]["sections"][0]["code"]
    values += [str(style["uniqueID"]), str(bits), style["styleData"]["name"], code]
    assert style["exclURL"] == [] and "currentValue" not in style["userVariables"][1]
    assert style["userVariables"][1]["rangeOptions"]["max"] == sys.float_info.max
assert "\0".join(values + [""]).encode() == open(sys.argv[2], "rb").read()
