#!/usr/bin/env python3
"""The service beside nginx with a static file of the same size, asked by wrk in one run.

    bench/service_bench.py [--seconds N] [--data FOLDER] [--large FOLDER] [--program FILE] [--only PART...]

For each page and number of connections: requests per second, latency at the 50th and 99th percentile, processor time
of the server per request. Then 1,000 patient clients, memory, TLS, accounts beside the database's own rate, slow
clients beside fast ones, and the search around a point.
"""
import argparse
import multiprocessing
import os
import re
import resource
import select
import shutil
import socket
import subprocess
import sys
import tempfile
import time

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
sys.path.insert(0, os.path.join(ROOT, "tests/service"))
from cluster import RECORD, RUNNING, Node, Postgres, accounts, body_of, free_port, status_of, wait_for, work_folder  # noqa: E402

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
    value, unit = re.fullmatch(r"([0-9.]+)(us|ms|s|m)", text).groups()
    return float(value) * {"us": 0.001, "ms": 1, "s": 1000, "m": 60000}[unit]


def wrk(url, connections, seconds, pids):
    before = processor_seconds(pids)
    out = subprocess.run(["wrk", "-t1", f"-c{connections}", f"-d{seconds}s", "--timeout", "10s", "--latency", url],
                         capture_output=True, text=True, check=True).stdout
    used = processor_seconds(pids) - before
    requests = int(re.search(r"(\d+) requests in", out)[1])
    errors = re.findall(r"(Socket errors.*|Non-2xx.*)", out)
    return {"rate": float(re.search(r"Requests/sec:\s+([0-9.]+)", out)[1]),
            "p50": milliseconds(re.search(r"\n +50% +(\S+)", out)[1]), "p99": milliseconds(re.search(r"\n +99% +(\S+)", out)[1]),
            "cpu": used / max(1, requests) * 1e6, "errors": " ".join(errors)}


class Nginx:
    """nginx with static files of these sizes; certificate: the two files for TLS."""

    def __init__(self, folder, sizes, certificate=None):
        folder = tempfile.mkdtemp(dir=folder)
        self.port = free_port()
        for name, size in sizes.items():
            with open(os.path.join(folder, name), "w") as file:
                file.write("x" * size)
        os.chmod(folder, 0o755)
        secure = "ssl_certificate {}; ssl_certificate_key {};".format(*certificate) if certificate else ""
        path = os.path.join(folder, "nginx.conf")
        with open(path, "w") as file:
            file.write(f"worker_processes auto; daemon off; pid {folder}/nginx.pid; error_log {folder}/nginx.log;\n"
                       "worker_rlimit_nofile 20000; events { worker_connections 16384; }\n"
                       "http { access_log off; sendfile on; client_header_timeout 600s; keepalive_requests 100000000;\n"
                       f"server {{ listen 127.0.0.1:{self.port} backlog=4096 {'ssl' if secure else ''}; {secure}"
                       f" root {folder}; }} }}\n")
        self.process = subprocess.Popen(["nginx", "-c", path, "-p", folder], stderr=subprocess.DEVNULL)
        RUNNING.append(self)
        self.url = f"{'https' if secure else 'http'}://127.0.0.1:{self.port}"
        wait_for("nginx", lambda: subprocess.run(["curl", "-skf", "-o", folder + "/got", self.url + "/record"]).returncode == 0)
        children = subprocess.run(["pgrep", "-P", str(self.process.pid)], capture_output=True, text=True).stdout.split()
        self.pids = [self.process.pid, *map(int, children)]

    def end(self):
        self.process.terminate()
        self.process.wait()


def show(title, result, peer=None):
    share = f"{result['rate'] / max(peer['rate'], 0.1):6.2f}" if peer else "      "
    print(f"{title:34}{result['rate']:10.0f}{result['p50']:9.2f}{result['p99']:9.2f}{result['cpu']:9.1f} {share} "
          f"{result['errors']}", flush=True)


