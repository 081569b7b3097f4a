"""The winget manifest of the MSI: three files, as the package manager wants them."""

import checksums
import msi

HEAD = """# yaml-language-server: $schema=https://aka.ms/winget-manifest.{kind}.1.6.0.schema.json
PackageIdentifier: Quorvex.AddressLookup
PackageVersion: {version}
"""


def build(release):
    package = release.dist / f"quorvex-{release.short_version}-x64.msi"
    if not package.exists():
        raise SystemExit("package: winget's manifest needs the MSI")
    folder = release.dist / "winget"
    folder.mkdir(exist_ok=True)
    head = lambda kind: HEAD.format(kind=kind, version=release.short_version)
    texts = {
        "Quorvex.AddressLookup.yaml": head("version") + "DefaultLocale: en-GB\nManifestType: version\n",
        "Quorvex.AddressLookup.locale.en-GB.yaml": head("defaultLocale") + (
            "PackageLocale: en-GB\nPublisher: Quorvex\nPackageName: Quorvex address lookup\n"
            "License: none stated\n"
            "ShortDescription: UK postcode to address, as a COM component and a command-line program\n"
            "ManifestType: defaultLocale\n"),
        "Quorvex.AddressLookup.installer.yaml": head("installer") + (
            "Platform:\n- Windows.Desktop\nMinimumOSVersion: 6.1.7601.0\nInstallerType: msi\nScope: machine\n"
            "UpgradeBehavior: install\nInstallers:\n- Architecture: x64\n"
            f"  InstallerUrl: https://downloads.quorvex.example/{release.short_version}/{package.name}\n"
            f"  InstallerSha256: {checksums.sha256(package).upper()}\n"
            f"  ProductCode: '{{{msi.product_code(release)}}}'\n"
            "ManifestType: installer\n"),
    }
    for name, text in texts.items():
        (folder / name).write_text(text + "ManifestVersion: 1.6.0\n")
    return [folder / name for name in texts]
