#!/usr/bin/env python3
"""Three nodes, PostgreSQL and HAProxy under constant load while a node is killed, the database restarted and a node
drained: no request fails, no answer is wrong, and the ledger holds each answer once.

    tests/service/nodes.py PROGRAM DATA_FOLDER WORK_FOLDER
"""
import http.client
import os
import shutil
import signal
import sys
import threading
import time

from cluster import RUNNING, Haproxy, Node, Postgres, accounts, status_of, wait_for, work_folder

CREDITS = 1000000
PREMISES = {f"PE13%204PZ_{number}_F" for number in range(1, 45)}


class Load:
    """Clients that ask one thing after another and check what they get."""

    def __init__(self, port, key, clients=6):
        self.port, self.key, self.stopping = port, key, False
        self.right, self.wrong, self.failed = 0, [], []
        self.lock = threading.Lock()
        self.expected = {}
        self.threads = [threading.Thread(target=self.ask, args=(number,)) for number in range(clients)]
        for thread in self.threads:
            thread.start()

    def ask(self, number):
        connection = http.client.HTTPConnection("127.0.0.1", self.port, timeout=30)
        names = sorted(PREMISES)
        while not self.stopping:
            number += 1
            name = names[number % len(names)]
            try:
                connection.request("GET", f"/xmlservice/GetAddressRecord.aspx?datakey={self.key}&id={name}&COM=1")
                reply = connection.getresponse()
                body = reply.read().decode()
            except (OSError, http.client.HTTPException) as error:
                self.note(self.failed, repr(error))
                connection.close()
                continue
            record = body[body.find("<organisation>"):body.find("<credits_display_text>", body.find("<organisation>"))]
            with self.lock:
                if reply.status != 200:
                    self.failed.append(f"{reply.status} {body[:300]}")
                elif "<confirm>Yes</confirm>" not in body or self.expected.setdefault(name, record) != record:
                    self.wrong.append(body)
                else:
                    self.right += 1
        connection.close()

    def note(self, where, what):
        with self.lock:
            where.append(what)

    def go_on(self, answers):
        """Until so many more right answers came."""
        goal = self.right + answers
        wait_for(f"{answers} more answers", lambda: self.right >= goal, 60)

    def end(self):
        self.stopping = True
        for thread in self.threads:
            thread.join()


def main():
    program, data, work = sys.argv[1:]
    with work_folder(work, "nodes") as folder:
        postgres = Postgres(folder)
        # Accounts begin in SQLite and move.
        sqlite = os.path.join(folder, "accounts.db")
        key = accounts(program, sqlite, "add", "load", "--credits", str(CREDITS)).split()[1]
        print(accounts(program, sqlite, "move", postgres.url).strip())
        options = ["--accounts", postgres.url, "--trusted-proxy", "127.0.0.1", "--drain-delay", "1.5"]
        copy = shutil.copytree(data, os.path.join(folder, "data"))
        nodes = [Node(program, copy, *options, "--node", f"node{i}", "--access-log", os.path.join(folder, f"access{i}.log")) for i in range(3)]
        for node in nodes:
            node.ready()
        balancer = Haproxy(folder, nodes)

        load = Load(balancer.port, key)
        RUNNING.append(load)
        load.go_on(500)
        nodes[0].signal(signal.SIGKILL)
        load.go_on(500)
        began = time.monotonic()
        postgres.end()
        postgres.start()
        print(f"database away for {time.monotonic() - began:.1f} s")
        load.go_on(500)
        nodes[1].signal(signal.SIGTERM)
        wait_for("the end of the drained node", lambda: nodes[1].process.poll() is not None)
        assert nodes[1].process.returncode == 0, "draining must end with 0"
        load.go_on(300)
        load.end()

        entries = int(postgres.scalar("SELECT count(*) FROM ledger WHERE change = -1"))
        left = int(postgres.scalar("SELECT credits FROM accounts"))
        names = postgres.scalar("SELECT string_agg(DISTINCT node, ' ' ORDER BY node) FROM ledger WHERE change = -1")
        print(f"{load.right} right answers, {len(load.wrong)} wrong, {len(load.failed)} failed; "
              f"{entries} in the ledger by {names}, {left} credits left")
        assert not load.wrong, load.wrong[0]
        assert not load.failed, load.failed[:3]
        assert entries == load.right and left == CREDITS - load.right
        assert names == "node0 node1 node2"
        for number in range(3):
            with open(os.path.join(folder, f"access{number}.log")) as log:
                assert key not in log.read(), "the key is in the access log"
        assert status_of(balancer.url + "/metrics") == 403


main()