def beside_nginx(node, folder, seconds):
    pages = {"record": RECORD.format("K"), "list": LIST.format("K")}
    sizes = {}
    for name, target in pages.items():
        sizes[name] = len(body_of(node.url + target))
    nginx = Nginx(folder, sizes)
    for name, target in pages.items():
        for connections in (1, 8, 64, 512):
            peer = wrk(f"{nginx.url}/{name}", connections, seconds, nginx.pids)
            show(f"nginx {name}, {connections} connections", peer)
            show(f"service {name}, {connections} connections",
                 wrk(node.url + target, connections, seconds, [node.process.pid]), peer)
    return nginx


def commit_rate(postgres, seconds):
    """Transactions a second that the database makes of one connection, each with the statements of a charge."""
    with tempfile.NamedTemporaryFile("w", suffix=".sql") as script:
        script.write("BEGIN;\nINSERT INTO ledger (request, account, change, what, node, at) VALUES (gen_random_uuid()::text,"
                     " 1, -1, 'x', 'x', 1) ON CONFLICT (request) DO NOTHING RETURNING account;\n"
                     "UPDATE accounts SET credits = credits - 1 WHERE id=1 AND disabled=0 AND credits >= 1 RETURNING credits;\n"
                     "COMMIT;\n")
        script.flush()
        out = subprocess.run([os.path.join(postgres.bin, "pgbench"), "-n", "-M", "prepared", "-c", "1", "-T", str(seconds),
                              "-f", script.name, postgres.url], capture_output=True, text=True, check=True).stdout
    return float(re.search(r"tps = ([0-9.]+)", out)[1])


def transactions(node):
    return int(re.search(r"^quorvex_accounts_transactions_total (\d+)", body_of(node.url + "/metrics"), re.M)[1])


def with_accounts(program, data, folder, free, seconds):
    postgres = Postgres(folder)
    for name, database in (("SQLite", os.path.join(folder, "accounts.db")), ("PostgreSQL", postgres.url)):
        key = accounts(program, database, "add", "bench", "--credits", "1000000000").split()[1]
        node = Node(program, data, "--accounts", database).ready()
        for connections in (64, 512):
            plain = wrk(free.url + RECORD.format("K"), connections, seconds, [free.process.pid])
            before = transactions(node)
            charged = wrk(node.url + RECORD.format(key), connections, seconds, [node.process.pid])
            show(f"free record, {connections}", plain)
            show(f"record charged in {name}, {connections}", charged, plain)
            print(f"  {(transactions(node) - before) / seconds:.0f} transactions a second")
        node.end()
    print(f"  {commit_rate(postgres, seconds):.0f} transactions a second by pgbench with the same statements, one connection")


def over_tls(program, data, folder, seconds):
    files = [os.path.join(folder, name) for name in ("certificate.pem", "key.pem")]
    node = Node(program, data, "--tls-certificate", files[0], "--tls-key", files[1])
    nginx = Nginx(folder, {"record": 721}, files)
    for connections in (64, 512):
        peer = wrk(f"{nginx.url}/record", connections, seconds, nginx.pids)
        show(f"nginx record over TLS, {connections}", peer)
        show(f"service record over TLS, {connections}",
             wrk(node.url + RECORD.format("K"), connections, seconds, [node.process.pid]), peer)
    nginx.end()
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


