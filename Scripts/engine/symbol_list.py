#!/usr/bin/env python3
"""Reads the list of engine interfaces beside this script, and writes its signatures as assertions in C++.

Nothing of what is written runs; a stand-in that differs from the list is an error of the compiler. usage: symbol_list.py OUTPUT
"""

import fnmatch
import pathlib
import re
import sys

LIST = pathlib.Path(__file__).with_name("symbols.txt")
SIGNATURE = re.compile(r"(?:(static|exact) )?(.+?) ?\b(operator.{1,2}?|\w+(?:<\w+>)?)\((.*)\)( const)?")
VARIABLE = re.compile(r"(static )?(\S+) (\w+)")

START = """// Written from the list of engine interfaces, Scripts/engine/symbols.txt.
{includes}
#include <type_traits>
#include <utility>

namespace EngineSignatures
{{
	DECLARE_DYNAMIC_MULTICAST_DELEGATE_TwoParams(FReceivedEvent, const FString, text, const TArray<FString>&, texts);

	class FReceiver : public UObject
	{{
	public:
		void hear(const FString, const TArray<FString>&);
	}};

	struct FOwnArchive : FArchive
	{{
		using FArchive::SetIsLoading;
	}};

{assertions}
}} // namespace EngineSignatures
"""


def operand(kind):
    return f"std::declval<{kind}>()"


def split(text, separator):
    """The parts between separators that stand in no brackets."""
    parts, depth = [""], 0
    for char in text:
        depth += (char in "(<") - (char in ")>" and not parts[-1].endswith("-"))
        if char == separator and depth == 0:
            parts.append("")
        else:
            parts[-1] += char
    return [part.strip() for part in parts if part.strip()]


def assertion(owner, entry):
    """The name of one entry, and what holds the stand-in to its signature, or nothing when it has none."""
    if found := VARIABLE.fullmatch(entry):
        form, kind, name = found.groups()
        variable = f"{owner}::{name}" if form else f"{operand(owner)}.{name}"
        return name, f"std::is_same_v<decltype({variable}), {kind}>"
    found = SIGNATURE.fullmatch(entry) if " " in entry else None
    if not found:
        return entry, None
    form, result, name, parameters, const = found.groups(default="")
    if form == "exact":
        return name, f"std::is_same_v<decltype(&{owner}::{name}), {result} ({owner}::*)({parameters}){const}>"
    before = "" if owner == "free" else f"{owner}::" if form else operand(f"{const} {owner}&".strip()) + "."
    call = f"{before}{name}({', '.join(operand(kind) for kind in split(parameters, ','))})"
    return name.partition("<")[0], f"requires {{ {call}; }}" if result == "auto" else f"std::is_same_v<decltype({call}), {result}>"


class EngineList:
    """What the list says: which header brings a symbol, on which headers' back a header comes along, and what is asserted."""

    def __init__(self, text):
        self.header_of = {}
        self.modules = {}
        self.carriers = {}
        self.assertions = []  # header, name, condition
        for line in filter(None, (raw.split("#")[0].strip() for raw in text.splitlines())):
            if line.startswith("["):
                header, module, carriers = re.fullmatch(r"\[(\S+)\]\s+(\w+)(?:\s+via\s+(.+))?", line).groups()
                self.modules[header] = module
                self.carriers[header] = (carriers or "").split()
            elif line.startswith("! "):
                self.assertions.append((header, "", line[2:]))
            elif ": " in line:
                self.add(header, *line.split(": ", 1))
            else:
                self.header_of.update((name, header) for name in line.split())

    def add(self, header, owner, entries):
        scope = owner.partition("<")[0]
        prefix = "" if owner == "free" else f"{scope}::"
        self.header_of[scope] = header
        for entry in split(entries, ";"):
            name, condition = assertion(owner, entry)
            self.header_of[prefix + name] = header
            if condition:
                self.assertions.append((header, name, condition))

    def brings(self, include, header):
        """Whether a file that includes `include` may lean on what `header` offers."""
        return include == header or any(fnmatch.fnmatch(include, carrier) for carrier in self.carriers[header])

    def asserted(self):
        return {word for _, name, condition in self.assertions for word in (re.findall(r"\w+", condition) if not name else [name])}


def main():
    engine = EngineList(LIST.read_text())
    headers = sorted({header for header, *_ in engine.assertions})
    includes = "".join(f'#include "{header}"\n' for header in headers)
    assertions = "\n".join(f"\tstatic_assert({condition});" for *_, condition in engine.assertions)
    pathlib.Path(sys.argv[1]).write_text(START.format(includes=includes, assertions=assertions))


if __name__ == "__main__":
    main()
