#!/usr/bin/env python3
"""The running service against bad clients and faults of its surroundings.

    tests/service/faults.py PROGRAM DATA_FOLDER WORK_FOLDER
"""
import concurrent.futures
import contextlib
import json
import os
import shutil
import signal
import socket
import ssl
import subprocess
import sys
import time
import urllib.request

from cluster import RECORD, Node, Postgres, accounts, body_of, run, status_of, wait_for

PROGRAM, DATA, WORK = sys.argv[1:]
SANITIZED = b"__asan_init" in open(PROGRAM, "rb").read()
GOOD = b"GET /health HTTP/1.1\r\nHost: a\r\n\r\n"


def raw(port, data):
    """Everything that comes until the service ends the connection."""
    with socket.create_connection(("127.0.0.1", port), timeout=5) as client:
        with contextlib.suppress(OSError):  # refused: what it said may have come before
            client.sendall(data)
            client.shutdown(socket.SHUT_WR)
        return rest_of(client)


def rest_of(client):
    answer = b""
    with contextlib.suppress(OSError):
        while piece := client.recv(65536):
            answer += piece
    return answer


def statuses(answer):
    return [int(part.split(b" ", 1)[0]) for part in (b"\r\n" + answer).split(b"HTTP/1.1 ")[1:]]


def bad_requests(folder):
    node = Node(PROGRAM, DATA, "--header-seconds", "0.5").ready()
    head = b"GET /health HTTP/1.1\r\nHost: a\r\n"
    cases = [
        (b"GET /health HTTP/1.1\r\n\r\n", 400, "no host"),
        (head + b"Host: b\r\n\r\n", 400, "two hosts"),
        (head + b"Content-Length: 5\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\nGET / HTTP/1.1\r\n\r\n", 400, "two lengths"),
        (head + b"Content-Length: 0\r\nContent-Length: 40\r\n\r\n" + GOOD, 400, "two Content-Lengths"),
        (head + b"Transfer-Encoding: chunked\r\n\r\n0\r\n\r\n" + GOOD, 413, "a body in a GET"),
        (head + b"Content-Length: 40\r\n\r\n" + GOOD, 413, "a request inside a body"),
        (head + b"Transfer-Encoding: xchunked\r\n\r\n" + GOOD, 413, "an unknown coding"),
        (head + b"Content-Length : 40\r\n\r\n" + GOOD, 400, "a blank before the colon"),
        (head + b"X: a\nY: b\r\n\r\n", 400, "a bare line feed"),
        (head + b"Expect: 100-continue\r\n\r\n", 417, "an expectation"),
        (b"POST /health HTTP/1.1\r\nHost: a\r\nContent-Length: 3\r\n\r\nabc", 405, "a POST"),
        (b"GET /health HTTP/2.0\r\nHost: a\r\n\r\n", 505, "another version"),
        (b"GET /he\x00alth HTTP/1.1\r\nHost: a\r\n\r\n", 400, "a NUL"),
        (b"GET /" + b"x" * 9000 + b" HTTP/1.1\r\nHost: a\r\n\r\n", 414, "a long path"),
        (head + b"X: " + b"y" * 20000 + b"\r\n\r\n", 431, "a long field"),
        (b"\x16\x03\x01\x02\x00\x01\x00\x01\xfc\x03\x03", 400, "TLS on a plain port"),
        (b"GET /updates/..%2f..%2fPAF_FULL.dat HTTP/1.1\r\nHost: a\r\nConnection: close\r\n\r\n", 404, "a path upwards"),
        (b"GET /updates/%2e%2e/PAF_FULL.dat HTTP/1.1\r\nHost: a\r\nConnection: close\r\n\r\n", 404, "a path upwards"),
        (b"GET /%zz%%%4 HTTP/1.1\r\nHost: a\r\nConnection: close\r\n\r\n", 404, "bad percent signs"),
    ]
    wrong = []
    for data, expected, what in cases:
        answers = statuses(raw(node.port, data))
        if answers != [expected]:
            wrong.append(f"{what}: {answers}, not {expected}")
    assert not wrong, wrong
    assert statuses(raw(node.port, GOOD * 50)) == [200] * 50, "pipelined requests"

    # A half-sent request is told so, and the others do not notice.
    with socket.create_connection(("127.0.0.1", node.port), timeout=5) as slow:
        slow.sendall(b"GET /health HTTP/1.1\r\n")
        assert statuses(slow.recv(1000)) == [408]
    half = []
    for _ in range(500):
        half.append(socket.create_connection(("127.0.0.1", node.port), timeout=5))
        half[-1].sendall(b"GET /heal")
    began = time.monotonic()
    assert status_of(node.url + "/health") == 200
    assert time.monotonic() - began < 2, "500 half-sent requests held up another one"
    for client in half:
        client.close()

    assert node.process.poll() is None and status_of(node.url + "/health") == 200