class SlowClients:
    """Connections that send a byte a second each, evenly spread over the second, from a process of their own."""

    def __init__(self, port, count):
        self.clients = [socket.create_connection(("127.0.0.1", port)) for _ in range(count)]
        self.process = multiprocessing.get_context("fork").Process(target=self.dribble, daemon=True)
        self.process.start()

    def dribble(self):
        letters = b"GET /record HTTP/1.1\r\nX: " + b"x" * 600
        start, sent, count = time.monotonic(), 0, len(self.clients)
        while sent < count * len(letters):
            due = int((time.monotonic() - start) * count)
            for turn in range(sent, due):
                self.clients[turn % count].send(letters[turn // count:turn // count + 1])
            sent = max(sent, due)
            time.sleep(0.005)

    def end(self):
        self.process.kill()
        self.process.join()
        for client in self.clients:
            client.close()


def beside_slow_clients(program, data, nginx, seconds, count=10000):
    """What clients that send a byte a second do to the others, here and with nginx."""
    limit = resource.getrlimit(resource.RLIMIT_NOFILE)[1]
    resource.setrlimit(resource.RLIMIT_NOFILE, (limit, limit))
    count = min(count, limit - 500)
    node = Node(program, data, "--header-seconds", "600").ready()
    for name, url, port, pids in (("nginx", nginx.url + "/record", nginx.port, nginx.pids),
                                  ("service", node.url + RECORD.format("K"), node.port, [node.process.pid])):
        for _ in range(3):
            show(f"{name} record, 64 connections", wrk(url, 64, seconds, pids))
            slow = SlowClients(port, count)
            show(f"  beside {count} slow clients", wrk(url, 64, seconds, pids))
            slow.end()
    node.end()


def point_search(program, large, seconds):
    """A search around a point among 200,000 postcodes, beside the look-up of a postcode."""
    node = Node(program, large)
    began = time.monotonic()
    wait_for("the lists", lambda: status_of(node.url + "/health") == 200, 120)
    print(f"lists of the large data after {time.monotonic() - began:.1f} s")
    page = "/xmlservice/SearchForPostZonData.aspx?datakey=K&COM=1&postcode="
    for name, key in (("postcode", "AB105PW"), ("point", "-2.988%7C53.375")):
        show(f"PostZon record by {name}, 1", wrk(node.url + page + key, 1, seconds, [node.process.pid]))
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


def first_answers(program, data):
    for _ in range(3):
        began = time.monotonic()
        node = Node(program, data)
        status = status_of(node.url + "/health")
        print(f"first answer (/health, {status}) {1000 * (time.monotonic() - began):.0f} ms after the start", flush=True)
        node.end()


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--seconds", type=int, default=5)
    parser.add_argument("--data", default=os.path.join(ROOT, "examples/data"))
    parser.add_argument("--large", help="a folder with 200,000 postcodes, for the search around a point")
    parser.add_argument("--program", default=os.path.join(ROOT, "build/host/service/quorvex-service"))
    parser.add_argument("--memory", type=int, default=1000000, help="requests for the look at memory")
    parser.add_argument("--only", nargs="*", default=["start", "nginx", "patient", "memory", "tls", "accounts", "slow", "point"])
    given = parser.parse_args()
    with work_folder(os.path.join(ROOT, "build"), "service-bench") as folder:
        os.chmod(folder, 0o755)
        data = shutil.copytree(given.data, os.path.join(folder, "data"))
        subprocess.run(["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "2", "-subj", "/CN=localhost",
                        "-keyout", f"{folder}/key.pem", "-out", f"{folder}/certificate.pem"], check=True, capture_output=True)
        node = Node(given.program, data).ready()
        print(f"{'':34}{'a second':>10}{'p50 ms':>9}{'p99 ms':>9}{'cpu us':>9}  share of the line before")
        parts = {"start": lambda: first_answers(given.program, data),
                 "nginx": lambda: beside_nginx(node, folder, given.seconds).end(),
                 "patient": lambda: patient_clients(node),
                 "memory": lambda: memory(node, given.memory),
                 "tls": lambda: over_tls(given.program, data, folder, given.seconds),
                 "accounts": lambda: with_accounts(given.program, data, folder, node, given.seconds),
                 "slow": lambda: beside_slow_clients(given.program, data, Nginx(folder, {"record": 721}), given.seconds),
                 "point": lambda: given.large and point_search(given.program, given.large, given.seconds)}
        for name in given.only:
            parts[name]()


main()
