#!/usr/bin/env python3
"""Checks that the shared library exports every operation that the installed headers declare.

usage: check_exports.py LIBRARY HEADER_FOLDER
"""
import pathlib
import re
import subprocess
import sys


def exported_names(library):
    """The qualified names ("DataBaseMgr::OpenDB", "mp3_getGenre") of the defined dynamic symbols."""
    text = subprocess.run(["nm", "-DC", "--defined-only", library], check=True,
                          capture_output=True, text=True).stdout
    names = set()
    for line in text.splitlines():
        symbol = line.split(" ", 2)[-1]
        name = re.sub(r"\[abi:\w+\]", "", symbol.split("(")[0]).split(" ")[-1]
        names.add(name[len("orx::"):] if name.startswith("orx::") else name)
    return names


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
    text = strip_comments(header.read_text())
    text = re.sub(r"(?:\\\n|[^\n])*", lambda m: "" if m.group(0).lstrip().startswith("#") else
                  m.group(0), text)
    names = set()
    classes = re.compile(r"class\s+ORX_API\s+(\w+)[^;{]*\{(.*?)\n\};", re.S)
    for name, body in classes.findall(text):
        public = body.split("\n private:")[0]  # nested classes indent theirs further
        for declaration in without_bodies(public).split(";"):
            function = function_name(declaration)
            if function:
                names.add(f"{name}::{function}")
    for declaration in re.findall(r"\bORX_API\b([^;{]*);", classes.sub("", text)):
        function = function_name(declaration)
        variable = re.search(r"(\w+)\s*$", declaration)
        names.add(function or variable.group(1))
    return names


def main():
    library, folder = sys.argv[1], pathlib.Path(sys.argv[2])
    exported = exported_names(library)
    missing = []
    count = 0
    for header in sorted(folder.glob("*/*.h")):
        if header.parent.name in ("host", "Platform"):
            continue
        for name in sorted(declared_names(header)):
            count += 1
            if name not in exported:
                missing.append(f"{header.name}: {name}")
    for line in missing:
        print("not exported:", line)
    print(f"{count} declared operations, {len(missing)} not exported")
    return 1 if missing or count < 200 else 0


if __name__ == "__main__":
    sys.exit(main())
