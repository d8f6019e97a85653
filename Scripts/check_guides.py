#!/usr/bin/env python3
"""Checks that the code in the guides is that of the examples, that the links of all documents lead somewhere, and that the
page about status codes has every code that the module makes and every error and warning that it logs.

A block of code follows a line "[Examples/NAME](../../Examples/NAME):" and holds whole lines that stand there in a row.
Prints one line per fault and ends with status 1 when there is any.
"""

import pathlib
import re
import sys

import links

ROOT = pathlib.Path(__file__).resolve().parent.parent
GUIDES = ROOT / "Docs" / "guides"
BLOCK = re.compile(r"^```(lua|cpp)\n(.*?)^```$", re.MULTILINE | re.DOTALL)
SOURCE = re.compile(r"\[(Examples/[^\]]+)\]\(\.\./\.\./\1\):\n\n\Z")
MODULE = ROOT / "Source" / "Corvane" / "Private"
OWN_CODE = re.compile(r"/\*\* [^\n]* \*/\n\tconstexpr int32 \w+ = (\d+);")
LOGGED = re.compile(r'UE_LOG\(\s*\w+,\s*(?:Error|Warning),\s*TEXT\(\s*"((?:[^"\\]|\\.)*)"')
CODE_ROW = re.compile(r"^\| (\d+) \|", re.MULTILINE)
SENTENCE_ROW = re.compile(r"^\| `([^`]+)` \| (?:-|[45]00|the server)", re.MULTILINE)


def place(file):
    return file.relative_to(ROOT).as_posix()


def check_blocks(guide):
    text = guide.read_text()
    blocks = list(BLOCK.finditer(text))
    if not blocks and guide.name != "README.md":
        yield f"{place(guide)}: no code of an example"
    for block in blocks:
        line = text.count("\n", 0, block.start()) + 1
        source = SOURCE.search(text, 0, block.start())
        if not source or not (ROOT / source[1]).is_file():
            yield f"{place(guide)}:{line}: the line before the code names no example"
        elif "\n" + block[2] not in "\n" + (ROOT / source[1]).read_text():
            yield f"{place(guide)}:{line}: this code does not stand in {source[1]}"


def differences(told, there, what):
    yield from (f"Docs/guides/status-codes.md: {what} is missing: {one}" for one in sorted(there - told))
    yield from (f"Docs/guides/status-codes.md: {what} is of no source: {one}" for one in sorted(told - there))


def check_codes():
    page = (GUIDES / "status-codes.md").read_text()
    codes = OWN_CODE.findall((MODULE / "Rules" / "StatusCodes.h").read_text())
    sources = [file.read_text() for file in MODULE.rglob("*") if file.suffix in (".h", ".cpp")]
    sentences = {sentence for source in sources for sentence in LOGGED.findall(source)}
    yield from differences(set(CODE_ROW.findall(page)), set(codes), "status")
    yield from differences(set(SENTENCE_ROW.findall(page)), sentences, "sentence")


def main():
    guides = sorted(GUIDES.glob("*.md"))
    documents = [*guides, *sorted((ROOT / "Docs").glob("*.md")), *sorted(ROOT.glob("*.md"))]
    index = (GUIDES / "README.md").read_text()
    faults = [fault for guide in guides for fault in check_blocks(guide)]
    faults += [fault for document in documents for fault in links.faults(document, ROOT)]
    faults += check_codes()
    faults += [f"{place(guide)}: not in the list of guides" for guide in guides if f"({guide.name})" not in index and guide.name != "README.md"]
    for fault in faults:
        print(fault)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
