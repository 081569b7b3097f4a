"""The portable archive: DLLs for hosts that use them without registration, a worked sample host, the program."""

import archive
from release import ROOT


def build(release):
    entries = archive.tree(release.stage) + archive.tree(ROOT / "packaging/portable")
    folder = f"quorvex-{release.short_version}"
    target = release.dist / f"{folder}-portable.zip"
    archive.write_zip(target, [(f"{folder}/{name}", path) for name, path in entries], release.epoch)
    return [target]
