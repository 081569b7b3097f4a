"""The members of the component's interface as its IDL declares them, for checks that need no Windows."""
import collections
import pathlib
import re
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "packaging"))
import component_idl  # noqa: E402

Parameter = collections.namedtuple("Parameter", "name type by_reference optional")
# kind: "get", "put" or "call"; result: a type's name or None. Types are those of the IDL: BSTR, long, VARIANT_BOOL, ...
Member = collections.namedtuple("Member", "id name kind parameters result")

_MEMBER = re.compile(r"\[id\((\d+)\)(, prop(?:get|put))?, helpstring\(\"[^\"]*\"\)\]\s*HRESULT (\w+)\((.*?)\);\s*$", re.M)
_PARAMETER = re.compile(r"(?:\[([^\]]*)\] (\w+) ?(\*?)|(OPTIONAL_TEXT)\(\"(?:\\\"|[^\"])*\"\) ?)(\w+)$")


def _parameter(text):
    attributes, type_name, star, optional_text, name = _PARAMETER.match(text.strip()).groups()
    if optional_text:
        return Parameter(name, "BSTR", True, True), False
    return Parameter(name, type_name, bool(star), "optional" in attributes), "retval" in attributes


def _split(text):
    """At commas outside brackets and quotes."""
    return re.findall(r"(?:\[[^\]]*\]|\"(?:\\\"|[^\"])*\"|[^,\[\"])+", text)


def members():
    """All members in the interface's order; properties appear twice."""
    found, text = [], component_idl.text()
    for number, kind, name, listed in _MEMBER.findall(text):
        parameters, result = [], None
        for part in _split(listed):
            parameter, is_result = _parameter(part)
            if is_result:
                result = parameter.type
            else:
                parameters.append(parameter)
        found.append(Member(int(number), name, {"": "call", ", propget": "get", ", propput": "put"}[kind], tuple(parameters),
                            result))
    if len(found) != len(re.findall(r"\[id\(", text)):
        raise ValueError("the IDL holds members that were not understood")
    return found


def identifiers():
    """The GUIDs of the library, the interface and the class, in this order."""
    return re.findall(r"uuid\(([0-9A-F-]+)\)", component_idl.text())
