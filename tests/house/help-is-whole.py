#!/usr/bin/python3
"""Every page and picture of the help is compiled in, and leads only to what is compiled in and used."""

import os
import sys
import xml.etree.ElementTree as ElementTree
from html.parser import HTMLParser

RESOURCES = sys.argv[1]
compiled_in = {file.text for file in ElementTree.parse(f"{RESOURCES}/resources.qrc").iter("file")}
reached, broken = {"help/index.html"}, []


class Page(HTMLParser):
    def handle_starttag(self, tag, attributes):
        values = dict(attributes)
        if tag == "img" and not values.get("alt"):
            broken.append(f"a picture without words: {values['src']}")
        for name in ("href", "src"):
            if name in values:
                reached.add("help/" + values[name].partition("#")[0])


for page in sorted(os.listdir(f"{RESOURCES}/help")):
    if page.endswith(".html"):
        with open(f"{RESOURCES}/help/{page}", encoding="utf-8") as file:
            Page().feed(file.read())
there = {f"help/{name}" for name in os.listdir(f"{RESOURCES}/help")}
broken += [f"not compiled in: {name}" for name in sorted(reached - compiled_in)]
broken += [f"nothing leads to: {name}" for name in sorted(there - reached)]
sys.exit("\n".join(broken) or 0)
