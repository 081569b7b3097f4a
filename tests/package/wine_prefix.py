"""Wine prefixes of a test's own: each begins as a copy of one that is made fresh and never installed into."""

import os
import pathlib
import re
import shutil
import subprocess

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
BASE = ROOT / "build/package-test/prefix-base"
# Keys that Wine writes by itself while programs run.
NOISE = re.compile(r"\\(Explorer|Wine|Cryptography|Fonts|Prefetcher|Control\\Print|MountedDevices|DeviceClasses|Tracing)"
                   r"|\\Installer\\(Folders|Rollback|InProgress)|\\Internet Settings|\\Session Manager\\Environment$",
                   re.IGNORECASE)


class Prefix:
    def __init__(self, name):
        if not (BASE / "ready").exists():
            make(BASE)
        self.path = BASE.parent / f"prefix-{name}"
        shutil.rmtree(self.path, ignore_errors=True)
        subprocess.run(["cp", "-a", BASE, self.path], check=True)
        self.drive = self.path / "drive_c"

    def run(self, *command, timeout=300, cwd=None, **variables):
        """Runs a Windows program; (exit code, output of both streams)."""
        result = subprocess.run([*map(str, command)], env=environment(self.path) | variables, cwd=cwd or self.drive,
                                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                                timeout=timeout)
        return result.returncode, result.stdout.decode("utf-8", "replace").replace("\r\n", "\n")

    def wine(self, *command, **options):
        return self.run("wine", *command, **options)

    def reg(self, *command):
        code, output = self.wine("reg", *command)
        if code != 0:
            raise AssertionError(f"reg {command}: {output}")
        return output

    def close(self):
        subprocess.run(["wineserver", "-k"], env=environment(self.path), check=False)
        subprocess.run(["wineserver", "-w"], env=environment(self.path), check=False)

    def remove(self):
        self.close()
        shutil.rmtree(self.path, ignore_errors=True)

    def files(self):
        """Files of the disk, those aside that Wine and its installer keep for themselves."""
        own = re.compile(r"(?i)^(windows/(installer|temp|inf|prefetch)|users/[^/]*/(temp|appdata/local/temp))")
        names = {path.relative_to(self.drive).as_posix() for path in self.drive.rglob("*")}
        return {name for name in names if not own.match(name)}

    def registry(self):
        """Keys and values of both hives, after Wine has written them to its files."""
        self.close()
        lines = set()
        for hive in ("system.reg", "user.reg"):
            key = ""
            for line in (self.path / hive).read_text(errors="replace").splitlines():
                if line.startswith("["):
                    key = hive + ":" + line[1:line.index("]")].replace("\\\\", "\\")
                    if not NOISE.search(key):
                        lines.add(key)
                elif line.startswith(('"', "@")) and not NOISE.search(key):
                    lines.add(f"{key} {line}")
        return lines


def environment(path):
    kept = {name: value for name, value in os.environ.items() if not name.lower().endswith("_proxy")}
    return kept | {"WINEPREFIX": str(path), "WINEARCH": "win64", "WINEDEBUG": "-all", "LC_ALL": "C.UTF-8",
                   "WINEDLLOVERRIDES": "mscoree,mshtml="}


def make(path):
    shutil.rmtree(path, ignore_errors=True)
    path.parent.mkdir(parents=True, exist_ok=True)
    for command in (["wineboot", "-i"],
                    ["wine", "reg", "add", r"HKCU\Software\Wine\WineDbg", "/v", "ShowCrashDialog", "/t", "REG_DWORD", "/d",
                     "0", "/f"],
                    ["wineserver", "-w"]):
        subprocess.run(command, env=environment(path), stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                       stderr=subprocess.DEVNULL, check=False, timeout=600)
    (path / "ready").touch()


def windows(path):
    """A path of the machine as Windows programs name it."""
    return "Z:" + str(path).replace("/", "\\")
