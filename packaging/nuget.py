"""The NuGet package: the native DLLs, the interop assembly, and a targets file that puts the right one beside a .NET program, with the manifest
by which it is found without registration."""

import hashlib
import xml.etree.ElementTree as xml

import archive
import interop
from release import ROOT

IDENTIFIER = "Quorvex.AddressLookup"
TYPES = {"rels": "application/vnd.openxmlformats-package.relationships+xml", "nuspec": "application/octet",
         "psmdcp": "application/vnd.openxmlformats-package.core-properties+xml", "dll": "application/octet",
         "manifest": "application/octet", "targets": "application/octet", "md": "application/octet",
         "txt": "application/octet", "xml": "application/octet"}
# The interop assembly needs nothing but the core library, which all of these have.
FRAMEWORKS = {"net40": ".NETFramework4.0", "netstandard2.0": ".NETStandard2.0"}


def build(release):
    stage, source = release.stage, ROOT / "packaging/nuget"
    entries = [(f"{IDENTIFIER}.nuspec", nuspec(release)),
               (f"build/{IDENTIFIER}.targets", source / "build.targets"),
               (f"buildTransitive/{IDENTIFIER}.targets", source / "build.targets"),
               ("README.md", source / "README.md"), ("NOTICES.txt", stage / "NOTICES.txt")]
    for folder in ("x64", "x86"):
        for name in ("QuorvexLookup.dll", "Quorvex.Lookup.manifest"):
            entries.append((f"runtimes/win-{folder}/native/{name}", stage / folder / name))
    entries += [(f"lib/{framework}/{path.name}", path) for path in interop.build(release) for framework in FRAMEWORKS]
    entries += package_parts(release, entries)
    target = release.dist / f"{IDENTIFIER}.{release.short_version}.nupkg"
    archive.write_zip(target, entries, release.epoch)
    return [target]


def nuspec(release):
    package = xml.Element("package", xmlns="http://schemas.microsoft.com/packaging/2013/05/nuspec.xsd")
    metadata = xml.SubElement(package, "metadata")
    for name, text in (("id", IDENTIFIER), ("version", release.short_version), ("authors", "Quorvex"),
                       ("requireLicenseAcceptance", "false"), ("readme", "README.md"),
                       ("description", "UK postcode to address: a COM component for Windows programs, 32 and 64 bit, used "
                                       "without registration."),
                       ("tags", "postcode address lookup COM native")):
        xml.SubElement(metadata, name).text = text
    dependencies = xml.SubElement(metadata, "dependencies")
    for name in FRAMEWORKS.values():
        xml.SubElement(dependencies, "group", targetFramework=name)
    return document(package)


def package_parts(release, entries):
    """What makes a zip a package: content types, relations, core properties."""
    types = xml.Element("Types", xmlns="http://schemas.openxmlformats.org/package/2006/content-types")
    for extension, kind in TYPES.items():
        xml.SubElement(types, "Default", Extension=extension, ContentType=kind)
    name = hashlib.sha256(release.version.encode()).hexdigest()[:32]
    properties = f"package/services/metadata/core-properties/{name}.psmdcp"
    relations = xml.Element("Relationships", xmlns="http://schemas.openxmlformats.org/package/2006/relationships")
    for number, (kind, part) in enumerate((
            ("http://schemas.microsoft.com/packaging/2010/07/manifest", f"{IDENTIFIER}.nuspec"),
            ("http://schemas.openxmlformats.org/package/2006/relationships/metadata/core-properties", properties))):
        xml.SubElement(relations, "Relationship", Type=kind, Target="/" + part, Id=f"R{number}")
    core = xml.Element("coreProperties", {
        "xmlns": "http://schemas.openxmlformats.org/package/2006/metadata/core-properties",
        "xmlns:dc": "http://purl.org/dc/elements/1.1/"})
    for tag, text in (("dc:creator", "Quorvex"), ("dc:identifier", IDENTIFIER), ("version", release.short_version)):
        xml.SubElement(core, tag).text = text
    return [("[Content_Types].xml", document(types)), ("_rels/.rels", document(relations)), (properties, document(core))]


def document(root):
    xml.indent(root)
    return xml.tostring(root, encoding="utf-8", xml_declaration=True) + b"\n"
