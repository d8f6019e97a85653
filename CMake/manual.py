#!/usr/bin/env python3
"""Writes the manual page of the command: a template, filled in with what the command says of itself.

usage: manual.py TEMPLATE PROGRAM PAGE
"""

import pathlib
import re
import subprocess
import sys

SECTION = re.compile(r"([A-Z][A-Za-z]+):")
ROW = re.compile(r"  (\S.*?)(?: {2,}(\S.*))?")
WORDS_OF_ROFF = {"\\": r"\e", "-": r"\-", "'": r"\(aq", "`": r"\(ga", "^": r"\(ha", "~": r"\(ti"}


def ask(program, *arguments):
    return subprocess.run([program, *arguments], check=True, capture_output=True, text=True).stdout


def escape(text):
    escaped = "".join(WORDS_OF_ROFF.get(character, character) for character in text)
    return r"\&" + escaped if escaped.startswith(".") else escaped


def emphasise(synopsis):
    """Bold for what is typed as it stands, italic for what stands for something else."""
    return re.sub(r"(?<![\w-])(--?[a-z][\w-]*|[A-Z][A-Z=:]+)",
        lambda word: fr"\f{'B' if word[1].startswith('-') else 'I'}{escape(word[1])}\fR", synopsis.replace(",", ", "))


class Help:
    """What the command prints about itself or one of its verbs, taken apart."""

    def __init__(self, text):
        self.about = []  # lines that stand in no section
        self.usage = ""
        self.sections = {}  # title -> [[what is typed, its text], ...]
        rows = None
        for line in text.splitlines():
            if line.startswith("Usage: "):
                self.usage = line.removeprefix("Usage: ")
            elif section := SECTION.fullmatch(line):
                rows = self.sections.setdefault(section[1], [])
            elif rows is not None and (row := ROW.fullmatch(line)):
                rows.append([row[1], row[2] or ""])
            elif rows and line.startswith("   "):
                rows[-1][1] += " " + line.strip()
            elif line:
                rows = None
                self.about.append(line)

    def rows(self, *titles):
        return [row for title in titles for row in self.sections.get(title, [])]


def table(rows):
    return "".join(f".TP\n{emphasise(typed)}\n{escape(text.strip())}\n" for typed, text in rows)


def verb_part(verb):
    own = [row for row in verb.rows("Positionals", "Options") if "--help" not in row[0]]
    return f".SS {emphasise(verb.usage)}\n{escape('. '.join(verb.about))}.\n{table(own)}"


def main():
    template, program, page = sys.argv[1:]
    command = Help(ask(program, "--help"))
    verbs = [Help(ask(program, "help", name)) for name, _ in command.rows("Subcommands")]
    if not verbs:
        sys.exit("The help of the command names no verbs.")
    parts = {"VERSION": ask(program, "--version").strip(), "ABOUT": escape(command.about[0]),
        "SYNOPSIS": "\n.br\n".join(emphasise(verb.usage) for verb in verbs),
        "OPTIONS": table(command.rows("Options")), "VERBS": "".join(map(verb_part, verbs))}
    text = pathlib.Path(template).read_text()
    pathlib.Path(page).write_text(re.sub(r"@(\w+)@\n?", lambda name: parts[name[1]].rstrip() + name[0][len(name[1]) + 2:], text))


if __name__ == "__main__":
    main()
