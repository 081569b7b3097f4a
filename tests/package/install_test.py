#!/usr/bin/env python3
"""Installs the packages under Wine, each in a prefix of its own, and uses what they installed.

    tools/with-wine tests/package/install_test.py [unittest arguments]      needs build/win64, win32 and host
"""

import json
import shutil
import subprocess
import unittest

from wine_prefix import Prefix, ROOT, windows

DIST = ROOT / "build/package-test/dist"
SCRIPT = ROOT / "examples/vbscript/find_address.vbs"
SAMPLE = ROOT / "examples/data"
MSI64 = r"C:\Program Files\Quorvex"
CLASS = r"Software\Classes\CLSID\{1D6679CA-4011-4747-9EAF-18731D88251A}"


def package(version, *kinds):
    subprocess.run([ROOT / "tools/package", "--no-build", "--version", version, "--out", DIST, "--only", *kinds], check=True,
                   stdout=subprocess.DEVNULL)


def setUpModule():
    shutil.rmtree(DIST, ignore_errors=True)
    for version in ("2.3.0.0", "2.4.0.0"):
        package(version, "msi", "setup")


class Installed(unittest.TestCase):
    prefix = None

    def open_prefix(self, name):
        self.prefix = Prefix(name)
        self.addCleanup(self.prefix.remove)

    def install(self, version, *properties):
        return self.prefix.wine("msiexec", "/i", windows(DIST / f"quorvex-{version}-x64.msi"), *properties, "/qn")[0]

    def doctor(self, *arguments, program=MSI64 + r"\quorvex.exe"):
        code, output = self.prefix.wine(program, "doctor", "--json", "--data", windows(SAMPLE), "--service",
                                        "http://127.0.0.1:1", *arguments)
        start = output.find("{")
        self.assertGreaterEqual(start, 0, output)
        return code, json.loads(output[start:])["rows"]

    def assert_well(self, **options):
        code, rows = self.doctor(**options)
        # No service runs here; whoever works from local data does not need it.
        wrong = [row for row in rows if row["grade"] != "ok" and row["subject"] != "service"]
        self.assertEqual((code, wrong), (0, []))

    def assert_hosts_answer(self):
        for host in (["wine", "cscript"], ["/usr/lib/wine/wine64", "cscript"]):
            code, output = self.prefix.run(*host, "//nologo", windows(SCRIPT), "AB1 0DF", "/pick:2", f"/data:{windows(SAMPLE)}")
            self.assertIn("GORSE SURVEYORS SERVICES", output)


class Msi(Installed):
    def test_install_upgrade_repair_remove(self):
        self.open_prefix("msi")
        files, registry = self.prefix.files(), self.prefix.registry()
        self.assertEqual(self.install("2.3.0"), 0)
        self.assert_hosts_answer()
        self.assertEqual(self.install("2.4.0"), 0)
        self.assert_hosts_answer()
        self.assert_well()
        self.assert_well(program=r"C:\Program Files (x86)\Quorvex\quorvex.exe")
        self.assertEqual(self.versions(), ["2.4.0"])

        self.assertNotEqual(self.install("2.3.0"), 0, "a downgrade must be refused")
        self.assertEqual(self.versions(), ["2.4.0"])

        (self.prefix.drive / "Program Files/Quorvex/QuorvexLookup.dll").unlink()
        self.prefix.reg("delete", "HKLM\\" + CLASS + "\\InprocServer32", "/f")
        # What /fa asks for; Wine's msiexec has no /f.
        self.assertEqual(self.install("2.4.0", "REINSTALL=ALL", "REINSTALLMODE=amus"), 0)
        self.assert_well()

        code, _ = self.prefix.wine("msiexec", "/x", windows(DIST / "quorvex-2.4.0-x64.msi"), "/qn")
        self.assertEqual(code, 0)
        self.assertEqual(self.prefix.files() - files, set())
        self.assertEqual({line for line in self.prefix.registry() - registry if "uorvex" in line or "D02A196F" in line or
                          "1D6679CA" in line or "A8C4E3FB" in line}, set())

    def versions(self):
        """The versions that the list of installed programs shows."""
        _, output = self.prefix.wine("reg", "query", r"HKLM\Software\Microsoft\Windows\CurrentVersion\Uninstall", "/s", "/reg:64")
        return [block.split("DisplayVersion")[1].split()[1] for block in output.split("\n\n")
                if "Quorvex address lookup" in block and "DisplayVersion" in block]


