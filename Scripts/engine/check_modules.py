#!/usr/bin/env python3
"""Builds the plug-in's modules and a game's module for Windows as the engine's build would: generated code and libraries.

The header tool writes what the engine's own tool puts into classes and beside them; each generated source compiles for
itself, a module's sources glued together. A module exports what its ..._API stands before, and the modules that depend on it,
the last of them the game's (Tests/EngineFit/GameModule), import it. What belongs to the engine is taken as given: nothing here can run.
usage: check_modules.py BUILD-DIRECTORY (with the header tool in it)

Prints one line per fault and ends with status 1 when there is any.
"""

import concurrent.futures
import os
import pathlib
import re
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
TOOLS = "x86_64-w64-mingw32-"
# The engine compiles without run-time types and without exceptions.
OPTIONS = ["-std=c++20", "-O0", "-fno-rtti", "-fno-exceptions", "-Wall", "-Wextra", "-Wshadow", "-Wundef", "-Wconversion",
    "-Wsign-compare", "-Werror"]
ENGINE_HEADERS = sorted((ROOT / "Host/Engine/Public").rglob("Kismet/*.h"))
MODULES = ["Corvane", "CorvaneTransfers"]  # each may use those before it
GAME = ROOT / "Tests/EngineFit/GameModule"
FAULT = re.compile(r"(?:(\S+:\d+):\d+: error: |(\S+\(\d+\)): Error: |(?=undefined reference|multiple definition))(.+)")


class Fault(Exception):
    pass


def describe(about, fault):
    compiler, header_tool, message = fault.groups()
    where = (compiler or header_tool or "").removeprefix(f"{ROOT}/")
    return f"{about}: {message}" + (f" ({where})" if where else "")


def run(command, about=""):
    result = subprocess.run([str(part) for part in command], capture_output=True, text=True, env={**os.environ, "LC_ALL": "C"})
    if result.returncode != 0:
        output = result.stderr + result.stdout
        found = [FAULT.search(line) for line in output.splitlines()]
        raise Fault("\n".join(dict.fromkeys(describe(about, fault) for fault in found if fault)) or output)
    return result.stdout


def doors(module):
    return sorted((ROOT / "Source" / module / "Public").glob("*.h"))


def generate(build, folder):
    tool = build / "Tools/HeaderTool/HeaderTool"

    def reflect(module, headers, references):
        options = [part for header in references for part in ("--reference", header)]
        run([tool, "--engine-shape", "--module", module, "--output", folder / module, *options, *headers], module)

    reflect("Engine", ENGINE_HEADERS, [])
    known = [*ENGINE_HEADERS]
    for module in MODULES:
        reflect(module, doors(module), known)
        known += doors(module)
    reflect("Game", [GAME / "Game.h"], known)


def sources_of(module, folder):
    """What the build compiles for a module: its generated sources each for itself, its own glued together."""
    if module == "Game":
        return [GAME / "Game.cpp", folder / "Game/Game.gen.cpp"]
    unity = folder / f"{module}.Unity.cpp"
    unity.write_text("".join(f'#include "{file}"\n' for file in sorted((ROOT / "Source" / module / "Private").rglob("*.cpp"))))
    return [unity, *sorted((folder / module).glob("*.gen.cpp"))]


def options_of(module, folder):
    """Everybody sees the doors of all modules; a module exports its own names and imports those of the others."""
    roots = [folder / "Engine", folder / "Game", ROOT / "Tests/EngineFit/Shape", GAME, ROOT / "Source" / module / "Private"]
    roots += [root for other in MODULES for root in (folder / other, ROOT / "Source" / other / "Public")]
    roots += [ROOT / "Host" / library / "Public" for library in ("Core", "CoreUObject", "Engine", "HTTP")]
    definitions = [f"{other.upper()}_API=__declspec(dll{'export' if other == module else 'import'})" for other in MODULES]
    for other in MODULES:
        rules = (ROOT / "Source" / other / f"{other}.Build.cs").read_text()
        definitions += re.findall(r'PublicDefinitions\.Add\("([^"]+)"\)', rules)
        definitions += re.findall(r'PrivateDefinitions\.Add\("([^"]+)"\)', rules) if other == module else []
    chosen = dict(text.partition("=")[::2] for text in definitions) # where a platform decides, that of Windows stands last
    return [*(f"-D{name}={value}" for name, value in chosen.items()), *(f"-I{root}" for root in roots)]


def compile_all(folder):
    """Gives the objects of each module, the game's last."""

    def compile_one(module, source):
        target = folder / f"{source.name}.o"
        run([TOOLS + "g++-posix", *OPTIONS, *options_of(module, folder), "-c", source, "-o", target], source.name)
        return target

    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        jobs = {module: [pool.submit(compile_one, module, file) for file in sources_of(module, folder)] for module in [*MODULES, "Game"]}
    faults = [str(job.exception()) for job in sum(jobs.values(), []) if job.exception()]
    if faults:
        raise Fault("\n".join(faults))
    return {module: [job.result() for job in done] for module, done in jobs.items()}


def symbols(objects, option):
    rows = run([TOOLS + "nm", "--format=posix", option, *objects]).splitlines()
    return {row.split()[0] for row in rows if row.startswith("_Z")}


def link(folder, objects):
    # Every symbol that no module here has is the engine's or the library's. Data is not imported without being asked.
    everything = sum(objects.values(), [])
    engine = symbols(everything, "--undefined-only") - symbols(everything, "--defined-only")
    (folder / "Engine.def").write_text("LIBRARY Engine.dll\nEXPORTS\n" + "".join(f"{name}\n" for name in sorted(engine)))
    run([TOOLS + "dlltool", "-d", folder / "Engine.def", "-l", folder / "libEngine.a"], "Engine.def")
    imports = [folder / "libEngine.a"]
    for module, own in objects.items():
        library = folder / f"lib{module}.a"
        run([TOOLS + "g++-posix", "-shared", "-Wl,--disable-auto-import", *own, *reversed(imports), f"-Wl,--out-implib,{library}",
            "-o", folder / f"{module}.dll"], f"{module}.dll")
        imports.append(library)


def main():
    build = pathlib.Path(sys.argv[1]).resolve()
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        try:
            generate(build, folder)
            link(folder, compile_all(folder))
        except Fault as fault:
            print(fault)
            return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
