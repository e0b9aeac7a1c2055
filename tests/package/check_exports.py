#!/usr/bin/env python3
"""Checks the interface of the shared library.

It exports what cmake/exports.txt lists and nothing else; the list holds every operation that the
installed headers declare; and what it leaves to the program is what Platform/CameraPlatform.h
declares.

usage: check_exports.py LIBRARY HEADER_FOLDER LIST           (liborxscan.a lies beside LIBRARY)
       check_exports.py --renew LIBRARY HEADER_FOLDER LIST   (writes LIST anew)
"""
import pathlib
import re
import subprocess
import sys


# What the C++ and C runtimes and the compiler's instrumentation leave undefined without a version.
RUNTIME = re.compile(r"_ITM_\w+|__gmon_start__|sqlite3_\w+|__(asan|ubsan|sanitizer|tsan)_\w+")


def symbols(library, *options):
    """The demangled symbols that nm shows, without their versions."""
    text = subprocess.run(["nm", "-C", *options, library], check=True, capture_output=True,
                          text=True).stdout
    return [line for line in text.splitlines() if re.match(r"[0-9a-f ]{8,16} \w ", line)]


def exported_symbols(library):
    found = set()
    for line in symbols(library, "-D", "--defined-only"):
        kind, symbol = line.split(None, 2)[1:]
        if kind != "A":  # the name of the version itself
            found.add(symbol.split("@")[0])
    return found


def qualified_name(symbol):
    """"DataBaseMgr::OpenDB" for "DataBaseMgr::OpenDB(char const*)"."""
    name = re.sub(r"\[abi:\w+\]", "", symbol.split("(")[0])
    return name[len("orx::"):] if name.startswith("orx::") else name


def comparable(names, library):
    """On 32-bit machines size_t is another type than on the machine that wrote the list."""
    with open(library, "rb") as file:
        is32bit = file.read(5)[4] == 1
    return {name.replace("unsigned long", "unsigned int") for name in names} if is32bit else names


def strip_comments(text):
    text = re.sub(r"//[^\n]*", "", text)
    return re.sub(r"/\*.*?\*/", "", text, flags=re.S)


def without_bodies(text):
    """Drops every "{...}", so that only what is declared and not defined is left."""
    while re.search(r"\{[^{}]*\}", text):
        text = re.sub(r"\{[^{}]*\}", " DEFINED;", text)
    return text


def function_name(declaration):
    """The name in "int OpenDB(const char* fileName)", None for what is no function to export."""
    if "DEFINED" in declaration or re.search(r"=\s*(0|default|delete)\s*$", declaration):
        return None
    declaration = re.sub(r"__attribute__\s*\(\(.*?\)\)\)?", "", declaration, flags=re.S)
    match = re.search(r"(~?\w+)\s*\(", declaration)
    return match.group(1) if match and not declaration.strip().startswith("#") else None


def declared_names(header):
    """The qualified names that a header exports, and its classes."""
    text = strip_comments(header.read_text())
    text = re.sub(r"(?:\\\n|[^\n])*", lambda m: "" if m.group(0).lstrip().startswith("#") else
                  m.group(0), text)
    names, class_names = set(), set()
    classes = re.compile(r"class\s+ORX_API\s+(\w+)[^;{]*\{(.*?)\n\};", re.S)
    for name, body in classes.findall(text):
        class_names.add(name)
        public = body.split("\n private:")[0]  # nested classes indent theirs further
        for declaration in without_bodies(public).split(";"):
            function = function_name(declaration)
            variable = re.search(r"\bstatic\b[^()]*?(\w+)\s*$", declaration)
            if function or variable:
                names.add(f"{name}::{function or variable.group(1)}")
    for declaration in re.findall(r"\bORX_API\b([^;{]*);", classes.sub("", text)):
        function = function_name(declaration)
        variable = re.search(r"(\w+)\s*$", declaration)
        names.add(function or variable.group(1))
    return names, class_names


def declared_interface(folder):
    names, class_names = set(), set()
    for header in sorted(folder.glob("*/*.h")):
        if header.parent.name not in ("host", "Platform"):
            more, more_classes = declared_names(header)
            names |= more
            class_names |= more_classes
    return names, class_names


def is_declared(symbol, names, class_names):
    special = re.fullmatch(r"(?:vtable|typeinfo|typeinfo name) for (\w+)", symbol)
    return special.group(1) in class_names if special else qualified_name(symbol) in names


def declared_symbols(library, folder):
    """What the list should hold: the symbols of the archive, hidden or not, that are declared."""
    names, class_names = declared_interface(folder)
    archive = library.with_name("liborxscan.a")
    found = {line.split(None, 2)[2] for line in symbols(archive, "--extern-only", "--defined-only")}
    return {symbol for symbol in found if is_declared(symbol, names, class_names)}


def renew(library, folder, list_path):
    head = [line for line in list_path.read_text().splitlines() if line.startswith("#")]
    kept = sorted(declared_symbols(library, folder))
    list_path.write_text("\n".join(head + kept) + "\n")
    print(f"{len(kept)} symbols")
    return 0


def report(title, names):
    if names:
        print(f"{title}:", *sorted(names), sep="\n  ")
    return bool(names)


def main():
    if sys.argv[1] == "--renew":
        return renew(*map(pathlib.Path, sys.argv[2:5]))
    library, folder, list_path = map(pathlib.Path, sys.argv[1:4])
    listed = {line for line in list_path.read_text().splitlines() if not line.startswith("#")}
    exported = exported_symbols(library)
    names, class_names = declared_interface(folder)

    want, have = comparable(listed, library), comparable(exported, library)
    failed = report("added: exported, but not in the list", have - want)
    failed |= report("removed: in the list, but not exported", want - have)
    declared = comparable(declared_symbols(library, folder), library)
    failed |= report("declared in a header, but not in the list", declared - want)
    failed |= report("declared in a header, but nowhere defined",
                     names - {qualified_name(symbol) for symbol in declared})
    failed |= report("in the list, but declared in no header",
                     {s for s in listed if not is_declared(s, names, class_names)})
    unique = [line for line in symbols(library, "-D", "--defined-only") if " u " in line]
    failed |= report("unique symbols, which keep the library from being unloaded", unique)

    platform = strip_comments((folder / "Platform/CameraPlatform.h").read_text())
    platform = re.sub(r"__attribute__\(\(.*?\)\)\)", "", platform)
    promised = set(re.findall(r"^[\w ]+?\b(\w+)\(", platform, re.M)) - {"static_assert"}
    needed = {line.split(None, 1)[1] for line in symbols(library, "-D", "--undefined-only")}
    needed = {name for name in needed if "@" not in name and not RUNTIME.fullmatch(name)}
    failed |= report("asked of the program, but not declared as the platform's", needed - promised)
    failed |= report("declared as the platform's, but never called", promised - needed)
    if failed:
        print("When the interface is meant to change, renew the list: check_exports.py --renew",
              "BUILD/liborxscan.so SRC cmake/exports.txt")
        return 1
    print(f"{len(exported)} symbols exported, {len(needed)} asked of the platform, as listed")
    return 0


if __name__ == "__main__":
    sys.exit(main())
