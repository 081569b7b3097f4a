"""What every package needs to know: the version, the date, and where things are."""

import dataclasses
import os
import pathlib
import re
import subprocess
import uuid

ROOT = pathlib.Path(__file__).resolve().parent.parent

# Names of things that never change get their identifiers from this one.
NAMESPACE = uuid.UUID("8f0a3c1e-52d7-4a0b-9a35-6f1f0d0c7b21")


@dataclasses.dataclass
class Release:
    version: str  # "2.4.0.0", as CMake has it
    epoch: int  # seconds since 1970; every time stamp in the packages
    stage: pathlib.Path  # files as they are installed
    dist: pathlib.Path

    @property
    def short_version(self):
        """Major, minor and revision: what Windows Installer compares."""
        return ".".join(self.version.split(".")[:3])

    @property
    def library_version(self):
        return ".".join(self.version.split(".")[:2])

    def identifier(self, *parts):
        return str(uuid.uuid5(NAMESPACE, "/".join(parts))).upper()


def cmake_version():
    text = (ROOT / "CMakeLists.txt").read_text()
    return re.search(r"project\(QuorvexLookup VERSION ([0-9.]+)", text).group(1)


def commit_time():
    """The date of the commit, so that the same commit gives the same bytes."""
    if "SOURCE_DATE_EPOCH" in os.environ:
        return int(os.environ["SOURCE_DATE_EPOCH"])
    return int(run("git", "-C", ROOT, "log", "-1", "--format=%ct", capture=True))


def run(*command, capture=False, **options):
    """Runs a command; its output is shown only if it fails."""
    result = subprocess.run([str(part) for part in command], stdout=subprocess.PIPE,
                            stderr=subprocess.PIPE if capture else subprocess.STDOUT, text=True, **options)
    if result.returncode != 0:
        shown = (result.stdout or "") + (result.stderr or "")
        raise SystemExit(f"package: {command[0]} failed:\n{shown[-4000:]}")
    return result.stdout
