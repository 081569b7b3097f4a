"""The MSI for all users."""

import os
import shutil
import struct
import xml.etree.ElementTree as xml

from release import ROOT, run

WIX = "http://schemas.microsoft.com/wix/2006/wi"

# What wixl has no elements for. RegLocator: 1 is HKCU, 2 a raw value. The per-user setup writes that value.
EXTRA_ROWS = (
    "INSERT INTO `LaunchCondition` (`Condition`, `Description`) VALUES ('Installed OR VersionNT64 >= 601', "
    "'This package is for 64-bit Windows 7 or later. On 32-bit Windows use the per-user setup or the portable archive.')",
    "INSERT INTO `LaunchCondition` (`Condition`, `Description`) VALUES "
    "('Installed OR NOT PERUSERFOLDER OR ALLOWPERUSER OR UILevel < 5', "
    "'This user has a per-user installation in [PERUSERFOLDER], which would hide this one. Remove it first, or install "
    "with ALLOWPERUSER=1.')",
    "INSERT INTO `AppSearch` (`Property`, `Signature_`) VALUES ('PERUSERFOLDER', 'PerUserFolder')",
    "INSERT INTO `RegLocator` (`Signature_`, `Root`, `Key`, `Name`, `Type`) VALUES "
    "('PerUserFolder', 1, 'Software\\Quorvex\\Setup', 'Folder', 2)",
    "INSERT INTO `InstallExecuteSequence` (`Action`, `Sequence`) VALUES ('AppSearch', 50)",
    "INSERT INTO `InstallUISequence` (`Action`, `Sequence`) VALUES ('AppSearch', 50)",
    "INSERT INTO `InstallExecuteSequence` (`Action`, `Sequence`) VALUES ('RemoveEnvironmentStrings', 3300)",
    "INSERT INTO `InstallExecuteSequence` (`Action`, `Sequence`) VALUES ('WriteEnvironmentStrings', 5200)",
)
# The program's folder goes to the end of the machine's PATH.
ENVIRONMENT = ("Environment\tName\tValue\tComponent_\r\ns72\tl255\tL255\ts72\r\nEnvironment\tEnvironment\r\n"
               "Path\t=-*PATH\t[~];[INSTALLDIR]\tProgram64\r\n")


def build(release):
    work = release.stage.parent / "msi"
    shutil.rmtree(work, ignore_errors=True)
    shutil.copytree(release.stage, work)
    for name in ("quorvex.wxs", "registration.wxi"):
        shutil.copy(ROOT / "packaging" / name, work)
    write_fragment(release, work)
    for path in work.rglob("*"):
        os.utime(path, (release.epoch, release.epoch))
    target = release.dist / f"quorvex-{release.short_version}-x64.msi"
    target.unlink(missing_ok=True)
    variables = {"Version": release.short_version, "LibraryVersion": release.library_version,
                 "LibraryName": f"Quorvex address lookup {release.library_version}", "Contact": "support@quorvex.example",
                 "ProductCode": product_code(release), "PackageCode": release.identifier("package", release.version)}
    defines = [part for name, value in variables.items() for part in ("-D", f"{name}={value}")]
    run("wixl", "-a", "x64", "-o", target, *defines, "quorvex.wxs", "documents.wxs", cwd=work)
    (work / "Environment.idt").write_bytes(ENVIRONMENT.encode())
    run("msibuild", target, "-i", work / "Environment.idt")
    run("msibuild", target, *[part for row in EXTRA_ROWS for part in ("-q", row)])
    package_code = "{" + release.identifier("package", release.version, str(release.epoch)) + "}"
    run("msibuild", target, "-s", f"Quorvex address lookup {release.short_version}", "Quorvex", "x64;2057", package_code)
    fix_dates(target, release.epoch)
    return [target]


def product_code(release):
    return release.identifier("product", release.short_version)


def write_fragment(release, work):
    """Documents and sample data: a component for each file, under identifiers that stay from release to release."""
    root = xml.Element("Wix", xmlns=WIX)
    for group, folders in (("Documents", ("docs", "samples")), ("Samples", ("data",))):
        fragment = xml.SubElement(root, "Fragment")
        top = xml.SubElement(fragment, "DirectoryRef", Id="INSTALLDIR")
        components = []
        if group == "Documents":
            for path in sorted(work.glob("*.*")):
                if path.suffix in (".md", ".txt", ".json"):
                    components.append(add_file(release, top, path, work))
        for folder in folders:
            components += add_folder(release, top, work / folder, work)
        listed = xml.SubElement(fragment, "ComponentGroup", Id=group)
        for component in components:
            xml.SubElement(listed, "ComponentRef", Id=component)
    xml.ElementTree(root).write(work / "documents.wxs", encoding="utf-8", xml_declaration=True)


def add_folder(release, parent, folder, work):
    name = folder.relative_to(work).as_posix()
    element = xml.SubElement(parent, "Directory", Id=short_id("d", release, name), Name=folder.name)
    components = []
    for path in sorted(folder.iterdir()):
        add = add_folder(release, element, path, work) if path.is_dir() else [add_file(release, element, path, work)]
        components += add
    return components


def add_file(release, parent, path, work):
    name = path.relative_to(work).as_posix()
    component = xml.SubElement(parent, "Component", Id=short_id("c", release, name), Win64="yes",
                               Guid=release.identifier("component", name))
    xml.SubElement(component, "File", Id=short_id("f", release, name), Source=name, Name=path.name, KeyPath="yes")
    return component.get("Id")


def short_id(kind, release, name):
    return kind + release.identifier(kind, name).replace("-", "")


def fix_dates(target, epoch):
    """Puts the release's date into the summary information, where the tools put the time of day."""
    file = bytearray(target.read_bytes())
    format_id = bytes.fromhex("E0859FF2F94F6810AB9108002B27B3D9")
    at = file.find(format_id)
    if at < 0 or file.find(format_id, at + 1) >= 0:
        raise SystemExit("package: the MSI's summary information was not found")
    section = at - 28 + struct.unpack_from("<I", file, at + 16)[0]
    count = struct.unpack_from("<I", file, section + 4)[0]
    filetime = (epoch + 11644473600) * 10000000
    for i in range(count):
        property_id, offset = struct.unpack_from("<II", file, section + 8 + 8 * i)
        if struct.unpack_from("<I", file, section + offset)[0] == 0x40:  # VT_FILETIME
            struct.pack_into("<Q", file, section + offset + 4, filetime)
    target.write_bytes(file)
