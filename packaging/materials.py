"""What is inside: the CycloneDX bill of materials and the notices of third parties, from the packages that were built
with."""

import json
import pathlib
import time

from release import run

# Component: Debian package that it comes from, where it ends up, what it is.
COMPONENTS = (
    ("zlib", "libz-mingw-w64-dev", ("QuorvexLookup.dll", "quorvex.exe"), "compression, linked in"),
    ("mingw-w64 runtime", "mingw-w64-x86-64-dev", ("QuorvexLookup.dll", "quorvex.exe"), "C runtime start-up, linked in"),
    ("GCC runtime libraries", "gcc-mingw-w64-x86-64-posix-runtime", ("QuorvexLookup.dll", "quorvex.exe"),
     "libstdc++ and libgcc, linked in"),
    ("CLI11", "libcli11-dev", ("quorvex.exe", "quorvex", "quorvex-service"), "command line, compiled in"),
    ("JSON for Modern C++", "nlohmann-json3-dev", ("quorvex.exe", "quorvex"), "JSON, compiled in"),
    ("cpp-httplib", "libcpp-httplib-dev", ("quorvex-service",), "HTTP client, shared library on Linux"),
    ("OpenSSL", "libssl-dev", ("quorvex-service",), "cryptography, shared library on Linux"),
    ("SQLite", "libsqlite3-dev", ("quorvex-service",), "database, shared library on Linux"),
    ("libpqxx", "libpqxx-dev", ("quorvex-service",), "PostgreSQL client, shared library on Linux"),
    ("Boost", "libboost-dev", ("quorvex-service",), "compiled in"),
    ("libcurl", "libcurl4-openssl-dev", ("quorvex",), "HTTP client, shared library on Linux"),
    ("zlib (Linux)", "zlib1g-dev", ("quorvex", "quorvex-service"), "compression, shared library on Linux"),
)


def write(release):
    installed = [(name, package, places, what, version_of(package)) for name, package, places, what in COMPONENTS]
    bill = {
        "bomFormat": "CycloneDX", "specVersion": "1.5", "version": 1,
        "serialNumber": "urn:uuid:" + release.identifier("bill", release.version, str(release.epoch)).lower(),
        "metadata": {
            "timestamp": time.strftime("%Y-%m-%dT%H:%M:%SZ", time.gmtime(release.epoch)),
            "component": {"type": "application", "bom-ref": "quorvex", "name": "Quorvex address lookup",
                          "version": release.version, "supplier": {"name": "Quorvex"}},
        },
        "components": [component(*entry) for entry in installed],
        "dependencies": [{"ref": "quorvex", "dependsOn": [reference(entry[1], entry[4]) for entry in installed]}],
    }
    (release.dist / "sbom.cdx.json").write_text(json.dumps(bill, indent=2) + "\n")
    (release.dist / "NOTICES.txt").write_text(notices(installed))


def version_of(package):
    return run("dpkg-query", "-W", "-f=${Version}", package, capture=True).strip()


def reference(package, version):
    return f"pkg:deb/debian/{package}@{version}"


def component(name, package, places, what, version):
    return {"type": "library", "bom-ref": reference(package, version), "name": name, "version": version,
            "purl": reference(package, version), "description": f"{what}: {', '.join(places)}"}


def notices(installed):
    text = ("Third parties' works in this distribution\n"
            "=========================================\n\n"
            "Each is listed with the files that hold it, then its notice as its maintainers state it.\n")
    for name, package, places, what, version in installed:
        copyright_file = pathlib.Path("/usr/share/doc") / package / "copyright"
        text += f"\n\n{name} {version}\n{'-' * 72}\n{what}: {', '.join(places)}\n\n"
        text += copyright_file.read_text(errors="replace")
    return text
