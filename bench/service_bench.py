#!/usr/bin/env python3
"""The service beside nginx with a static file of the same size, asked by wrk in one run.

    bench/service_bench.py [--seconds N] [--data FOLDER] [--program FILE]

For each page and number of connections: requests per second, latency at the 50th and 99th percentile, processor time
of the server per request. Then the same with accounts, 1,000 patient clients, and slow clients beside fast ones.
"""
import argparse
import http.client
import os
import re
import resource
import select
import shutil
import socket
import subprocess
import sys
import tempfile
import threading
import time

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
sys.path.insert(0, os.path.join(ROOT, "tests/service"))
from cluster import Node, Postgres, accounts, free_port, status_of, wait_for  # noqa: E402

RECORD = "/xmlservice/GetAddressRecord.aspx?datakey={}&id=PE13%204PZ_1_F&COM=1"
LIST = "/xmlservice/SearchForAddress.aspx?datakey={}&postcode=PE13%204PZ&COM=1"
TICK = os.sysconf("SC_CLK_TCK")


def processor_seconds(pids):
    ticks = 0
    for pid in pids:
        with open(f"/proc/{pid}/stat") as file:
            fields = file.read().rsplit(")", 1)[1].split()
        ticks += int(fields[11]) + int(fields[12])
    return ticks / TICK


def milliseconds(text):
    value, unit = re.fullmatch(r"([0-9.]+)(us|ms|s)", text).groups()
    return float(value) * {"us": 0.001, "ms": 1, "s": 1000}[unit]


def wrk(url, connections, seconds, pids):
    before = processor_seconds(pids)
    out = subprocess.run(["wrk", "-t1", f"-c{connections}", f"-d{seconds}s", "--timeout", "10s", "--latency", url],
                         capture_output=True, text=True, check=True).stdout
    used = processor_seconds(pids) - before
    requests = int(re.search(r"(\d+) requests in", out)[1])
    errors = re.findall(r"(Socket errors.*|Non-2xx.*)", out)
    return {"rate": float(re.search(r"Requests/sec:\s+([0-9.]+)", out)[1]),
            "p50": milliseconds(re.search(r"50%\s+(\S+)", out)[1]), "p99": milliseconds(re.search(r"99%\s+(\S+)", out)[1]),
            "cpu": used / max(1, requests) * 1e6, "errors": " ".join(errors)}


class Nginx:
    def __init__(self, folder, sizes):
        self.port = free_port()
        www = os.path.join(folder, "www")
        os.makedirs(www)
        for name, size in sizes.items():
            with open(os.path.join(www, name), "w") as file:
                file.write("x" * size)
        os.chmod(folder, 0o755)
        path = os.path.join(folder, "nginx.conf")
        with open(path, "w") as file:
            file.write(f"worker_processes auto; daemon off; pid {folder}/nginx.pid; error_log {folder}/nginx.log;\n"
                       "events { worker_connections 4096; }\nhttp { access_log off; sendfile on;"
                       f" keepalive_requests 100000000; server {{ listen 127.0.0.1:{self.port} backlog=4096;"
                       f" root {www}; }} }}\n")
        self.process = subprocess.Popen(["nginx", "-c", path, "-p", folder], stderr=subprocess.DEVNULL)
        self.url = f"http://127.0.0.1:{self.port}"
        wait_for("nginx", lambda: status_of(self.url + "/record") == 200)
        children = subprocess.run(["pgrep", "-P", str(self.process.pid)], capture_output=True, text=True).stdout.split()
        self.pids = [self.process.pid, *map(int, children)]


def show(title, result, peer=None):
    share = f"{result['rate'] / peer['rate']:6.2f}" if peer else "      "
    print(f"{title:34}{result['rate']:10.0f}{result['p50']:9.2f}{result['p99']:9.2f}{result['cpu']:9.1f} {share} "
          f"{result['errors']}", flush=True)


def beside_nginx(program, data, folder, seconds):
    node = Node(program, data).ready()
    pages = {"record": RECORD.format("K"), "list": LIST.format("K")}
    connection = http.client.HTTPConnection("127.0.0.1", node.port)
    sizes = {}
    for name, target in pages.items():
        connection.request("GET", target)
        sizes[name] = len(connection.getresponse().read())
    nginx = Nginx(folder, sizes)
    print(f"{'':34}{'a second':>10}{'p50 ms':>9}{'p99 ms':>9}{'cpu us':>9}  share of nginx")
    for name, target in pages.items():
        for connections in (1, 8, 64, 512):
            peer = wrk(f"{nginx.url}/{name}", connections, seconds, nginx.pids)
            show(f"nginx {name}, {connections} connections", peer)
            show(f"service {name}, {connections} connections",
                 wrk(node.url + target, connections, seconds, [node.process.pid]), peer)
    nginx.process.terminate()
    return node


