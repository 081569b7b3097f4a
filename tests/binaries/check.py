"""Asks the files that ship what Windows will ask of them; Wine, which runs the other tests, accepts more.

    check.py BUILD_FOLDER SOURCE_FOLDER VERSION FILE...

Prints what is wrong and ends with 1 if anything is.
"""
import re
import sys
import xml.etree.ElementTree as ET
from pathlib import Path

import pe
import typelib

HERE = Path(__file__).parent
KNOWN_SYSTEMS = {"2000", "XP", "Vista", "7SP1", "VC6"}
HIGH_ENTROPY, DYNAMIC_BASE, NX = 0x20, 0x40, 0x100
RELOCS_STRIPPED = 0x0001
LARGEST_DLL = 1_500_000
RT_VERSION, RT_MANIFEST = 16, 24
COM_EXPORTS = ["DllCanUnloadNow", "DllGetClassObject", "DllInstall", "DllRegisterServer", "DllUnregisterServer"]
VERSION_TEXTS = ["CompanyName", "FileDescription", "FileVersion", "InternalName", "LegalCopyright", "OriginalFilename",
                 "ProductName", "ProductVersion"]
PROBLEMS = []


def expect(condition, file, problem):
    if not condition:
        PROBLEMS.append(f"{file}: {problem}")


def allowed_imports():
    """{DLL: set of functions}, from windows7.txt."""
    allowed, functions = {}, set()
    for line in (HERE / "windows7.txt").read_text().splitlines():
        if line.startswith("["):
            functions = allowed.setdefault(line.strip("[]"), set())
        elif line and not line.startswith("#"):
            system, *names = line.split()
            if system not in KNOWN_SYSTEMS:
                sys.exit(f"windows7.txt: {system} is not a Windows of that time")
            functions.update(names)
    return allowed


def check_imports(image, allowed):
    for dll, functions in image.imports().items():
        expect(dll in allowed, image.path.name, f"imports {dll}, which Windows 7 does not have or nobody listed")
        listed = allowed.get(dll, set(functions))
        if image.path.suffix == ".exe":
            listed = listed | allowed.get(f"{dll} of programs", set())
        for function in sorted(set(functions) - listed):
            expect(False, image.path.name, f"imports {function} of {dll}, which windows7.txt does not list")


def check_header(image):
    name = image.path.name
    wanted = DYNAMIC_BASE | NX | (HIGH_ENTROPY if image.bits == 64 else 0)
    expect(image.dll_flags & wanted == wanted, name, f"lacks ASLR, DEP or high entropy: {image.dll_flags:#06x}")
    expect(not image.file_flags & RELOCS_STRIPPED, name, "has no relocations, so ASLR cannot move it")
    expect(image.timestamp == 0 and image.export_time() == 0, name, "holds the time of its build")
    expect(image.subsystem_version <= (6, 1), name, f"asks for Windows {image.subsystem_version}")


def check_paths(image, folders):
    """A build folder's path inside would differ from machine to machine, and tells strangers about it."""
    for folder in folders:
        for text in (str(folder).encode(), str(folder).encode("utf-16-le"), str(folder).replace("/", "\\").encode()):
            expect(text not in image.data, image.path.name, f"holds the path {folder}")
    expect(b"/root/" not in image.data and b"/home/" not in image.data, image.path.name, "holds a home folder's path")


def check_version(image, version):
    name, resource = image.path.name, image.resources().get((RT_VERSION, 1))
    if resource is None:
        expect(False, name, "has no version resource")
        return
    numbers, texts = pe.version_strings(resource)
    expect(".".join(map(str, numbers)) == version, name, f"is of version {numbers} instead of {version}")
    for text in VERSION_TEXTS:
        expect(texts.get(text), name, f"its version resource has no {text}")
    expect(texts.get("OriginalFilename") == name, name, f"calls itself {texts.get('OriginalFilename')}")
    for text in ("FileVersion", "ProductVersion"):
        expect(texts.get(text) == version, name, f"{text} is {texts.get(text)} instead of {version}")
    if image.path.suffix == ".dll":
        expect("OLESelfRegister" in resource.decode("utf-16-le", "replace"), name, "does not say OLESelfRegister")


def check_component(image, build, version):
    """The DLL itself: its exports, size, type library and manifests."""
    name, resources = image.path.name, image.resources()
    expect(image.exports() == COM_EXPORTS, name, f"exports {image.exports()}")
    expect(len(image.data) <= LARGEST_DLL, name, f"has {len(image.data)} bytes, more than {LARGEST_DLL}")
    library = resources.get(("TYPELIB", 1), b"")
    functions = list(typelib.Functions(library)) if library else []
    expect(len(functions) > 100, name, "has no type library")
    for place, recorded, needed in functions:
        expect(recorded == needed, name, f"the function at {place} of the type library records {recorded} bytes "
                                         f"where {needed} are needed")
    expect(not re.search(rb"\b(?!1970)20\d\d\n", library), name, "its type library holds the time of its build")
    # Some versions of Windows refuse two manifests among the resources 1 to 16; 2 is what static imports are bound by.
    manifests = [key for kind, key in resources if kind == RT_MANIFEST]
    expect(manifests == [2], name, f"has manifests {manifests} instead of [2] alone")
    check_assembly(build, name, image.bits, version)


def check_assembly(build, dll, bits, version):
    """The loader looks for NAME.dll before NAME.manifest: an assembly of the DLL's name would have to be inside it."""
    space = "{urn:schemas-microsoft-com:asm.v1}"
    found = [file for file in Path(build).glob("*.manifest") if dll in file.read_text()]
    expect(len(found) == 1, dll, f"has {len(found)} manifests beside it instead of one")
    for file in found:
        root = ET.parse(file).getroot()
        identity = root.find(space + "assemblyIdentity")
        expect(identity.get("name") == file.stem, file.name, f"is the manifest of {identity.get('name')}")
        expect(not (file.parent / (file.stem + ".dll")).exists(), file.name, "has a DLL of its name beside it")
        expect(identity.get("version") == version, file.name, f"is of version {identity.get('version')}")
        expect(identity.get("processorArchitecture") == ("amd64" if bits == 64 else "x86"), file.name,
               f"is for {identity.get('processorArchitecture')}")
        expect([f.get("name") for f in root.findall(space + "file")] == [dll], file.name, "names other files")


def main():
    build, source, version, *files = sys.argv[1:]
    allowed = allowed_imports()
    for file in files:
        image = pe.Image(file)
        check_imports(image, allowed)
        check_header(image)
        check_paths(image, [build, source])
        check_version(image, version)
        if "DllGetClassObject" in image.exports():
            check_component(image, build, version)
        print(f"{image.path.name}: {image.bits} bits, {len(image.data)} bytes")
    print("\n".join(PROBLEMS))
    sys.exit(1 if PROBLEMS or not files else 0)


main()
