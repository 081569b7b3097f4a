"""The component's interface definition as text, with its list of properties written out."""
import pathlib
import re

_FOLDER = pathlib.Path(__file__).resolve().parents[1] / "src" / "server"
_TYPES = {"TEXT": "BSTR", "BOOLEAN": "VARIANT_BOOL", "LONG": "long", "SHORT": "short"}


def text():
    """The IDL as its compiler reads it; each member begins with "[id(" and lies on one or two lines."""

    def pair(match):
        kind, number, name, help_string = match.groups()
        declared = f"[id({number}), prop%s, helpstring({help_string})] HRESULT {name}([%s] {_TYPES[kind]} %svalue);"
        return declared % ("get", "out, retval", "*") + "\n" + declared % ("put", "in", "")

    properties = (_FOLDER / "quorvex_properties.inc").read_text(encoding="utf-8")
    properties = re.sub(r"^QUORVEX_(\w+)\((\d+), (\w+), (\"[^\"]*\")\)$", pair, properties, flags=re.M)
    idl = (_FOLDER / "quorvex.idl.in").read_text(encoding="utf-8")
    before, after = idl.split('#include "quorvex_properties.inc"\n')
    before = before[:before.index("#define QUORVEX_PROPERTY(")]
    return before + properties + after