def limits(folder):
    node = Node(PROGRAM, DATA, "--max-connections-per-client", "5", "--idle-seconds", "2", "--write-seconds", "0.5",
                "--queue", "1", "--workers", "1").ready()
    clients = [socket.create_connection(("127.0.0.1", node.port), timeout=5) for _ in range(5)]
    for client in clients:
        client.sendall(GOOD)
        assert statuses(client.recv(2000)) == [200]
    assert statuses(raw(node.port, GOOD)) in ([503], []), "a sixth connection"
    assert clients[0].recv(100) == b"", "an idle connection must be ended"
    wait_for("room for connections", lambda: statuses(raw(node.port, GOOD)) == [200])

    # More requests than worker and queue take: some are refused, all are answered, and Retry-After says when to try.
    def ask(_):
        return raw(node.port, f"GET {RECORD.format('K')} HTTP/1.1\r\nHost: a\r\nConnection: close\r\n\r\n".encode())
    with concurrent.futures.ThreadPoolExecutor(4) as pool:
        for _ in range(20):
            answers = list(pool.map(ask, range(40)))
            assert all(statuses(answer) in ([200], [503]) for answer in answers)
            busy = [answer for answer in answers if statuses(answer) == [503] and b"Retry-After: 1" in answer]
            if busy:
                break
        assert busy, "the queue never refused"
    # Who never reads a long answer is dropped.
    pipelined = f"GET /openapi.json HTTP/1.1\r\nHost: a\r\n\r\n".encode() * 1000
    with socket.create_connection(("127.0.0.1", node.port), timeout=5) as deaf:
        deaf.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 4096)
        deaf.setblocking(False)
        deaf.send(pipelined)
        wait_for("the end of a client that never reads",
                 lambda: "quorvex_connections_timed_out_total 0" not in body_of(node.url + "/metrics"))


def tls(folder):
    def make(name):
        subprocess.run(["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "2", "-subj", f"/CN={name}",
                        "-addext", "subjectAltName=DNS:localhost", "-keyout", f"{folder}/key.pem", "-out",
                        f"{folder}/certificate.pem"], check=True, capture_output=True)

    def name():
        context = ssl._create_unverified_context()
        with socket.create_connection(("localhost", node.port), timeout=5) as plain:
            with context.wrap_socket(plain, server_hostname="localhost") as secure:
                secure.sendall(b"GET /metrics HTTP/1.1\r\nHost: a\r\nConnection: close\r\n\r\n")
                assert statuses(rest_of(secure)) == [200]
                return secure.getpeercert(True)
    make("first")
    node = Node(PROGRAM, DATA, "--tls-certificate", f"{folder}/certificate.pem", "--tls-key", f"{folder}/key.pem")
    assert node.url.startswith("https://")
    first = name()
    listed = subprocess.run(["curl", "-sk", node.url.replace("127.0.0.1", "localhost") +
                             "/xmlservice/UpdateDataList.aspx?f=20200101&t=20200101&z=20200101"],
                            capture_output=True, text=True, check=True).stdout
    assert f"https://localhost:{node.port}/updates/UPDATE_" in listed, listed
    make("second")
    node.signal(signal.SIGHUP)
    wait_for("the new certificate", lambda: name() != first)
    # A damaged one is reported, and the old one goes on.
    with open(f"{folder}/certificate.pem", "w") as file:
        file.write("no certificate")
    node.signal(signal.SIGHUP)
    wait_for("the complaint about the damaged certificate", lambda: "cannot be used" in open(node.log.name).read())
    assert name() not in (first, None)


