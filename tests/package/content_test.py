#!/usr/bin/env python3
"""Looks into the packages: made twice the same, whole, described rightly, signed when a certificate is given.

    tests/package/content_test.py [unittest arguments]      needs build/win64, win32 and host
"""

import hashlib
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as xml
import zipfile

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
BUILT = [ROOT / f"build/{preset}/{name}" for preset in ("win64", "win32") for name in ("QuorvexLookup.dll", "quorvex.exe")]
BUILT += [ROOT / "build/host/tools/quorvex/quorvex", ROOT / "build/host/service/quorvex-service"]
NUSPEC = "{http://schemas.microsoft.com/packaging/2013/05/nuspec.xsd}"


def package(folder, *arguments, **variables):
    subprocess.run([ROOT / "tools/package", "--no-build", "--out", folder, *arguments], check=True, text=True,
                   env=os.environ | variables, stdout=subprocess.DEVNULL)


def output(*command):
    return subprocess.run([str(part) for part in command], check=True, stdout=subprocess.PIPE, text=True).stdout


class Packages(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.holder = tempfile.TemporaryDirectory()
        cls.dist = pathlib.Path(cls.holder.name) / "dist"
        package(cls.dist)
        cls.version = re.search(r"VERSION (\d+\.\d+\.\d+)", (ROOT / "CMakeLists.txt").read_text()).group(1)

    @classmethod
    def tearDownClass(cls):
        cls.holder.cleanup()

    def test_the_same_commit_gives_the_same_bytes(self):
        again = pathlib.Path(self.holder.name) / "again"
        package(again)
        for path in self.dist.rglob("*"):
            if path.is_file():
                self.assertEqual(path.read_bytes(), (again / path.relative_to(self.dist)).read_bytes(), path.name)
        subprocess.run(["sha256sum", "--quiet", "-c", "SHA256SUMS"], cwd=again, check=True)
        listed = (again / "SHA256SUMS").read_text().count("\n")
        self.assertEqual(listed, sum(path.is_file() for path in again.rglob("*")) - 1)

    def test_the_nuget_package_keeps_the_rules(self):
        with zipfile.ZipFile(self.dist / f"Quorvex.AddressLookup.{self.version}.nupkg") as archive:
            names = archive.namelist()
            nuspec = xml.fromstring(archive.read("Quorvex.AddressLookup.nuspec"))
            types = xml.fromstring(archive.read("[Content_Types].xml"))
            relations = xml.fromstring(archive.read("_rels/.rels"))
        metadata = {element.tag.removeprefix(NUSPEC): element.text for element in nuspec.find(NUSPEC + "metadata")}
        for required in ("id", "version", "authors", "description"):
            self.assertTrue(metadata.get(required), required)
        self.assertEqual(metadata["version"], self.version)
        self.assertIn(metadata["readme"], names)
        known = {element.get("Extension") for element in types}
        for name in names:
            self.assertTrue(name == "[Content_Types].xml" or name.rsplit(".", 1)[-1] in known, name)
            self.assertNotIn("\\", name)
        for relation in relations:
            self.assertIn(relation.get("Target").removeprefix("/"), names)
        for bits in ("x86", "x64"):
            self.assertIn(f"runtimes/win-{bits}/native/QuorvexLookup.dll", names)
        self.assertIn("build/Quorvex.AddressLookup.targets", names)

    def test_the_interop_assembly_can_be_programmed_against(self):
        folder = pathlib.Path(self.holder.name) / "interop"
        with zipfile.ZipFile(self.dist / f"Quorvex.AddressLookup.{self.version}.nupkg") as archive:
            archive.extract("lib/net40/Quorvex.Lookup.Interop.dll", folder)
        assembly = folder / "lib/net40/Quorvex.Lookup.Interop.dll"
        shutil.copy(assembly, folder)
        # The slots of the calls are the order of the members: it must be that of the IDL.
        (folder / "use.cs").write_text("""
            using System; using System.Linq; using QuorvexLookup;
            class Use {
                static void Early(Quorvex q) {
                    string p = "AB1 0DF"; double d = 0; if (q.GetFullAddressToList(ref p)) Console.WriteLine(q.Address_Line1);
                    q.Nearest_StartList(ref p, ref d, ref d, ref d, ref d);
                }
                static void Main() {
                    foreach (var m in typeof(_Quorvex).GetMethods().OrderBy(m => m.MetadataToken)) Console.WriteLine(m.Name);
                }
            }""")
        subprocess.run(["mcs", "-r:System.Core", f"-r:{assembly}", f"-out:{folder}/use.exe", folder / "use.cs"], check=True)
        sys.path.insert(0, str(ROOT / "packaging"))
        from component_idl import text
        members = re.findall(r"(propget|propput)?, helpstring\(\"[^\n]*?\"\)\]\s+HRESULT (\w+)\(", text())
        wanted = [{"propget": "get_", "propput": "set_"}.get(kind, "") + name for kind, name in members]
        self.assertGreater(len(wanted), 100)
        self.assertEqual(output("mono", folder / "use.exe").split(), wanted)

    def test_manifests_name_what_was_built(self):
        manifest = (self.dist / "winget/Quorvex.AddressLookup.installer.yaml").read_text()
        msi = self.dist / f"quorvex-{self.version}-x64.msi"
        self.assertIn(hashlib.sha256(msi.read_bytes()).hexdigest().upper(), manifest)
        properties = output("msiinfo", "export", msi, "Property")
        code = re.search(r"ProductCode: '(.*)'", manifest).group(1)
        self.assertIn(f"ProductCode\t{code}", properties)
        bill = json.loads((self.dist / "sbom.cdx.json").read_text())
        self.assertEqual((bill["bomFormat"], bill["specVersion"]), ("CycloneDX", "1.5"))
        references = {component["bom-ref"] for component in bill["components"]}
        self.assertEqual(set(bill["dependencies"][0]["dependsOn"]), references)
        notices = (self.dist / "NOTICES.txt").read_text()
        for component in bill["components"]:
            self.assertTrue(component["version"])
            self.assertIn(f"{component['name']} {component['version']}", notices)

    def test_the_bill_names_every_library_that_is_linked(self):
        def source(package):
            # One line for each architecture that is installed.
            return output("dpkg-query", "-W", "-f=${source:Package}\\n", package).split()[0]

        bill = (self.dist / "sbom.cdx.json").read_text()
        named = {source(package) for package in re.findall(r'"purl": "pkg:deb/debian/([^@"]+)@', bill)}
        for path in self.dist.glob("*.deb"):
            for package in re.findall(r"([a-z][a-z0-9.+-]+)", re.sub(r"\([^)]*\)", "", output("dpkg-deb", "-f", path, "Depends"))):
                if package not in ("libc6", "libgcc-s1", "libstdc++6"): # the system's own
                    self.assertIn(source(package), named, f"{path.name} needs {package}")

    def test_no_path_of_the_build_machine_is_packed(self):
        for program in BUILT[:4]:
            self.assertNotIn(str(ROOT).encode(), program.read_bytes(), program)

    def test_debian_packages_say_what_they_need(self):
        for name, program in (("quorvex", "./usr/bin/quorvex"), ("quorvex-service", "./usr/bin/quorvex-service")):
            path = next(self.dist.glob(f"{name}_{self.version}_*.deb"))
            self.assertIn(program + "\n", output("dpkg-deb", "--contents", path))
            self.assertIn("libstdc++6", output("dpkg-deb", "--field", path, "Depends"))
            self.assertIn("root/root", output("dpkg-deb", "--contents", path))

    def test_what_is_signed_verifies_and_a_changed_byte_shows(self):
        folder = pathlib.Path(self.holder.name) / "signed"
        certificate, key = folder.with_suffix(".pem"), folder.with_suffix(".key")
        subprocess.run(["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "2", "-subj", "/CN=Throw-away",
                        "-addext", "extendedKeyUsage=codeSigning", "-keyout", key, "-out", certificate], check=True,
                       stderr=subprocess.DEVNULL)
        package(folder, "--only", "msi", "setup", "portable", QUORVEX_SIGN_CERTIFICATE=str(certificate),
                QUORVEX_SIGN_KEY=str(key))
        with zipfile.ZipFile(next(folder.glob("*-portable.zip"))) as archive:
            inside = [name for name in archive.namelist() if name.endswith((".dll", ".exe"))]
            archive.extractall(folder / "portable", inside)
        signed = [*folder.glob("*.msi"), *folder.glob("*.exe"), *(folder / "portable" / name for name in inside)]
        self.assertEqual(len(signed), 6)
        for path in signed:
            self.assertEqual(self.verify(path, certificate), 0, path.name)
        changed = bytearray(signed[-1].read_bytes())
        changed[5000] ^= 1
        signed[-1].write_bytes(changed)
        self.assertNotEqual(self.verify(signed[-1], certificate), 0)

    def verify(self, path, certificate):
        return subprocess.run(["osslsigncode", "verify", "-CAfile", certificate, "-in", path], stdout=subprocess.DEVNULL,
                              stderr=subprocess.DEVNULL).returncode


if __name__ == "__main__":
    missing = [path for path in BUILT if not path.exists()]
    if missing:
        print(f"SKIPPED: {missing[0].relative_to(ROOT)} is not built")
        sys.exit(77)
    if shutil.which("wixl") is None:
        print("SKIPPED: the packagers are not installed (tools/setup)")
        sys.exit(77)
    unittest.main(verbosity=2)
