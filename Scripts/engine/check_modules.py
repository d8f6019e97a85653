#!/usr/bin/env python3
"""Builds the plug-in and a game's module for Windows as the engine's build would: generated code and two libraries.

The header tool writes what the engine's own tool puts into classes and beside them; each generated source compiles for
itself, the module's sources glued together. The plug-in exports what CORVANE_API stands before, and the game's module
(Tests/EngineFit/GameModule) imports it. What belongs to the engine is taken as given: nothing here can run.
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
MODULE_HEADERS = sorted((ROOT / "Source/Corvane/Public").glob("*.h"))
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


def generate(build, folder):
    tool = build / "Tools/HeaderTool/HeaderTool"

    def reflect(module, headers, references):
        options = [part for header in references for part in ("--reference", header)]
        run([tool, "--engine-shape", "--module", module, "--output", folder / module, *options, *headers], module)

    reflect("Engine", ENGINE_HEADERS, [])
    reflect("Corvane", MODULE_HEADERS, ENGINE_HEADERS)
    reflect("Game", [GAME / "Game.h"], [*ENGINE_HEADERS, *MODULE_HEADERS])


def compile_all(folder):
    """Gives the objects of the plug-in and those of the game."""
    unity = folder / "Unity.cpp"
    unity.write_text("".join(f'#include "{file}"\n' for file in sorted((ROOT / "Source/Corvane/Private").rglob("*.cpp"))))
    roots = [folder / "Engine", folder / "Corvane", folder / "Game", ROOT / "Tests/EngineFit/Shape", GAME,
        ROOT / "Source/Corvane/Public", ROOT / "Source/Corvane/Private"]
    roots += [ROOT / "Host" / library / "Public" for library in ("Core", "CoreUObject", "Engine", "HTTP")]

    build_rules = (ROOT / "Source/Corvane/Corvane.Build.cs").read_text()
    definitions = [f"-D{text}" for text in re.findall(r'(?:Public|Private)Definitions\.Add\("([^"]+)"\)', build_rules)]

    def compile_one(source, attribute):
        target = folder / f"{source.name}.o"
        run([TOOLS + "g++-posix", *OPTIONS, *definitions, f"-DCORVANE_API=__declspec({attribute})", *(f"-I{root}" for root in roots),
            "-c", source, "-o", target], source.name)
        return target

    sources = {"dllexport": [unity, *sorted((folder / "Corvane").glob("*.gen.cpp"))],
        "dllimport": [GAME / "Game.cpp", folder / "Game/Game.gen.cpp"]}
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        jobs = {attribute: [pool.submit(compile_one, file, attribute) for file in files] for attribute, files in sources.items()}
    faults = [str(job.exception()) for job in sum(jobs.values(), []) if job.exception()]
    if faults:
        raise Fault("\n".join(faults))
    return [[job.result() for job in jobs[attribute]] for attribute in sources]


def symbols(objects, option):
    rows = run([TOOLS + "nm", "--format=posix", option, *objects]).splitlines()
    return {row.split()[0] for row in rows if row.startswith("_Z")}


def link(folder, plugin, game):
    # Every symbol that the plug-in does not have is the engine's or the library's. Data is not imported without being asked.
    engine = symbols(plugin + game, "--undefined-only") - symbols(plugin, "--defined-only")
    (folder / "Engine.def").write_text("LIBRARY Engine.dll\nEXPORTS\n" + "".join(f"{name}\n" for name in sorted(engine)))
    run([TOOLS + "dlltool", "-d", folder / "Engine.def", "-l", folder / "libEngine.a"], "Engine.def")
    linker = [TOOLS + "g++-posix", "-shared", "-Wl,--disable-auto-import"]
    imports = folder / "libCorvane.a"
    run([*linker, *plugin, folder / "libEngine.a", f"-Wl,--out-implib,{imports}", "-o", folder / "Corvane.dll"], "Corvane.dll")
    run([*linker, *game, imports, folder / "libEngine.a", "-o", folder / "Game.dll"], "Game.dll")


def main():
    build = pathlib.Path(sys.argv[1]).resolve()
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        try:
            generate(build, folder)
            link(folder, *compile_all(folder))
        except Fault as fault:
            print(fault)
            return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
