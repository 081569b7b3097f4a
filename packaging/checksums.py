"""SHA256SUMS of everything in dist/, as sha256sum -c reads it."""

import hashlib


def sha256(path):
    return hashlib.sha256(path.read_bytes()).hexdigest()


def write(release):
    paths = sorted(path for path in release.dist.rglob("*") if path.is_file() and path.name != "SHA256SUMS")
    lines = [f"{sha256(path)}  {path.relative_to(release.dist).as_posix()}\n" for path in paths]
    (release.dist / "SHA256SUMS").write_text("".join(lines))
