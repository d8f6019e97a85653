#!/usr/bin/env python3
"""Checks what the engine's build tool reads before any source, Corvane.uplugin and Corvane.Build.cs, and the icon.

Prints one line per fault and ends with status 1 when there is any. usage: check_plugin.py [FOLDER-OF-THE-PLUG-IN]
"""

import json
import pathlib
import re
import struct
import sys

ROOT = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).resolve().parent.parent)

DESCRIPTOR_FIELDS = {"FileVersion": int, "Version": int, "VersionName": str, "FriendlyName": str, "Description": str, "Category": str,
    "CreatedBy": str, "CreatedByURL": str, "DocsURL": str, "MarketplaceURL": str, "SupportURL": str, "EngineVersion": str,
    "CanContainContent": bool, "IsBetaVersion": bool, "Installed": bool, "Modules": list}
# The engine also knows these.
OPTIONAL_FIELDS = {"EnabledByDefault": bool, "SupportedTargetPlatforms": list}
ENGINE_VERSION = "5.5.0"
# What somebody types who looks for such a plug-in.
DESCRIBED = ("HTTP", "GET", "POST", "download", "upload", "server-sent events", "file", "Blueprint", "C++")
MODULE_FIELDS = {"Name": str, "Type": str, "LoadingPhase": str, "PlatformAllowList": list}
MODULE_TYPES = {"Runtime"}
LOADING_PHASES = {"PreDefault", "Default"}  # later ones come after blueprints that use the nodes
PLATFORMS = {"Win64", "Linux", "Mac"}
ENGINE_MODULES = {"Core", "CoreUObject", "Engine", "HTTP"}


def no_repeats(pairs):
    names = [name for name, _ in pairs]
    if len(set(names)) != len(names):
        raise ValueError(f"a field stands twice among {', '.join(names)}")
    return dict(pairs)


def check_fields(where, found, required, optional):
    for name in required.keys() - found.keys():
        yield f"{where}: {name} is missing"
    for name, value in found.items():
        expected = required.get(name) or optional.get(name)
        if expected is None:
            yield f"{where}: the field {name} is not expected"
        elif type(value) is not expected:
            yield f"{where}: {name} must be of type {expected.__name__}, not {type(value).__name__}"


def check_module(module):
    where = f"Corvane.uplugin, module {module.get('Name')}"
    yield from check_fields(where, module, MODULE_FIELDS, {})
    name = module.get("Name")
    if not (ROOT / f"Source/{name}/{name}.Build.cs").is_file():
        yield f"{where}: there is no Source/{name}/{name}.Build.cs"
    if module.get("Type") not in MODULE_TYPES:
        yield f"{where}: Type must be one of {sorted(MODULE_TYPES)}"
    if module.get("LoadingPhase") not in LOADING_PHASES:
        yield f"{where}: LoadingPhase must be one of {sorted(LOADING_PHASES)}"
    if set(module.get("PlatformAllowList", [])) != PLATFORMS:
        yield f"{where}: PlatformAllowList must name {sorted(PLATFORMS)}"


def check_descriptor():
    try:
        descriptor = json.loads((ROOT / "Corvane.uplugin").read_text("utf-8"), object_pairs_hook=no_repeats)
    except ValueError as error:
        yield f"Corvane.uplugin: {error}"
        return
    yield from check_fields("Corvane.uplugin", descriptor, DESCRIPTOR_FIELDS, OPTIONAL_FIELDS)
    if descriptor.get("FileVersion") != 3:
        yield "Corvane.uplugin: FileVersion must be 3"
    if descriptor.get("EngineVersion") != ENGINE_VERSION:
        yield f"Corvane.uplugin: EngineVersion must be {ENGINE_VERSION}"
    for word in DESCRIBED:
        if word not in descriptor.get("Description", ""):
            yield f"Corvane.uplugin: the description does not mention {word}"
    modules = descriptor.get("Modules", [])
    for module in modules:
        yield from check_module(module)
    listed = {module.get("Name") for module in modules}
    for folder in sorted((ROOT / "Source").iterdir()):
        if folder.name not in listed:
            yield f"Corvane.uplugin: the module of Source/{folder.name} is not listed"


def check_version():
    """One version everywhere: the descriptor's, the newest of the change log, the one of the CMake package."""
    name = json.loads((ROOT / "Corvane.uplugin").read_text("utf-8")).get("VersionName", "")
    for file, pattern in (("CHANGELOG.md", r"^## (\d\S*)"), ("CMakeLists.txt", r"project\(Corvane VERSION (\S+)")):
        if (ROOT / file).is_file():
            found = re.search(pattern, (ROOT / file).read_text(), re.MULTILINE)
            if not found or found[1] != name:
                yield f"{file}: expected version {name} of Corvane.uplugin, found {found[1] if found else 'none'}"


def check_icon():
    """The editor shows it in its list of plug-ins, at one size only."""
    file = ROOT / "Resources/Icon128.png"
    beginning = file.read_bytes()[:24] if file.is_file() else b""
    if not beginning.startswith(b"\x89PNG\r\n\x1a\n") or struct.unpack(">II", beginning[16:24]) != (128, 128):
        yield "Resources/Icon128.png: expected a PNG of 128 x 128 pixels"


def check_build_rules():
    where = "Corvane.Build.cs"
    text = (ROOT / "Source/Corvane/Corvane.Build.cs").read_text("utf-8")
    code = re.sub(r"//[^\n]*|/\*.*?\*/", "", text, flags=re.DOTALL)
    for pair in ("{}", "()", "[]"):
        if code.count(pair[0]) != code.count(pair[1]):
            yield f"{where}: {pair[0]} and {pair[1]} do not match"
    for pattern in (r"using UnrealBuildTool;", r"public class Corvane : ModuleRules\b",
            r"public Corvane\(ReadOnlyTargetRules Target\) : base\(Target\)",
            r"PCHUsage = ModuleRules\.PCHUsageMode\.UseExplicitOrSharedPCHs;", r"IWYUSupport = IWYUSupport\.Full;"):
        if not re.search(pattern, code):
            yield f"{where}: nothing matches {pattern}"
    for setting in ("bEnableExceptions", "bUseRTTI", "bEnforceIWYU", "PrivateDependencyModuleNames"):
        if setting in code:
            yield f"{where}: {setting} is not to be set"
    found = re.search(r"PublicDependencyModuleNames\.AddRange\(new\[\] \{([^}]*)\}\);", code)
    names = set(re.findall(r'"(\w+)"', found[1])) if found else set()
    if names != ENGINE_MODULES:
        yield f"{where}: the module depends on {sorted(ENGINE_MODULES)}, not on {sorted(names)}"


def main():
    faults = [*check_descriptor(), *check_build_rules(), *check_icon()]
    faults += [] if faults else check_version()
    for fault in faults:
        print(fault)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
