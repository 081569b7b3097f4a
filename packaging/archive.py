"""Zip archives that come out the same from the same files: sorted names, one date, fixed rights."""

import time
import zipfile


def write_zip(target, entries, epoch):
    """entries: pairs of a name in the archive and the bytes or the path of the file."""
    date = time.gmtime(max(epoch, 315532800))[:6]  # the format has no dates before 1980
    with zipfile.ZipFile(target, "w") as archive:
        for name, content in sorted(entries, key=lambda entry: entry[0]):
            info = zipfile.ZipInfo(name, date)
            info.compress_type = zipfile.ZIP_DEFLATED
            info.create_system = 3
            info.external_attr = 0o100644 << 16
            archive.writestr(info, content if isinstance(content, bytes) else content.read_bytes(), compresslevel=9)


def tree(folder, prefix=""):
    """All files below a folder as entries."""
    return [(prefix + path.relative_to(folder).as_posix(), path) for path in sorted(folder.rglob("*"))
            if path.is_file()]
