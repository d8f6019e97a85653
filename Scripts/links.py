#!/usr/bin/env python3
"""Checks that the relative links of documents lead somewhere, headings and parts of pages among it.

As a program it looks at all Markdown and HTML files of a folder, whose links must not lead out of it. Prints one line per
fault and ends with status 1 when there is any. usage: links.py FOLDER
"""

import html
import pathlib
import re
import sys
import urllib.parse

BLOCK = re.compile(r"^```.*?^```$", re.MULTILINE | re.DOTALL)
MARKDOWN_LINK = re.compile(r"\]\(([^)\s]+)\)")
HTML_LINK = re.compile(r'\s(?:href|src)="([^"]*)"')
HEADING = re.compile(r"^#+ (.+)$", re.MULTILINE)
ID = re.compile(r'\sid="([^"]*)"')


def links(document):
    text = document.read_text("utf-8")
    if document.suffix == ".md":
        return MARKDOWN_LINK.findall(BLOCK.sub("", text))
    return [html.unescape(link) for link in HTML_LINK.findall(text)]


def anchors(document):
    text = document.read_text("utf-8")
    if document.suffix == ".md":
        return {re.sub(r"[^\w -]", "", title.lower()).replace(" ", "-") for title in HEADING.findall(text)}
    return {html.unescape(name) for name in ID.findall(text)}


def faults(document, root):
    """Says of each bad link of one document what is wrong; nothing outside of the folder root is there."""
    for link in links(document):
        if re.match(r"[a-z]+:", link):
            continue
        name, _, anchor = urllib.parse.unquote(link).partition("#")
        target = (document.parent / name).resolve() if name else document
        if not target.exists() or not target.is_relative_to(root.resolve()):
            yield f"{document.relative_to(root)}: {link} leads nowhere"
        elif anchor and anchor not in anchors(target):
            yield f"{document.relative_to(root)}: {link} names no heading"


def main():
    root = pathlib.Path(sys.argv[1]).resolve()
    found = [fault for file in sorted(root.rglob("*")) if file.suffix in (".md", ".html") for fault in faults(file, root)]
    print("\n".join(found), end="\n" if found else "")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
