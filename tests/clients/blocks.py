#!/usr/bin/env python3
"""Extracts the code blocks of README.md and docs and runs, compiles or checks each as its language allows.

    blocks.py BITS CXX INCLUDES FOLDER      under Wine, with the service's address in QUORVEX_SERVICE_URL; INCLUDES are folders
                                            separated by colons; FOLDER becomes the C:\\AddressData of the documents

What is run must come to its end and print something. Where a program is missing the last line says which blocks were left out, and
the exit code is 77.
"""
import collections
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parents[1]
Block = collections.namedtuple("Block", "file line language text")
# Languages of hosts; calls.py checks their calls.
CALLING = ("powershell", "vba", "vbscript", "python", "csharp")
END = "the block has come to its end"


def all_blocks():
    found = []
    for path in [ROOT / "README.md", ROOT / "DEVELOPERS.md", ROOT / "examples" / "README.md", *sorted((ROOT / "docs").glob("*.md"))]:
        text = path.read_text(encoding="utf-8")
        for match in re.finditer(r"^```(\w*)\n(.*?)^```$", text, re.M | re.S):
            found.append(Block(str(path.relative_to(ROOT)), text.count("\n", 0, match.start()) + 2, match[1], match[2]))
    return found


# What the fragments in the documents take for granted.
VBSCRIPT_CONTEXT = """
Class Place
    Public Name
    Public Telephone
    Public Longitude
    Public Latitude
End Class
Class Form
    Public Street
End Class
Dim lookup, market, branches, customer, page, reply
Set lookup = CreateObject("QuorvexLookup.Quorvex")
lookup.SetServiceURL "{service}"
Set market = New Place
market.Name = "Wisbech"
market.Longitude = 0.16
market.Latitude = 52.67
branches = Array(market)
Set customer = New Form
page = "<a href=""http://localhost/"">"
reply = "<town>Ely</town><town>March</town>"
"""


class Runner:
    def __init__(self, bits, compiler, includes):
        self.bits, self.compiler = bits, compiler
        self.includes = [f"-I{folder}" for folder in includes.split(":") if folder]
        self.folder = pathlib.Path(tempfile.mkdtemp())
        self.left_out = collections.Counter()

    def write(self, name, text):
        path = self.folder / name
        path.write_text(text, encoding="utf-8")
        return path

    def windows(self, path):
        return "Z:" + str(path).replace("/", "\\")

    def output(self, *command):
        run = subprocess.run(list(map(str, command)), stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=120)
        return run.returncode, run.stdout.decode(errors="replace").replace("\r", "")

    def vbscript(self, block):
        context = "" if "CreateObject" in block.text else VBSCRIPT_CONTEXT.format(service=os.environ["QUORVEX_SERVICE_URL"])
        path = self.write("block.vbs", f'{context}{block.text}\nWScript.Echo "{END}"\n')
        code, text = self.output(ROOT / "tools" / "cscript", self.bits, self.windows(path))
        if not text.endswith(END + "\n"):
            return "did not come to its end: " + text
        if "WScript.Echo" in block.text and text == END + "\n":
            return "printed nothing"
        return None

    def python(self, block):
        path = self.write("block.py", block.text)
        own = os.environ.get("QUORVEX_WINDOWS_PYTHON" + ("32" if self.bits == "32" else ""))
        python = pathlib.Path(own) if own else ROOT / "build" / "clients" / self.bits / "python.exe"
        if not python.exists():
            self.left_out["python, no CPython for Windows"] += 1
            return None
        code, text = self.output("wine", python, "-B", self.windows(path))
        return None if code == 0 and text.strip() else f"ended with {code}: {text}"

    def csharp(self, block):
        if not shutil.which("mcs"):
            self.left_out["csharp, no compiler"] += 1
            return None
        body = block.text if "class " in block.text else f"static class Block {{ static void Main() {{\n{block.text}\n}} }}"
        path = self.write("block.cs", "using System;\n" + body)
        code, text = self.output("mcs", "-nologo", "-r:Microsoft.CSharp.dll", "-r:System.Core.dll", f"-out:{path}.exe", path)
        return None if code == 0 else text

    def cpp(self, block):
        """Blocks that use the COM object are run, those of the libraries are compiled."""
        com = "CoCreateInstance" in block.text
        head = ("#include <windows.h>\n#include <cstdio>\n#include \"quorvex_com.h\"\n" if com else
                "#include <jet/cursor.h>\n#include <jet/database.h>\n")
        parameters = "" if com else "[[maybe_unused]] const std::filesystem::path& path"
        ending = "q->Release(); CoUninitialize(); return 0;" if com else "return 0;"
        name = "int main()" if com else f"int Block({parameters})"
        path = self.write("block.cpp", f"{head}\n{name} {{\n{block.text}\n{ending}\n}}\n")
        program = self.folder / "block.exe"
        code, text = self.output(self.compiler, "-std=c++20", "-fpermissive", "-w", *self.includes,
                                 *(["-static", path, *self.identifiers(), "-o", program, "-lole32", "-loleaut32", "-luuid"] if com else
                                   ["-fsyntax-only", path]))
        if code or not com:
            return text if code else None
        code, text = self.output(ROOT / "tools" / f"wine{self.bits}", program)
        return None if code == 0 and text.strip() else f"ended with {code}: {text}"

    def identifiers(self):
        """The source of the class and interface identifiers, which the build makes beside the header."""
        return [path for folder in self.includes for path in pathlib.Path(folder[2:]).glob("quorvex_com_i.c")]

    def commands(self, block):
        """Commands and what is only shown: the project's own commands in it must exist."""
        for command in re.findall(r"^\s*(?:\$ )?(\./\w+|tools/[\w-]+|tests/[\w/-]+)", block.text, re.M):
            if not os.access(ROOT / command, os.X_OK):
                return f"there is no {command}"
        return None

    def json(self, block):
        try:
            json.loads(block.text)
        except ValueError as error:
            return str(error)
        return None

    def checked_elsewhere(self, _):
        return None

    def run(self, block):
        ways = {"vbscript": self.vbscript, "python": self.python, "csharp": self.csharp, "cpp": self.cpp, "json": self.json,
                "vba": self.checked_elsewhere, "powershell": self.checked_elsewhere}
        ways.update(dict.fromkeys(("", "console", "sh", "bash", "text", "ini", "xml", "nginx"), self.commands))
        if block.language not in ways:
            return f"nothing checks blocks of the language {block.language}"
        return ways[block.language](block)


def main():
    bits, compiler, includes, folder = sys.argv[1:]
    data = pathlib.Path(os.environ["WINEPREFIX"]) / "drive_c" / "AddressData"
    shutil.rmtree(data, ignore_errors=True)
    shutil.copytree(folder, data)
    runner = Runner(bits, compiler, includes)
    failed, blocks = 0, all_blocks()
    for block in blocks:
        fault = runner.run(block)
        if fault:
            failed += 1
            print(f"FAIL {block.file}:{block.line}: {fault}", flush=True)
    shutil.rmtree(runner.folder)
    shutil.rmtree(data)
    if failed or len(blocks) < 15:
        print(f"FAIL {failed} of {len(blocks)}")
        return 1
    if runner.left_out:
        reasons = ", ".join(f"{count} of {reason}" for reason, count in runner.left_out.items())
        print(f"SKIPPED: {len(blocks)} blocks passed or were left out: {reasons}")
        return 77
    print(f"PASS {len(blocks)} blocks")
    return 0


if __name__ == "__main__":
    sys.exit(main())
