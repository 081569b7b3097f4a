"""Debian packages: the command-line program, and the service with its unit."""

import gzip
import os
import shutil
import subprocess

from release import ROOT, run

MAINTAINER = "Quorvex <support@quorvex.example>"


def build(release):
    return [build_one(release, "quorvex", "tools/quorvex/quorvex",
                      "UK address lookup from the command line",
                      "Looks up addresses, completes lists, updates and checks address data.",
                      {"docs/command-line.md", "docs/local-data.md", "docs/updates.md", "docs/deploy.md"}),
            build_one(release, "quorvex-service", "service/quorvex-service",
                      "self-hosted UK address lookup service",
                      "Answers the pages of the address service from a folder of data files.",
                      {"docs/service.md", "docs/local-data.md"})]


def build_one(release, name, program, summary, description, documents):
    root = release.stage.parent / f"deb-{name}"
    shutil.rmtree(root, ignore_errors=True)
    binary = root / "usr/bin" / name
    binary.parent.mkdir(parents=True)
    shutil.copyfile(ROOT / "build/host" / program, binary)
    run("strip", "--strip-unneeded", binary)
    papers = root / "usr/share/doc" / name
    papers.mkdir(parents=True)
    for document in sorted(documents):
        if (ROOT / document).exists():
            shutil.copyfile(ROOT / document, papers / document.split("/")[-1])
    shutil.copyfile(release.dist / "NOTICES.txt", papers / "copyright")
    (papers / "changelog.gz").write_bytes(gzip.compress((ROOT / "CHANGELOG.md").read_bytes(), mtime=0))
    unit = ROOT / "packaging/quorvex-service.service"
    if name == "quorvex-service" and unit.exists():
        (root / "lib/systemd/system").mkdir(parents=True)
        shutil.copyfile(unit, root / "lib/systemd/system" / unit.name)
    control = root / "DEBIAN"
    control.mkdir()
    size = sum(path.stat().st_size for path in root.rglob("*") if path.is_file()) // 1024
    (control / "control").write_text(
        f"Package: {name}\nVersion: {release.short_version}\nArchitecture: {architecture()}\nMaintainer: {MAINTAINER}\n"
        f"Installed-Size: {size}\nDepends: {depends(root, binary)}\nSection: utils\nPriority: optional\n"
        f"Description: {summary}\n {description}\n")
    for path in [root, *root.rglob("*")]:
        os.chmod(path, 0o755 if path.is_dir() or path == binary else 0o644)
        os.utime(path, (release.epoch, release.epoch))
    target = release.dist / f"{name}_{release.short_version}_{architecture()}.deb"
    run("dpkg-deb", "--build", "--root-owner-group", root, target)
    return target


def architecture():
    return run("dpkg", "--print-architecture", capture=True).strip()


def depends(root, binary):
    """What the program is linked with, as packages; dpkg-shlibdeps wants a source package around it."""
    work = root.parent / "shlibdeps"
    (work / "debian").mkdir(parents=True, exist_ok=True)
    (work / "debian/control").write_text("Source: quorvex\n\nPackage: quorvex\nArchitecture: any\n")
    output = subprocess.run(["dpkg-shlibdeps", "-O", str(binary)], cwd=work, capture_output=True, text=True)
    if output.returncode != 0:
        raise SystemExit("package: dpkg-shlibdeps failed:\n" + output.stderr)
    return output.stdout.strip().removeprefix("shlibs:Depends=")
