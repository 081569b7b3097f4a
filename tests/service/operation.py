#!/usr/bin/env python3
"""What operators and people see: signals, logs, metrics, the page in a browser, the description, the systemd unit.

    tests/service/operation.py PROGRAM DATA_FOLDER WORK_FOLDER
"""
import http.client
import json
import os
import re
import shutil
import signal
import socket
import subprocess
import sys
import threading
import time
import urllib.request

from cluster import RECORD, ROOT, Node, accounts, body_of, run, status_of, wait_for

PROGRAM, DATA, WORK = sys.argv[1:]
REDOCLY = "@redocly/cli@1.25.11"  # checks OpenAPI


def options(folder):
    taken = Node(PROGRAM, DATA, "--node", "first").ready()
    base = ["--data", DATA, "--port=0"]
    for arguments, code, said in (
            ([], 1, "--data is missing"), (["--data", folder, "--port=0"], 1, "no data files in "), (["--help"], 0, "Answers"),
            (["--version"], 0, "quorvex-service 2"), ([*base, "--keys=" + folder + "/none"], 1, "quorvex-service: "),
            ([*base, "--tls-key=x"], 1, "come together"), ([*base, "--access-log-format=combined"], 1, "--access-log"),
            ([*base, "--host=no.such.host.example"], 1, "unknown host"), ([*base, "--trusted-proxy=here"], 1, "not an address"),
            ([*base, "--credits=5"], 1, "--key"), ([*base, "--workers=x"], 1, "--workers"), ([*base, "--nonsense"], 1, "--nonsense"),
            (["--data", DATA, f"--port={taken.port}"], 1, "address in use"), (["--data", DATA], 1, "--port")):
        environment = {"QUORVEX_PORT": "70000"} if arguments == ["--data", DATA] else {}
        result = subprocess.run([PROGRAM, *arguments], capture_output=True, text=True, timeout=20,
                                env={**os.environ, **environment})
        first = (result.stderr + result.stdout).splitlines()[0]
        assert result.returncode == code and said in first, (arguments, result.returncode, first)
    taken.signal(signal.SIGINT)
    assert taken.process.wait(15) == 0
    configuration = os.path.join(folder, "service.conf")
    with open(configuration, "w") as file:
        file.write(f'data="{DATA}"\nport=0\nmessage="1 < 2 & 3"\n')
    node = subprocess.Popen([PROGRAM, "--config", configuration], stdout=subprocess.PIPE, text=True)
    reply = body_of(node.stdout.readline().split()[-1] + RECORD.format("K"))
    node.kill()
    node.wait()
    assert "<pop_message>1 &lt; 2 &amp; 3</pop_message>" in reply, "a message from the options breaks the reply"


def signals_and_logs(folder):
    log, database = os.path.join(folder, "access.log"), os.path.join(folder, "accounts.db")
    key = accounts(PROGRAM, database, "add", "harbour", "--credits", "5").split()[1]
    notices = os.path.join(folder, "notify")
    manager = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
    manager.bind(notices)
    manager.settimeout(10)
    os.environ["NOTIFY_SOCKET"] = notices
    node = Node(PROGRAM, DATA, "--accounts", database, "--access-log", log, "--test")
    del os.environ["NOTIFY_SOCKET"]
    assert manager.recv(100) == b"READY=1"
    assert "<confirm>Yes" in body_of(node.url + RECORD.format(key))
    wait_for("a line of the log", lambda: os.path.getsize(log) > 0)
    os.rename(log, log + ".1")
    node.signal(signal.SIGHUP)
    wait_for("a new log", lambda: os.path.exists(log))
    line = json.loads(open(log + ".1").readline())
    assert (line["key"], line["page"], line["credits"], line["result"]) == ("harbour", "GetAddressRecord", 1, "ok"), line
    assert key not in str(line) and "PE13" not in str(line)
    metrics = body_of(node.url + "/metrics")
    assert 'quorvex_requests_total{page="GetAddressRecord",status="200",result="ok"} 1' in metrics
    assert re.fullmatch(r"(# .*\n|[a-z_]+(\{[^}]*\})? [-+.0-9e]+\n)+", metrics), "not the text format"
    # Told to end while an answer is under way: the answer comes whole, nothing new is taken, the code is 0.
    body_of(node.url + "/test/next?mode=slow&ms=700")
    answers = []
    asking = threading.Thread(target=lambda: answers.append(body_of(node.url + RECORD.format(key))))
    asking.start()
    wait_for("the slow request", lambda: body_of(node.url + "/test/count") != "0\n")
    idle = http.client.HTTPConnection("127.0.0.1", node.port)
    idle.request("GET", "/health")
    idle.getresponse().read()
    node.signal(signal.SIGTERM)
    assert node.process.wait(15) == 0
    asking.join()
    assert "<confirm>" in answers[0]


