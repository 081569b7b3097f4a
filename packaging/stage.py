"""The files as they are installed, under one folder: x64/, x86/, docs/, samples/, data/ and the papers beside them."""

import os
import shutil

from release import ROOT

# Made from the demo's own means, not samples for users.
NOT_SAMPLES = ("data", "demo", "CMakeLists.txt")


def fill(release):
    target = release.stage
    for preset, folder in (("win64", "x64"), ("win32", "x86")):
        (target / folder).mkdir(parents=True, exist_ok=True)
        for name in ("QuorvexLookup.dll", "quorvex.exe", "Quorvex.Lookup.manifest"):
            source = ROOT / "build" / preset / name
            if not source.exists():
                raise SystemExit(f"package: build/{preset}/{name} is not built")
            shutil.copyfile(source, target / folder / name)
    shutil.copytree(ROOT / "docs", target / "docs")
    shutil.copytree(ROOT / "examples", target / "samples", ignore=lambda folder, names: [
        name for name in names if name in NOT_SAMPLES and folder == str(ROOT / "examples")])
    shutil.copytree(ROOT / "examples/data", target / "data")
    for name in ("README.md", "CHANGELOG.md"):
        shutil.copyfile(ROOT / name, target / name)
    for name in ("NOTICES.txt", "sbom.cdx.json"):
        shutil.copyfile(release.dist / name, target / name)
    for path in [target, *target.rglob("*")]:
        os.utime(path, (release.epoch, release.epoch))
        os.chmod(path, 0o755 if path.is_dir() else 0o644)
