"""The interop assembly for .NET: the interface of the IDL as C#, compiled, with no trace of the hour of its making."""

import hashlib
import re
import shutil
import struct
import uuid

import component_idl
from release import ROOT, run

MEMBER = re.compile(r'^\s*\[id\((\d+)\)(?:, (propget|propput))?, helpstring\("(.*?)"\)\]\s+HRESULT (\w+)\((.*)\);\s*$',
                    re.MULTILINE)
TYPES = {"BSTR": ("string", "UnmanagedType.BStr"), "VARIANT_BOOL": ("bool", "UnmanagedType.VariantBool"), "short": ("short", None),
         "long": ("int", None), "double": ("double", None), "VARIANT": ("object", "UnmanagedType.Struct")}
NAMESPACE = "QuorvexLookup"


def build(release):
    """The assembly and its documentation for IntelliSense."""
    work = release.stage.parent / "interop"
    shutil.rmtree(work, ignore_errors=True)
    work.mkdir()
    (work / "Interop.cs").write_text(source(release))
    assembly = work / "Quorvex.Lookup.Interop.dll"
    run("mcs", "-target:library", "-optimize", "-nowarn:1591,612", f"-doc:{assembly.with_suffix('.xml')}", f"-out:{assembly}",
        work / "Interop.cs")
    fix(assembly, release.epoch)
    return [assembly, assembly.with_suffix(".xml")]


def source(release):
    idl = component_idl.text()
    interface = re.search(r"uuid\(([0-9A-F-]+)\), dual", idl).group(1)
    coclass = re.search(r"uuid\(([0-9A-F-]+)\)[^\]]*\]\s*coclass", idl).group(1)
    library = re.search(r"uuid\(([0-9A-F-]+)\), version", idl).group(1)
    members = list(MEMBER.finditer(idl))
    if len(members) != len(re.findall(r"\bHRESULT\b", idl)):
        raise SystemExit("package: a member of the IDL was not understood")
    return f"""using System.Reflection;
using System.Runtime.InteropServices;
[assembly: AssemblyTitle("Quorvex address lookup, interop")]
[assembly: AssemblyVersion("{release.library_version}.0.0")]
[assembly: AssemblyFileVersion("{release.version}")]
[assembly: ImportedFromTypeLib("QuorvexLookup")]
[assembly: TypeLibVersion({release.library_version.replace(".", ", ")})]
[assembly: Guid("{library}")]
namespace {NAMESPACE} {{
/// <summary>Lookup object: settings, lookups, dialogs, local data.</summary>
[ComImport, Guid("{interface}"), InterfaceType(ComInterfaceType.InterfaceIsDual)]
public interface _Quorvex {{
{declarations(members)}}}
/// <summary>The lookup object; make one with new Quorvex().</summary>
[ComImport, Guid("{interface}"), CoClass(typeof(QuorvexClass))]
public interface Quorvex : _Quorvex {{ }}
/// <summary>The class behind Quorvex.</summary>
[ComImport, Guid("{coclass}"), ClassInterface(ClassInterfaceType.None)]
public class QuorvexClass {{ }}
}}
"""


def declarations(members):
    """In interface order, which is that of the calls' slots: a property's two accessors follow each other."""
    text, at = "", 0
    while at < len(members):
        number, kind, help_text, name, arguments = members[at].groups()
        at += 1
        text += f"/// <summary>{help_text.replace('&', '&amp;').replace('<', '&lt;')}.</summary>\n[DispId({number})]\n"
        if kind == "propget":
            both = at < len(members) and members[at].group(2) == "propput" and members[at].group(4) == name
            at += both
            of = argument(arguments)
            text += f"{of.type} {name} {{ {of.attribute('return: ')}get; {of.attribute('param: ') + 'set; ' if both else ''}}}\n"
        elif kind is None:
            listed = re.sub(r'OPTIONAL_TEXT\("(?:[^"\\]|\\.)*"\)', "[in, out] BSTR *", arguments)
            given = [argument(part) for part in re.split(r", (?=\[)", listed) if part]
            result = next((part for part in given if part.is_result), None)
            listed = ", ".join(part.declaration() for part in given if not part.is_result)
            text += f"{result.attribute('return: ') if result else ''}{result.type if result else 'void'} {name}({listed});\n"
        else:
            raise SystemExit(f"package: {name} can be set but not read")
    return text


class Argument:
    def __init__(self, idl_type, by_reference, name, is_result):
        self.type, self.marshal = TYPES[idl_type]
        self.by_reference, self.name, self.is_result = by_reference, name, is_result

    def attribute(self, target=""):
        return f"[{target}MarshalAs({self.marshal})] " if self.marshal else ""

    def declaration(self):
        return f"{'[In, Out] ' if self.by_reference else ''}{self.attribute()}{'ref ' if self.by_reference else ''}{self.type} @{self.name}"


def argument(text):
    found = re.fullmatch(r"\[([^\]]*)\] (\w+) ?(\*?) ?(\w+)", text.strip())
    if not found:
        raise SystemExit(f"package: an argument of the IDL was not understood: {text}")
    flags, idl_type, star, name = found.groups()
    return Argument(idl_type, star == "*", name, "retval" in flags)


def fix(assembly, epoch):
    """The compiler stamps the time of day and a random identifier of the module."""
    file = bytearray(assembly.read_bytes())
    header = struct.unpack_from("<I", file, 0x3C)[0]
    struct.pack_into("<I", file, header + 8, epoch & 0xFFFFFFFF)
    root = file.index(b"BSJB")
    at = root + 16 + struct.unpack_from("<I", file, root + 12)[0]
    count = struct.unpack_from("<H", file, at + 2)[0]
    at += 4
    for _ in range(count):
        offset = struct.unpack_from("<I", file, at)[0]
        name = file[at + 8:file.index(0, at + 8)]
        if name == b"#GUID":
            place = root + offset
            file[place:place + 16] = bytes(16)
            file[place:place + 16] = uuid.UUID(bytes=hashlib.sha256(file).digest()[:16], version=4).bytes_le
        at += 8 + (len(name) // 4 + 1) * 4
    assembly.write_bytes(file)