def files(folder):
    node = Node(PROGRAM, DATA).ready()
    url = node.url + "/updates/" + next(name for name in sorted(os.listdir(DATA + "/updates")) if name.endswith(".zip"))

    def fetch(**fields):
        request = urllib.request.Request(url, headers={name.replace("_", "-"): value for name, value in fields.items()})
        try:
            with urllib.request.urlopen(request, timeout=10) as reply:
                return reply.status, reply.read(), reply.headers
        except urllib.error.HTTPError as error:
            return error.code, b"", error.headers
    status, whole, headers = fetch()
    tag = headers["ETag"]
    assert fetch(If_None_Match=tag)[0] == 304
    assert fetch(Range="bytes=10-19")[:2] == (206, whole[10:20])
    assert fetch(Range="bytes=-7")[:2] == (206, whole[-7:])
    assert fetch(Range="bytes=10-", If_Range='"other"')[:2] == (200, whole)
    status, nothing, headers = fetch(Range=f"bytes={len(whole)}-")
    assert status == 416 and headers["Content-Range"] == f"bytes */{len(whole)}"


def page(folder):
    browser = shutil.which("chromium")
    if not browser:
        print("not tested without chromium: the page in a browser")
        return
    node = Node(PROGRAM, DATA, "--node", "<b>north</b>").ready()

    def run(*arguments):
        return subprocess.run([browser, "--headless=new", "--no-sandbox", "--disable-gpu",
                               f"--user-data-dir={folder}/browser", *arguments, f"{node.url}/?postcode=PE13+4PZ"
                               .replace("+", "%20")], capture_output=True, timeout=60).stdout.decode()
    shown = run("--dump-dom")
    assert "19 QUAY GROVE" in shown and "WEST BOATYARD &amp; SONS" in shown
    assert "&lt;b&gt;north&lt;/b&gt;" in shown and "<script" not in shown
    assert shown.count("<label") == 2 and 'role="img" aria-label="Requests in the last hour' in shown
    picture = os.path.join(os.path.dirname(folder), "page.png")
    run("--window-size=900,1300", f"--screenshot={picture}")
    assert os.path.getsize(picture) > 20000, "an empty picture"
    print("picture of the page:", picture)


def description(folder):
    """The description names what is there, and a linter agrees with it."""
    node = Node(PROGRAM, DATA).ready()
    described = json.loads(body_of(node.url + "/openapi.json"))
    for path in described["paths"]:
        assert status_of(node.url + path.replace("{name}", "UPDATE_F_20260331.zip")) == 200, path
    node.end()
    npx = shutil.which("npx")
    file = os.path.join(folder, "openapi.json")
    with open(file, "w") as out:
        json.dump(described, out)
    try:
        result = subprocess.run([npx or "npx", "--yes", "--cache", os.path.join(os.path.dirname(folder), "npm"), REDOCLY,
                                 "lint", file], capture_output=True, text=True, timeout=120, cwd=folder)
    except (OSError, subprocess.TimeoutExpired) as error:
        print("not tested: the linter of the description:", error)
        return
    if "validat" not in result.stdout + result.stderr:
        print("not tested: the linter of the description cannot be had:", (result.stderr.splitlines() or [""])[-1])
        return
    assert result.returncode == 0, result.stdout + result.stderr


def unit(folder):
    if not shutil.which("systemd-analyze"):
        print("not tested without systemd: the unit")
        return
    copy = os.path.join(folder, "quorvex-service.service")
    with open(os.path.join(ROOT, "packaging/quorvex-service.service")) as file:
        text = file.read().replace("/usr/bin/quorvex-service", os.path.abspath(PROGRAM))
    with open(copy, "w") as file:
        file.write(text)
    result = subprocess.run(["systemd-analyze", "verify", "--man=no", copy], capture_output=True, text=True)
    complaints = [line for line in result.stderr.splitlines() if "quorvex-service.service" in line]
    assert not complaints, complaints
    result = subprocess.run(["systemd-analyze", "security", "--offline=true", copy], capture_output=True, text=True)
    exposure = re.search(r"exposure level.*?: ([0-9.]+)", result.stdout)
    assert exposure and float(exposure[1]) < 2.5, result.stdout[-2000:] + result.stderr


run(WORK, options, signals_and_logs, files, page, description, unit)
