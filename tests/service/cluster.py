"""Parts of a fleet on this machine: PostgreSQL, nodes of the service, HAProxy. For tests, benchmark and demo."""
import contextlib
import glob
import os
import pwd
import re
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import time
import urllib.request

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))


RECORD = "/xmlservice/GetAddressRecord.aspx?datakey={}&id=PE13%204PZ_1_F&COM=1"
RUNNING = []  # what work_folder ends


@contextlib.contextmanager
def work_folder(parent, name):
    """A new folder; afterwards everything that was started ends, and the folder goes."""
    os.makedirs(parent, exist_ok=True)
    folder = tempfile.mkdtemp(dir=os.path.abspath(parent), prefix=name + ".")
    try:
        yield folder
    finally:
        for running in reversed(RUNNING):
            running.end()
        RUNNING.clear()
        shutil.rmtree(folder, ignore_errors=True)


def run(work, *tests):
    for test in tests:
        with work_folder(work, test.__name__) as folder:
            began = time.monotonic()
            test(folder)
            print(f"{test.__name__}: {time.monotonic() - began:.1f} s", flush=True)


def skip(reason):
    print("SKIPPED:", reason)
    sys.exit(77)


def body_of(url):
    with urllib.request.urlopen(url, timeout=20) as reply:
        return reply.read().decode()


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def wait_for(what, condition, seconds=20):
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        with contextlib.suppress(OSError):
            if condition():
                return
        time.sleep(0.02)
    raise AssertionError(f"{what} did not happen within {seconds} s")


def status_of(url):
    try:
        with urllib.request.urlopen(url, timeout=2) as reply:
            return reply.status
    except urllib.error.HTTPError as error:
        return error.code


class Postgres:
    """A private instance; it refuses to run as root, so root lends it a user."""

    def __init__(self, folder):
        found = sorted(glob.glob("/usr/lib/postgresql/*/bin"))
        if not found:
            skip("PostgreSQL is not installed")
        self.bin, self.data, self.port = found[-1], os.path.join(folder, "postgres"), free_port()
        self.user = None
        os.makedirs(self.data)
        if os.getuid() == 0:
            self.user = "postgres"
            os.chmod(folder, 0o755)
            shutil.chown(self.data, pwd.getpwnam(self.user).pw_uid)
        self.run("initdb", "-A", "trust", "-U", "quorvex", "-E", "UTF8", "--no-locale", "-D", self.data)
        RUNNING.append(self)
        self.start()
        self.run("createdb", "-h", "127.0.0.1", "-p", str(self.port), "-U", "quorvex", "quorvex")
        self.url = f"postgresql://quorvex@127.0.0.1:{self.port}/quorvex"

    def run(self, program, *arguments):
        command = [os.path.join(self.bin, program), *arguments]
        if self.user:
            command = ["setpriv", "--reuid", self.user, "--regid", self.user, "--clear-groups", *command]
        subprocess.run(command, check=True, cwd="/", stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)

    def start(self):
        options = f"-p {self.port} -c listen_addresses=127.0.0.1 -c unix_socket_directories='' -c max_connections=50"
        self.run("pg_ctl", "-D", self.data, "-l", os.path.join(self.data, "log"), "-w", "-o", options, "start")

    def end(self):
        if os.path.exists(os.path.join(self.data, "postmaster.pid")):
            self.run("pg_ctl", "-D", self.data, "-m", "fast", "-w", "stop")

    def scalar(self, statement):
        return subprocess.run([os.path.join(self.bin, "psql"), "-At", self.url, "-c", statement], check=True,
                              capture_output=True, text=True).stdout.strip()


class Node:
    def __init__(self, program, data, *options, port=0):
        self.log = open(os.path.join(os.path.dirname(data), f"node-{id(self)}.log"), "w+")
        self.process = subprocess.Popen([program, "--data", data, "--port", str(port), *options],
                                        stdout=subprocess.PIPE, stderr=self.log, text=True)
        RUNNING.append(self)
        line = self.process.stdout.readline()
        if not line.startswith("listening on "):
            self.log.seek(0)
            raise AssertionError("the service ended at once: " + self.log.read())
        self.url = line.split()[-1]
        self.port = int(self.url.rsplit(":", 1)[1])

    def ready(self):
        wait_for("readiness", lambda: status_of(self.url + "/health") == 200)
        return self

    def signal(self, number):
        self.process.send_signal(number)

    def end(self):
        if self.process.poll() is None:
            self.process.kill()
        return self.process.wait()


class Haproxy:
    """packaging/haproxy.cfg with the addresses of these nodes."""

    def __init__(self, folder, nodes):
        if not shutil.which("haproxy"):
            skip("haproxy is not installed")
        self.port = free_port()
        with open(os.path.join(ROOT, "packaging/haproxy.cfg")) as shipped:
            text = shipped.read()
        text = text.replace("bind :8080", f"bind 127.0.0.1:{self.port}")
        for number, node in enumerate(nodes, 1):
            text, count = re.subn(rf"server node{number} \S+", f"server node{number} 127.0.0.1:{node.port}", text)
            assert count == 1
        text = re.sub(r".*server node\d 10\..*\n", "", text)
        path = os.path.join(folder, "haproxy.cfg")
        with open(path, "w") as file:
            file.write(text)
        self.process = subprocess.Popen(["haproxy", "-db", "-f", path], stdout=subprocess.DEVNULL,
                                        stderr=subprocess.DEVNULL)
        RUNNING.append(self)
        self.url = f"http://127.0.0.1:{self.port}"
        wait_for("HAProxy's answer", lambda: status_of(self.url + "/health") == 200)

    def end(self):
        self.process.send_signal(signal.SIGKILL)
        self.process.wait()


def accounts(program, database, *arguments):
    return subprocess.run([program, "accounts", "--accounts", database, *arguments], check=True, capture_output=True,
                          text=True).stdout