class Doctor(Installed):
    """Breaks an installation in one way at a time."""

    def broken(self, text, breakage, mend, grade="problem"):
        breakage()
        with self.subTest(text):
            code, rows = self.doctor()
            named = [row for row in rows if row["grade"] == grade and text in f"{row['subject']}: {row['finding']}"]
            self.assertTrue(named and all(row["advice"] for row in named), f"{text}: {rows}")
            if grade == "problem":
                self.assertEqual(code, 3)
        mend()

    def registry(self, text, key, value, old, new, side="64"):
        """A value that is changed, or with new None deleted, then put back."""
        name = ["/v", value] if value else ["/ve"]
        full, view = "HKLM\\Software\\Classes\\" + key, "/reg:" + side
        def put(data):
            return lambda: self.prefix.reg("add", full, *name, "/d", data, "/f", view)
        remove = lambda: self.prefix.reg("delete", full, *name, "/f", view)
        self.broken(text, remove if new is None else put(new), put(old))

    def file(self, text, path, change, grade="problem"):
        """A file that is changed, or with change None deleted, then put back."""
        whole = path.read_bytes()
        self.broken(text, path.unlink if change is None else lambda: path.write_bytes(change(whole)),
                    lambda: path.write_bytes(whole), grade)

    def test_each_fault_is_named(self):
        self.open_prefix("doctor")
        self.assertEqual(self.install("2.4.0"), 0)
        self.assert_well()
        clsid, lib = "{1D6679CA-4011-4747-9EAF-18731D88251A}", "{D02A196F-8E0E-4C70-AB95-338B63123311}"
        server = f"CLSID\\{clsid}\\InprocServer32"
        dll64, dll32 = MSI64 + r"\QuorvexLookup.dll", r"C:\Program Files (x86)\Quorvex\QuorvexLookup.dll"
        file64 = self.prefix.drive / "Program Files/Quorvex/QuorvexLookup.dll"
        file32 = self.prefix.drive / "Program Files (x86)/Quorvex/QuorvexLookup.dll"
        self.registry("64-bit, all users: the class is registered without a DLL", server, None, dll64, None)
        self.registry("32-bit, all users: the class is registered without a DLL", server, None, dll32, None, "32")
        self.registry("is the 32-bit DLL", server, None, dll64, dll32)
        self.registry("64-bit, all users: C:\\gone.dll: the file does not exist", server, None, dll64, r"C:\gone.dll")
        self.registry("threading model", server, "ThreadingModel", "Apartment", "Both")
        self.registry("leads to another class", r"QuorvexLookup.Quorvex\CLSID", None, clsid, "{" + "0" * 8 + clsid[9:])
        self.registry("QuorvexLookup.Quorvex is not registered", r"QuorvexLookup.Quorvex\CLSID", None, clsid, None)
        self.registry("type library is not registered for win64", f"TypeLib\\{lib}\\2.4\\0\\win64", None, dll64, None)
        self.registry("type library's file is missing", f"TypeLib\\{lib}\\2.4\\0\\win64", None, dll64, r"C:\gone.tlb")
        self.registry("interface _Quorvex is not registered", r"Interface\{A8C4E3FB-2C88-469E-857B-24E69D0A8265}\TypeLib",
                      None, lib, None)
        self.file("64-bit, all users: " + dll64 + ": the file does not exist", file64, None)
        self.file("32-bit, all users: " + dll32 + ": the file does not exist", file32, None)
        self.file("is damaged or no DLL", file64, lambda whole: whole[:300])
        self.file("needs DLLs that are not here: KERNEL3X.dll", file64,
                  lambda whole: whole.replace(b"KERNEL32.dll", b"KERNEL3X.dll"))
        self.file("is version 2.1", file64,
                  lambda whole: whole.replace(b"\xbd\x04\xef\xfe\0\0\1\0\4\0\2\0", b"\xbd\x04\xef\xfe\0\0\1\0\1\0\2\0"),
                  "warning")
        key = r"HKCU\Software\Classes" + "\\" + server
        self.broken("hides the installation for all users",
                    lambda: self.prefix.reg("add", key, "/ve", "/d", r"C:\mine.dll", "/f"),
                    lambda: self.prefix.reg("delete", r"HKCU\Software\Classes\CLSID" + "\\" + clsid, "/f"), "warning")
        self.broken("64-bit, all users: not registered",
                    lambda: self.prefix.reg("delete", f"HKLM\\Software\\Classes\\CLSID\\{clsid}", "/f", "/reg:64"), lambda: None)
        self.broken("32-bit, all users: not registered",
                    lambda: self.prefix.reg("delete", f"HKLM\\Software\\Classes\\CLSID\\{clsid}", "/f", "/reg:32"), lambda: None)


class UserSetup(Installed):
    """Wine 8 does not create a user's classes: lookups are not tested here, the registration is read back instead. It
    registers a user's type library for the machine, where the DLL rightly does not look for it when it is removed."""

    def test_install_upgrade_remove(self):
        self.open_prefix("setup")
        files, registry = self.prefix.files(), self.prefix.registry()
        for version in ("2.3.0", "2.4.0"):
            code, output = self.prefix.wine(windows(DIST / f"quorvex-{version}-user-setup.exe"), "/S")
            self.assertEqual(code, 0, output)
        home = next(self.prefix.drive.glob("users/*/AppData/Local/Programs/Quorvex"))
        self.assertTrue((home / "x64/QuorvexLookup.dll").exists() and (home / "x86/quorvex.exe").exists())
        shown = self.prefix.reg("query", "HKCU\\" + CLASS + "\\InprocServer32")
        self.assertIn(r"\Programs\Quorvex\x", shown)
        self.assertIn("2.4.0.0", self.prefix.reg("query", r"HKCU\Software\Quorvex\Setup", "/v", "Version"))
        code, _ = self.prefix.wine(windows(DIST / "quorvex-2.3.0-user-setup.exe"), "/S")
        self.assertEqual(code, 3, "a downgrade must be refused")

        (home / "mine.txt").write_text("a user's own file")
        self.prefix.wine(r"C:\windows\system32\cmd.exe", "/c", "start", "/wait", "",
                         windows(home / "uninstall.exe"), "/S", f"_?={windows(home)}")
        left = self.prefix.files() - files
        self.assertEqual({name.split("/Local/")[1] for name in left},
                         {"Programs/Quorvex", "Programs/Quorvex/mine.txt", "Programs/Quorvex/uninstall.exe"} |
                         ({"Programs"} if "Programs" in {name.split("/Local/")[1] for name in left} else set()))
        self.assertEqual({line for line in self.prefix.registry() - registry if ("uorvex" in line or "1D6679CA" in line) and
                          not line.startswith(r"system.reg:Software\Classes\Typelib")}, set())


if __name__ == "__main__":
    unittest.main(verbosity=2)
