"""The setup for one user, made by makensis."""

import os
import shutil

from release import ROOT, run


def build(release):
    work = release.stage.parent / "setup"
    shutil.rmtree(work, ignore_errors=True)
    work.mkdir()
    write_list(release, work / "files.nsh")
    shutil.copy(ROOT / "packaging/quorvex.nsi", work)
    target = release.dist / f"quorvex-{release.short_version}-user-setup.exe"
    defines = {"VERSION": release.short_version, "FULLVERSION": full_version(release), "TARGET": target,
               "ICON": ROOT / "src/server/quorvex.ico"}
    run("makensis", "-V2", "-WX", *[f"-D{name}={value}" for name, value in defines.items()], "quorvex.nsi", cwd=work)
    os.utime(target, (release.epoch, release.epoch))
    return [target]


def full_version(release):
    return ".".join((release.version.split(".") + ["0", "0", "0"])[:4])


def write_list(release, target):
    """The files by name, so that removal takes what was installed and nothing that a user put there."""
    install, remove = ["!macro InstallFiles"], ["!macro RemoveFiles"]
    folders = sorted({path.parent for path in release.stage.rglob("*") if path.is_file()})
    for folder in folders:
        inside = windows(folder.relative_to(release.stage))
        install.append(f'  SetOutPath "{inside}"')
        for path in sorted(folder.iterdir()):
            if path.is_file():
                install.append(f'  File "{path}"')
                remove.append(f'  Delete "{inside}\\{path.name}"')
    every = sorted({parent for folder in folders for parent in [folder, *folder.parents]
                    if release.stage in parent.parents}, reverse=True)
    gone = ["!macro RemoveFolders"] + [f'  RMDir "{windows(folder.relative_to(release.stage))}"' for folder in every]
    target.write_text("\n".join([*install, '  SetOutPath "$INSTDIR"', "!macroend", *remove, "!macroend", *gone,
                                 "!macroend"]) + "\n")


def windows(relative):
    return "\\".join(["$INSTDIR", *relative.parts])
