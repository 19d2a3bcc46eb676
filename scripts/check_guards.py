#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Checks that no exception leaves an exported function by accident. Each definition must be all under
Guarded or ComGuarded, or noexcept; what is under ComGuarded must say in its header that it throws
_com_error. See platform/guard.h."""

import argparse
import re
import sys
from pathlib import Path
from typing import Iterator, NamedTuple

# These define nothing that the library exports.
OTHERS = {"build", "tests", "programs", "fuzz", "bench", "examples", "packaging", "samples"}
# Plain values and what turns one into another: they throw std::bad_alloc where they take memory,
# in the caller's name, as std::string does.
VALUES = {"CString", "operator+", "_variant_t", "_com_error", "COleDateTime", "_tag_P2Clip",
          "_BLCLIP", "_NQBRDBROKENPOINT", "RealPaths", "BytesFromText", "TextFromBytes",
          "PosixPath", "InterfaceRoot", "ProgramFolder"}

COMMENT = re.compile(r"//[^\n]*|/\*.*?\*/", re.DOTALL)
CLASS = re.compile(r"\b(class|struct)\s+NQP2_API\s+(\w+)[^;{]*\{")
ACCESS = re.compile(r"^(public|protected|private):$")
FUNCTION = re.compile(r"\b(operator\s*\W{1,3}|~?\w+)\s*\(")
# AskProxy is the worker proxy's guard; what is around it makes a result of its answer.
GUARD = re.compile(r"(?:return\s+)?(?:(?:\w+::)*(?:One|Zero)WhenDone\(\s*)?"
                   r"(?:\w+::)*(?:(Com)?Guarded|AskProxy)\s*(?:<[^;(]*>)?\(")
DEFINITION = re.compile(
    r"^(?!\s|#|namespace|using|class|struct|enum|extern|static|template|//)"
    r"(?:[\w:<>,&*\s]*?[\s&*])?((?:\w+::)*)(operator\s*\W{1,3}|~?\w+)\s*\(", re.MULTILINE)


class Declared(NamedTuple):
    says_throw: bool
    is_defined: bool  # in the header itself


def end_of_brackets(text: str, start: int) -> int:
    """The index behind the bracket that closes the one at `start`."""
    pairs = {"(": ")", "{": "}"}
    opening, closing = text[start], pairs[text[start]]
    depth = 0
    for i in range(start, len(text)):
        depth += (text[i] == opening) - (text[i] == closing)
        if depth == 0:
            return i + 1
    raise ValueError("a bracket without end")


def without_texts(source: str) -> str:
    """The source with the content of comments, texts and characters blanked out."""
    pattern = re.compile(r"//[^\n]*|/\*.*?\*/|\"(?:\\.|[^\"\\\n])*\"|'(?:\\.|[^'\\\n])'", re.DOTALL)
    return pattern.sub(lambda m: re.sub(r"[^\n]", " ", m.group(0)), source)


def members_of(body: str) -> Iterator[tuple[str, str, str]]:
    """Name, declaration and comment of each function in a class that hosts can call."""
    access, comment, statement, depth = "public", "", "", 0
    for line in body.splitlines():
        stripped = line.strip()
        if depth == 0 and ACCESS.match(stripped):
            access = stripped[:-1]
            continue
        if stripped.startswith("//"):
            comment = comment + stripped if not statement else stripped
            continue
        if not stripped:
            comment, statement = ("", "") if depth == 0 else (comment, statement)
            continue
        statement += " " + COMMENT.sub("", stripped)
        depth += line.count("{") - line.count("}")
        if depth > 0 or not re.search(r"[;}]$", statement.strip()):
            continue
        found = FUNCTION.search(statement)
        if access != "private" and found:
            yield re.sub(r"\s", "", found.group(1)), statement, comment
        statement = ""


def declared_in(header: str) -> dict[str, list[Declared]]:
    """What a header exports, by name with its class."""
    functions: dict[str, list[Declared]] = {}

    def add(name: str, declaration: str, comment: str) -> None:
        functions.setdefault(name, []).append(Declared(
            "_com_error" in comment, "{" in declaration or "=" in declaration.split(")")[-1]))

    rest = header
    for match in CLASS.finditer(header):
        end = end_of_brackets(header, match.end() - 1)
        for name, statement, comment in members_of(header[match.end():end - 1]):
            add(f"{match.group(2)}::{name}", statement, comment)
        rest = rest.replace(header[match.start():end], "")
    for match in re.finditer(r"((?:^\s*///[^\n]*\n)*)^NQP2_API\s+([^;{]*\([^;{]*;)", rest, re.MULTILINE):
        found = FUNCTION.search(match.group(2))
        if found:
            add(re.sub(r"\s", "", found.group(1)), match.group(2), match.group(1))
    return functions


def fault_of(body: str, head: str, declared: list[Declared]) -> str:
    """What is wrong with a definition; nothing when it keeps the rule."""
    first = body.strip()
    guard = GUARD.match(first)
    if guard and not first[end_of_brackets(first, guard.end() - 1):].strip(");\n "):
        if guard.group(1) and not any(each.says_throw for each in declared):
            return "throws _com_error, which its header does not say"
        return ""
    return "" if "noexcept" in head else "is neither under a guard nor noexcept"


def files_of(top: Path, suffix: str) -> Iterator[Path]:
    for file in sorted(top.rglob("*" + suffix)):
        if file.relative_to(top).parts[0] not in OTHERS:
            yield file


def faults_below(top: Path) -> Iterator[str]:
    exported: dict[str, list[Declared]] = {}
    for header in files_of(top, ".h"):
        if "NQP2_API" in (text := header.read_text(encoding="utf-8")):
            for name, functions in declared_in(text).items():
                if not {name, *name.split("::")} & VALUES:
                    exported.setdefault(name, []).extend(functions)
    met = set()
    for file in files_of(top, ".cpp"):
        source = without_texts(file.read_text(encoding="utf-8"))
        for match in DEFINITION.finditer(source):
            scope = match.group(1).rstrip(":").split("::")[-1]
            name = re.sub(r"\s", "", match.group(2))
            name = f"{scope}::{name}" if scope else name
            if name not in exported:
                continue
            met.add(name)
            behind = end_of_brackets(source, match.end() - 1)
            head = re.match(r"[^;{]*", source[behind:]).group(0)
            start = behind + len(head)
            if not source.startswith("{", start):
                continue  # defaulted
            body = source[start + 1:end_of_brackets(source, start) - 1]
            if fault := fault_of(body, head, exported[name]):
                line = source.count("\n", 0, match.start()) + 1
                yield f"{file.relative_to(top)}:{line}: {name} {fault}"
    for name, functions in exported.items():
        if name not in met and "~" not in name and not all(each.is_defined for each in functions):
            yield f"{name} is exported, and its definition is not found"
    if not exported:
        raise FileNotFoundError(f"check_guards: nothing is exported below {top}")


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("top", nargs="?", type=Path, default=Path(__file__).resolve().parents[1])
    try:
        faults = list(faults_below(parser.parse_args().top))
    except FileNotFoundError as error:
        print(error, file=sys.stderr)
        return 2
    print("\n".join(faults), end="\n" if faults else "")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
