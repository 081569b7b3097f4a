#!/usr/bin/env python3
"""Prints the C# source of the interop assembly that tlbimp makes from the type library: the same names, types and identifiers.
The tests compile early-bound C# against it. That the IDL, from which it is made, and the DLL's type library agree is what
members.py checks.

    interop.py >QuorvexLookup.Interop.cs
"""
import idl

TYPES = {"BSTR": "string", "VARIANT_BOOL": "bool", "short": "short", "long": "int", "double": "double", "VARIANT": "object", None: "void"}
MARSHAL = {"BSTR": "[MarshalAs(UnmanagedType.BStr)] ", "VARIANT": "[MarshalAs(UnmanagedType.Struct)] "}


def parameter(p):
    reference = "ref " if p.by_reference else ""
    direction = "[In, Out" + (", Optional" if p.optional else "") + "] " if p.by_reference else "[In] "
    return direction + MARSHAL.get(p.type, "") + reference + TYPES[p.type] + " " + p.name


def returned(member):
    mark = MARSHAL.get(member.result, "")
    return mark.replace("[", "[return: ").strip()


def lines():
    library, interface, coclass = idl.identifiers()
    yield "using System.Runtime.CompilerServices; using System.Runtime.InteropServices;"
    yield f'[assembly: Guid("{library}")] [assembly: ImportedFromTypeLib("QuorvexLookup")]'
    yield "namespace QuorvexLookup {"
    yield f'[ComImport, Guid("{interface}"), TypeLibType(4288)]'
    yield "public interface _Quorvex {"
    members = idl.members()
    for member in members:
        if member.kind == "call":
            yield (f"[MethodImpl(MethodImplOptions.InternalCall), DispId({member.id})] {returned(member)} {TYPES[member.result]} "
                   f"{member.name}({', '.join(parameter(p) for p in member.parameters)});")
        elif member.kind == "get":  # the type library has get and put side by side
            mark = MARSHAL.get(member.result, "").replace("[", "[return: ").strip()
            put = MARSHAL.get(member.result, "").replace("[", "[param: ").strip()
            yield f"[DispId({member.id})] {TYPES[member.result]} {member.name} {{ {mark} get; {put} set; }}"
    yield "}"
    yield f'[ComImport, Guid("{interface}"), CoClass(typeof(QuorvexClass))] public interface Quorvex : _Quorvex {{ }}'
    yield f'[ComImport, Guid("{coclass}")] public class QuorvexClass {{ }}'
    yield "}"


if __name__ == "__main__":
    print("\n".join(lines()))
