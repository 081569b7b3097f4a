"""The members of the component's interface as its IDL declares them, for checks that need no Windows."""
import collections
import pathlib
import re

Parameter = collections.namedtuple("Parameter", "name type by_reference optional")
# kind: "get", "put" or "call"; result: a type's name or None. Types are those of the IDL: BSTR, long, VARIANT_BOOL, ...
Member = collections.namedtuple("Member", "id name kind parameters result")

_PATH = pathlib.Path(__file__).resolve().parents[2] / "src" / "server" / "quorvex.idl.in"
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


def members(path=_PATH):
    """All members in the interface's order; properties appear twice."""
    found = []
    for number, kind, name, text in _MEMBER.findall(path.read_text(encoding="utf-8")):
        parameters, result = [], None
        for part in _split(text):
            parameter, is_result = _parameter(part)
            if is_result:
                result = parameter.type
            else:
                parameters.append(parameter)
        found.append(Member(int(number), name, {"": "call", ", propget": "get", ", propput": "put"}[kind], tuple(parameters),
                            result))
    if len(found) != len(re.findall(r"\[id\(", path.read_text(encoding="utf-8"))):
        raise ValueError(f"{path} holds members that were not understood")
    return found


def identifiers(path=_PATH):
    """The GUIDs of the library, the interface and the class, in this order."""
    return re.findall(r"uuid\(([0-9A-F-]+)\)", path.read_text(encoding="utf-8"))
