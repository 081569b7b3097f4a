#!/usr/bin/env python3
"""Checks calls of the object in programs whose languages cannot be run here, against the members that the IDL declares: names in
their case, number of arguments, kinds of by-reference arguments, and the traps of PowerShell and VBA that only their own
interpreters would show.

    calls.py             the examples, and all code blocks of README.md and docs
"""
import pathlib
import re
import sys

import blocks
import idl

ROOT = pathlib.Path(__file__).resolve().parents[2]
MEMBERS = {}
for _member in idl.members():
    if _member.kind != "put":
        MEMBERS[_member.name] = _member
# What the examples and documents call the object.
_USE = re.compile(r"(?<![\w.$])\$?(?:q|lookup|Lookup|found|lookupObject|NewLookup)\.(\w+)")
_USE_CSHARP = re.compile(r"\b(?:q|_lookup)\.(\w+)")
_QUOTES = {"vba": '"', "vbscript": '"', "csharp": '"'}
_VBA_TYPES = {"BSTR": "string", "long": "long", "short": "integer", "double": "double", "VARIANT_BOOL": "boolean",
              "VARIANT": "variant"}


def _closing(text, start, quotes):
    """Position of the bracket that closes the one at start; texts in quotes are passed over."""
    depth, i = 0, start
    while i < len(text):
        if text[i] in quotes:
            i = text.index(text[i], i + 1)
        elif text[i] in "([{":
            depth += 1
        elif text[i] in ")]}":
            depth -= 1
            if depth == 0:
                return i
        i += 1
    raise ValueError("a bracket is not closed")


def _arguments(text, quotes):
    """Splits at commas outside brackets and texts."""
    parts, part, i = [], "", 0
    while i < len(text):
        end = i
        if text[i] in quotes:
            end = text.index(text[i], i + 1)
        elif text[i] in "([{":
            end = _closing(text, i, quotes)
        if text[i] == ",":
            parts.append(part)
            part = ""
        else:
            part += text[i:end + 1]
        i = end + 1
    parts.append(part)
    parts = [p.strip() for p in parts]
    return [] if parts == [""] else parts


def _call(text, end, language):
    """Arguments of a use that ends at a position; None where none are given."""
    quotes = _QUOTES.get(language, "\"'")
    if text[end:end + 1] == "(":
        return _arguments(text[end + 1:_closing(text, end, quotes)], quotes)
    rest = re.match(r" +(?![=&<>+*/-] |Then\b|And\b|Or\b|Else\b|_|[:'])((?:\"[^\"\n]*\"|[^\n:'\"])+)", text[end:])
    if language in ("vba", "vbscript") and rest:
        return _arguments(re.sub(r" Else .*", "", rest.group(1)), quotes)
    return None


def _check_types(member, arguments, text):
    """Early-bound VBA: a variable that is passed by reference must have the argument's own type."""
    declared = {}
    for line in re.findall(r"^\s*(?:Dim|Private|Static) (.+)$", text, re.M):
        declared.update({n.lower(): t.lower() for n, t in re.findall(r"(\w+) As (\w+)", line)})
    for argument, wanted in zip(arguments, member.parameters):
        if wanted.by_reference and re.fullmatch(r"\w+", argument) and argument.lower() in declared:
            if declared[argument.lower()] != _VBA_TYPES[wanted.type]:
                yield f"{member.name}: {argument} is declared As {declared[argument.lower()]}, {wanted.name} is {wanted.type}"


def _uses(text, language):
    return list((_USE_CSHARP if language == "csharp" else _USE).finditer(text))


def faults(text, language):
    """What is wrong with the calls in a text of a language, one line each."""
    early = "As QuorvexLookup.Quorvex" in re.sub(r"^\s*'.*$", "", text, flags=re.M)
    for use in _uses(text, language):
        name = use.group(1)
        if name not in MEMBERS:
            yield f"there is no member {name}"
            continue
        member = MEMBERS[name]
        if member.kind == "get":
            if text[use.end():use.end() + 1] == "(":
                yield f"{name} is a property and takes no arguments"
            continue
        given = _call(text, use.end(), language)
        required = sum(not p.optional for p in member.parameters)
        count = len(given or [])
        if language == "python" and given is None:
            continue  # the method itself is passed on
        if not required <= count <= len(member.parameters):
            yield f"{name} takes {len(member.parameters)} arguments, {count} are given"
        for argument, parameter in zip(given or [], member.parameters):
            if argument.startswith(("[ref]", "ref ")) and not parameter.by_reference:
                yield f"{name}: {parameter.name} is passed by value"
        if language == "vba" and early:
            yield from _check_types(member, given or [], text)
    if language == "powershell":
        for variable in re.findall(r"\[ref\] ?\$(\w+)", text):
            if re.search(r"\[Validate\w+\([^\n]*\$" + variable + r"\b", text):
                yield f"[ref] ${variable}: the variable has a validation attribute and refuses what is put into it"
    if language == "vba":
        for name in re.findall(r"^[^'\n]*\bApplication\.(\w+)", text, re.M):
            yield f"Application.{name} compiles in one Office program only"


def main():
    texts = [(str(path.relative_to(ROOT)), language, path.read_text(encoding="utf-8"))
             for pattern, language in (("*/*.ps1", "powershell"), ("*/*.bas", "vba"), ("csharp/*.cs", "csharp"))
             for path in sorted((ROOT / "examples").glob(pattern))]
    texts += [(f"{b.file}:{b.line}", b.language, b.text) for b in blocks.all_blocks() if b.language in blocks.CALLING]
    failed = 0
    for place, language, text in texts:
        for fault in faults(text, language):
            print(f"FAIL {place}: {fault}")
            failed += 1
    uses = sum(len(_uses(text, language)) for _, language, text in texts)
    print(f"FAIL {failed}" if failed else f"PASS {uses} calls in {len(texts)} texts")
    return 1 if failed or uses < 80 else 0


if __name__ == "__main__":
    sys.exit(main())
