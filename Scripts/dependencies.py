#!/usr/bin/env python3
"""Draws which target of the build links which, as Docs/dependencies.md; --check instead compares that page with the build.

Reads what CMake knows of the configured folder build/default. What follows from other links is left out.
"""

import pathlib
import re
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
PAGE = ROOT / "Docs/dependencies.md"
ROOTS = ["corvane", "HeaderTool"]
MERGED = {"ProgramLib": "corvane", "HeaderToolLib": "HeaderTool"}  # libraries that exist for the tests' sake
LINK = re.compile(r'^\s*"node\d+" -> "node\d+".*// (.+) -> (.+)$', re.MULTILINE)
TEXT = """# Dependencies

What links what, as the build has it; `Scripts/dependencies.py` draws this page, and `Scripts/check.sh` fails when it is
out of date. Boxes are targets of this project, round ones come from elsewhere. Links that follow from others are left out.

"""


def name_of(target):
    """None for what is no target of anybody: options, and the bare files behind a package."""
    return None if target.startswith(("-", "/")) or target == "CorvaneBuildOptions" else MERGED.get(target, target)


def links():
    with tempfile.TemporaryDirectory() as folder:
        graph = pathlib.Path(folder) / "graph.dot"
        subprocess.run(["cmake", f"--graphviz={graph}", ROOT / "build/default"], check=True, stdout=subprocess.DEVNULL)
        found = {}
        for user, used in LINK.findall(graph.read_text()):
            user, used = name_of(user), name_of(used)
            if user and used and user != used:
                found.setdefault(user, set()).add(used)
        return found


def reached(graph, start):
    seen, queue = set(), [start]
    while queue:
        for used in graph.get(queue.pop(), ()):
            if used not in seen:
                seen.add(used)
                queue.append(used)
    return seen


def without_implied(graph):
    """Keeps a link only when no other link of the same user leads there as well."""
    return {user: {used for used in all_used if not any(used in reached(graph, other) for other in all_used)}
        for user, all_used in graph.items()}


def draw(graph):
    names = sorted(set(ROOTS).union(*(reached(graph, root) for root in ROOTS)), key=str.lower)
    ids = {name: re.sub(r"\W+", "_", name) for name in names}
    own = lambda name: "::" not in name
    lines = ["```mermaid", "flowchart TD"]
    lines += [f'    {ids[name]}["{name}"]' if own(name) else f'    {ids[name]}(["{name}"])' for name in names]
    lines += [f"    {ids[user]} --> {ids[used]}" for user in names for used in sorted(graph.get(user, ()), key=str.lower)]
    return "\n".join([*lines, "```", ""])


def main():
    page = TEXT + draw(without_implied(links()))
    if sys.argv[1:] != ["--check"]:
        PAGE.write_text(page)
        return 0
    if PAGE.read_text() == page:
        return 0
    print("Docs/dependencies.md is not what the build says: run Scripts/dependencies.py")
    return 1


if __name__ == "__main__":
    sys.exit(main())
