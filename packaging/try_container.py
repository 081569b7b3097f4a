#!/usr/bin/env python3
"""Follows packaging/Containerfile in folders of their own where no container engine runs: needs root and mmdebstrap.

    packaging/try_container.py WORK_FOLDER

Each stage becomes a Debian system in WORK_FOLDER/stage-N. At the end the program of the last stage answers a request.
"""
import os
import shlex
import subprocess
import sys
import time
import urllib.request

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
PORT = "18473"


def instructions():
    with open(os.path.join(ROOT, "packaging/Containerfile")) as file:
        text = file.read().replace("\\\n", " ")
    for line in text.splitlines():
        if line.strip() and not line.startswith("#"):
            word, rest = line.split(None, 1)
            yield word, rest.strip()


def inside(stage, command, **options):
    return ["chroot", *(f"--{name}={value}" for name, value in options.items()), stage, "/bin/sh", "-ec", command]


def main():
    work = os.path.abspath(sys.argv[1])
    os.makedirs(work, exist_ok=True)
    stages, stage, folder, entry, environment = {}, "", "/", [], {}
    for word, rest in instructions():
        print("==", word, rest, flush=True)
        if word == "FROM":
            stage = os.path.join(work, f"stage-{len(stages)}")
            stages[rest.split(" AS ")[-1] if " AS " in rest else stage] = stage
            suite = {"debian:12-slim": "bookworm"}[rest.split()[0]]
            if not os.path.isdir(stage):
                subprocess.run(["mmdebstrap", "-q", "--variant=minbase", suite, stage], check=True)
            folder = "/"
        elif word == "WORKDIR":
            folder = rest
        elif word == "COPY":
            parts = rest.split()
            source = ROOT if not parts[0].startswith("--from=") else stages[parts[0][7:]]
            target = stage + parts[-1]
            os.makedirs(os.path.dirname(target), exist_ok=True)
            ignored = ["--exclude=./build", "--exclude=./.git"] if source == ROOT else []
            if parts[-2] == ".":
                os.makedirs(target, exist_ok=True)
                subprocess.run(f"tar -C {shlex.quote(source)} {' '.join(ignored)} -c . | tar -C {shlex.quote(target)} -x",
                               shell=True, check=True)
            else:
                subprocess.run(["cp", source + parts[-2], target], check=True)
        elif word == "RUN":
            subprocess.run(inside(stage, f"cd {folder}; {rest}"), check=True)
        elif word == "ENV":
            environment.update(pair.split("=", 1) for pair in shlex.split(rest))
        elif word == "ENTRYPOINT":
            entry = rest.strip("[]").replace('"', "").split(",")
        elif word == "USER":
            user = rest
    os.makedirs(stage + "/data", exist_ok=True)
    subprocess.run(["cp", "-r", ROOT + "/examples/data/.", stage + "/data"], check=True)
    environment["QUORVEX_PORT"] = PORT
    service = subprocess.Popen(inside(stage, "exec " + " ".join(entry), userspec=user), env={**os.environ, **environment})
    try:
        for _ in range(100):
            time.sleep(0.1)
            try:
                with urllib.request.urlopen(f"http://127.0.0.1:{PORT}/health") as reply:
                    print("the image answers:", reply.read().decode(), flush=True)
                    break
            except OSError:
                pass
        else:
            sys.exit("the image does not answer")
    finally:
        service.terminate()
    assert service.wait() == 0, "draining must end with 0"


main()
