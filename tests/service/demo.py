#!/usr/bin/env python3
"""What ./demo --service shows: two nodes of the service with PostgreSQL behind HAProxy, and the component under Wine
looking up through them while one node is killed.

    tests/service/demo.py PROGRAM DATA_FOLDER WORK_FOLDER POSTCODE BITS...
"""
import os
import signal
import subprocess
import sys

from cluster import ROOT, Haproxy, Node, Postgres, accounts, work_folder


def look_up(url, key, postcode, bits):
    print(f"\n== {bits}-bit script host through {url}", flush=True)
    subprocess.run(["tools/with-wine", "tools/cscript", bits, "examples/vbscript/find_address.vbs", postcode,
                    "/server:" + url, "/key:" + key, "/pick:1"], cwd=ROOT, check=True)


def main():
    program, data, work, postcode, *bitnesses = sys.argv[1:]
    with work_folder(work, "demo") as folder:
        print("demo: starting PostgreSQL, two nodes and HAProxy", flush=True)
        postgres = Postgres(folder)
        key = accounts(program, postgres.url, "add", "demo", "--credits", "100").split()[1]
        nodes = [Node(program, data, "--accounts", postgres.url, "--node", name, "--trusted-proxy", "127.0.0.1").ready()
                 for name in ("node1", "node2")]
        balancer = Haproxy(folder, nodes)
        look_up(balancer.url, key, postcode, bitnesses[0])
        print("\ndemo: killing node1", flush=True)
        nodes[0].signal(signal.SIGKILL)
        look_up(balancer.url, key, postcode, bitnesses[-1])
        print("\ndemo: what the ledger says", flush=True)
        print(subprocess.run([program, "accounts", "--accounts", postgres.url, "ledger"], capture_output=True, text=True,
                             check=True).stdout, end="")


os.chdir(ROOT)
main()