def with_accounts(program, data, folder, seconds):
    databases = {"SQLite": os.path.join(folder, "accounts.db")}
    if shutil.which("setpriv"):
        postgres = Postgres(folder)
        databases["PostgreSQL"] = postgres.url
    for name, database in databases.items():
        key = accounts(program, database, "add", "bench", "--credits", "1000000000").split()[1]
        node = Node(program, data, "--accounts", database).ready()
        for connections in (64, 512):
            show(f"record charged in {name}, {connections}",
                 wrk(node.url + RECORD.format(key), connections, seconds, [node.process.pid]))
        node.end()


def patient_clients(node, count=1000, seconds=5):
    """Keep-alive clients with a request a second each: how long the slowest answer took."""
    clients = [socket.create_connection(("127.0.0.1", node.port)) for _ in range(count)]
    request = f"GET {RECORD.format('K')} HTTP/1.1\r\nHost: a\r\n\r\n".encode()
    waits, asked = [], {}
    poll = select.epoll()
    by_number = {client.fileno(): client for client in clients}
    for number in by_number:
        poll.register(number, select.EPOLLIN)
    start = time.monotonic()
    turn = 0
    while len(waits) < count * seconds and time.monotonic() < start + seconds + 10:
        while turn < count * seconds and start + turn / count <= time.monotonic():
            client = clients[turn % count]
            asked[client.fileno()] = time.monotonic()
            client.sendall(request)
            turn += 1
        for number, _ in poll.poll(0.001):
            by_number[number].recv(65536)
            if number in asked:
                waits.append(time.monotonic() - asked.pop(number))
    waits.sort()
    print(f"{count} clients with a request a second: {len(waits)} answers, p99 {waits[int(len(waits) * .99)] * 1000:.1f} ms, "
          f"slowest {waits[-1] * 1000:.1f} ms", flush=True)
    for client in clients:
        client.close()


def slow_clients(program, data, seconds, count=10000):
    """Clients that send a byte a second, and what they do to the others."""
    limit = resource.getrlimit(resource.RLIMIT_NOFILE)[1]
    resource.setrlimit(resource.RLIMIT_NOFILE, (limit, limit))
    count = min(count, limit - 500)
    node = Node(program, data, "--header-seconds", "600").ready()
    alone = wrk(node.url + RECORD.format("K"), 64, seconds, [node.process.pid])
    clients = [socket.create_connection(("127.0.0.1", node.port)) for _ in range(count)]
    stop = threading.Event()

    def dribble():
        letters = f"GET {RECORD.format('K')} HTTP/1.1\r\nX: ".encode() + b"x" * 600
        for letter in letters:
            for client in clients:
                client.send(bytes([letter]))
            if stop.wait(0.2):
                return
    thread = threading.Thread(target=dribble)
    thread.start()
    beside = wrk(node.url + RECORD.format("K"), 64, seconds, [node.process.pid])
    stop.set()
    thread.join()
    show("record, 64 connections", alone)
    show(f"the same beside {count} slow clients", beside)
    for client in clients:
        client.close()
    node.end()


def memory(node, requests=1000000):
    def resident():
        with open(f"/proc/{node.process.pid}/status") as file:
            return int(re.search(r"VmRSS:\s+(\d+)", file.read())[1]) / 1024
    wrk(node.url + RECORD.format("K"), 64, 3, [node.process.pid])
    before, done = resident(), 0
    while done < requests:
        done += int(wrk(node.url + RECORD.format("K"), 64, 10, [node.process.pid])["rate"] * 10)
    print(f"memory: {before:.1f} MiB, after {done} requests {resident():.1f} MiB", flush=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--seconds", type=int, default=5)
    parser.add_argument("--data", default=os.path.join(ROOT, "examples/data"))
    parser.add_argument("--program", default=os.path.join(ROOT, "build/host/service/quorvex-service"))
    parser.add_argument("--memory", type=int, default=1000000, help="requests for the look at memory")
    given = parser.parse_args()
    os.makedirs(os.path.join(ROOT, "build"), exist_ok=True)
    folder = tempfile.mkdtemp(dir=os.path.join(ROOT, "build"), prefix="service-bench.")
    try:
        data = shutil.copytree(given.data, os.path.join(folder, "data"))
        began = time.monotonic()
        node = Node(given.program, data)
        print(f"first answer {1000 * (time.monotonic() - began):.0f} ms after the start", flush=True)
        node.end()
        node = beside_nginx(given.program, data, folder, given.seconds)
        patient_clients(node)
        memory(node, given.memory)
        node.end()
        with_accounts(given.program, data, folder, given.seconds)
        slow_clients(given.program, data, given.seconds)
    finally:
        for node in Node.started:
            node.end()
        for postgres in list(Postgres.started):
            postgres.stop()
        shutil.rmtree(folder, ignore_errors=True)


main()