def data_changes(folder):
    data = shutil.copytree(DATA, os.path.join(folder, "moving"))
    node = Node(PROGRAM, data).ready()
    before = body_of(node.url + "/xmlservice/GetLookups.aspx?datatype=1")
    os.rename(data, data + ".away")
    wait_for("health to miss the folder", lambda: status_of(node.url + "/health") == 503)
    assert "cannot be read" in body_of(node.url + RECORD.format("K"))
    assert data not in body_of(node.url + RECORD.format("K")), "a reply shows the server's path"
    os.rename(data + ".away", data)
    node.ready()
    # Another service's packages arrive, the lists are made again, and nobody fails meanwhile.
    shutil.rmtree(os.path.join(data, "updates"), ignore_errors=True)
    source = Node(PROGRAM, DATA).ready()
    node.end()
    follower = Node(PROGRAM, data, "--follow", source.url, "--follow-minutes", "0.05").ready()
    dates = lambda: json.loads(body_of(follower.url + "/health"))["data"]["full"]

    def new_data():
        assert "<confirm>Yes</confirm>" in body_of(follower.url + RECORD.format("K"))
        return dates() == "20260331"
    wait_for("the packages of the other service", new_data)
    lists = body_of(follower.url + "/xmlservice/GetLookups.aspx?datatype=1")
    assert "<T>" in lists and before
    assert os.path.exists(os.path.join(data, "updates", "UPDATE_F_20260331.zip"))


def database_faults(folder):
    postgres = Postgres(folder)
    key = accounts(PROGRAM, postgres.url, "add", "one", "--credits", "1000").split()[1]
    postgres.end()
    # Down at the start: the service starts, says so, and refuses after its patience.
    node = Node(PROGRAM, DATA, "--accounts", postgres.url, "--accounts-wait", "0.3")
    assert status_of(node.url + RECORD.format(key)) == 503
    wait_for("a word in /health", lambda: json.loads(body_of(node.url + "/health"))["accounts"] in ("ready", "unreachable"))
    postgres.start()
    wait_for("lookups again", lambda: status_of(node.url + RECORD.format(key)) == 200)
    given = 1000 - int(postgres.scalar("SELECT credits FROM accounts"))
    assert given == int(postgres.scalar("SELECT count(*) FROM ledger WHERE change=-1"))
    assert key not in postgres.scalar("SELECT string_agg(accounts::text, ' ') FROM accounts"), "a key in plain text"
    node.end()
    postgres.end()

    # Two services on one SQLite file; credits run out exactly.
    sqlite = os.path.join(folder, "accounts.db")
    key = accounts(PROGRAM, sqlite, "add", "few", "--credits", "60").split()[1]
    two = [Node(PROGRAM, DATA, "--accounts", sqlite).ready() for _ in range(2)]
    with concurrent.futures.ThreadPoolExecutor(8) as pool:
        replies = list(pool.map(lambda i: body_of(two[i % 2].url + RECORD.format(key)), range(100)))
    assert sum("<confirm>Yes" in reply for reply in replies) == 60
    assert "No credits are left" in body_of(two[0].url + RECORD.format(key))
    accounts(PROGRAM, sqlite, "credit", "few", "1")
    wait_for("the new credit", lambda: "<confirm>Yes" in body_of(two[1].url + RECORD.format(key)))
    accounts(PROGRAM, sqlite, "disable", "few")
    wait_for("the key to be disabled", lambda: "disabled" in body_of(two[0].url + RECORD.format(key)))
    slow = accounts(PROGRAM, sqlite, "add", "slow", "--rate", "2").split()[1]
    seen = [status_of(two[0].url + RECORD.format(slow)) for _ in range(6)]
    assert seen.count(200) in (2, 3) and 429 in seen, seen
    away = accounts(PROGRAM, sqlite, "add", "away", "--from", "192.0.2.0/24").split()[1]
    assert "from this address" in body_of(two[0].url + RECORD.format(away))
    lines = accounts(PROGRAM, sqlite, "ledger", "few").splitlines()
    assert len(lines) == 63
    accounts(PROGRAM, sqlite, "compact", "--before", "2100-01-01")
    assert len(accounts(PROGRAM, sqlite, "ledger", "few").splitlines()) == 1


