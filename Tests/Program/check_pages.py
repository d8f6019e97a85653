#!/usr/bin/env python3
"""Prints what a browser would forgive in the HTML pages of a folder: no well-formed XML, ids given twice, dead links."""

import pathlib
import sys
from xml.etree import ElementTree

folder = pathlib.Path(sys.argv[1])
ids, links = {}, {}
for page in folder.glob("*.html"):
    try:
        elements = list(ElementTree.parse(page).iter())
    except ElementTree.ParseError as fault:
        print(f"{page.name}: {fault}")
        elements = []
    ids[page.name] = [element.get("id") for element in elements if element.get("id")]
    links[page.name] = [element.get(name) for element in elements for name in ("href", "src") if element.get(name)]
    if not page.read_text().startswith("<!DOCTYPE html>\n") or len(set(ids[page.name])) < len(ids[page.name]):
        print(f"{page.name}: no doctype, or an id is given twice")

for page, targets in links.items():
    for file, _, part in (target.partition("#") for target in targets):
        if not (folder / (file or page)).is_file() or (part and part not in ids[file or page]):
            print(f"{page}: {file}#{part} leads nowhere")
    if page != "index.html" and page not in (target.partition("#")[0] for target in links["index.html"]):
        print(f"{page}: the index does not name it")