CLOCK = r"""
#define _GNU_SOURCE
#include <stdio.h>
#include <stdlib.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <time.h>
#include <unistd.h>
static long step(void) {
    long seconds = 0;
    FILE *file = fopen(getenv("CLOCK_STEP"), "r");
    if (file) { if (fscanf(file, "%ld", &seconds) != 1) seconds = 0; fclose(file); }
    return seconds;
}
int clock_gettime(clockid_t clock, struct timespec *now) {
    const int result = (int)syscall(SYS_clock_gettime, clock, now);
    if (clock == CLOCK_REALTIME) now->tv_sec += step();
    return result;
}
time_t time(time_t *out) {
    struct timespec now;
    clock_gettime(CLOCK_REALTIME, &now);
    return out ? *out = now.tv_sec : now.tv_sec;
}
"""


def clock_steps(folder):
    """The wall clock of one service is set back and forward: rates go by real time, and the ledger stays whole."""
    if SANITIZED:
        print("not tested under the sanitizers, which want to be loaded first: steps of the clock")
        return
    library, step = os.path.join(folder, "clock.so"), os.path.join(folder, "step")
    subprocess.run(["cc", "-shared", "-fPIC", "-x", "c", "-", "-o", library], input=CLOCK, text=True, check=True)
    sqlite = os.path.join(folder, "clock.db")
    keys = [accounts(PROGRAM, sqlite, "add", name, "--credits", "100", *options).split()[1]
            for name, options in (("slow", ("--rate", "2")), ("free", ()))]
    os.environ.update(LD_PRELOAD=library, CLOCK_STEP=step)
    node = Node(PROGRAM, DATA, "--accounts", sqlite).ready()
    del os.environ["LD_PRELOAD"]
    burst = lambda: [status_of(node.url + RECORD.format(keys[0])) for _ in range(8)].count(200)
    given, other, years = burst(), 0, set()
    for seconds in (-86400 * 400, 86400 * 800):
        with open(step + ".new", "w") as file:
            file.write(str(seconds))
        os.rename(step + ".new", step)
        years.add(urllib.request.urlopen(node.url + "/metrics").headers["Date"].split()[3])
        began = time.monotonic()
        at_once = burst()
        assert at_once <= 3 + 2 * (time.monotonic() - began), "the step gave requests"
        time.sleep(1.1)
        later = burst()
        assert 2 <= later, "the step took requests"
        given += at_once + later
        other += "<confirm>Yes" in body_of(node.url + RECORD.format(keys[1]))
    assert len(years) == 2, "the clock was not stepped"
    node.end()
    left = [json.loads(line)["credits"] for line in accounts(PROGRAM, sqlite, "list", "--json").splitlines()]
    assert left == [100 - given, 100 - other] and other == 2, (left, given, other)
    for name, spent in (("slow", given), ("free", other)):
        assert len(accounts(PROGRAM, sqlite, "ledger", name).splitlines()) == 1 + spent


def full_disk(folder):
    if os.getuid() != 0:
        print("not tested without root: a full disk under SQLite")
        return
    disk = os.path.join(folder, "disk")
    os.makedirs(disk)
    if subprocess.run(["mount", "-t", "tmpfs", "-o", "size=2m", "tmpfs", disk], capture_output=True).returncode:
        print("not tested where nothing can be mounted: a full disk under SQLite")
        return
    try:
        sqlite = os.path.join(disk, "accounts.db")
        key = accounts(PROGRAM, sqlite, "add", "one", "--credits", "1000").split()[1]
        node = Node(PROGRAM, DATA, "--accounts", sqlite, "--accounts-wait", "0.2").ready()
        assert status_of(node.url + RECORD.format(key)) == 200
        with open(os.path.join(disk, "filler"), "wb", buffering=0) as filler:
            try:
                while filler.write(b"x" * 4096):
                    pass
            except OSError:
                pass
        seen = [status_of(node.url + RECORD.format(key)) for _ in range(8)]
        assert 503 in seen, "answers went on without a place for their ledger"
        os.remove(os.path.join(disk, "filler"))
        wait_for("lookups again", lambda: status_of(node.url + RECORD.format(key)) == 200)
        answers = int(body_of(node.url + "/metrics").split("quorvex_credits_taken_total ")[-1].split()[0])
        entries = sum(" -1 " in line for line in accounts(PROGRAM, sqlite, "ledger").splitlines())
        assert answers <= entries <= answers + seen.count(503), (answers, entries, seen)
        node.end()
    finally:
        subprocess.run(["umount", disk], check=False)


run(WORK, bad_requests, limits, tls, data_changes, database_faults, clock_steps, full_disk)
