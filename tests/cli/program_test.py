#!/usr/bin/env python3
"""Runs the command-line program through what goes wrong: stopped, cut off, full disk, closed pipe, odd lists, foreign
letters, data that is updated meanwhile.

    tests/cli/program_test.py SERVICE-PROGRAM PROGRAM... [-- unittest arguments]
"""

import contextlib
import csv
import http.server
import io
import json
import os
import pathlib
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
PROGRAM = []
WINDOWS = False
POSTCODES = ["AB1 0DF", "PE13 4PZ", "M1 9AA", "XX1 1XX", "pe134pz"]


def program(*arguments, **options):
    options.setdefault("stdin", subprocess.DEVNULL)
    options.setdefault("timeout", 120)
    return subprocess.run([*PROGRAM, *map(str, arguments)], capture_output="stdout" not in options, **options)


@contextlib.contextmanager
def web_server(status, body, date=None):
    """Something that answers in the service's place; its address."""
    class Handler(http.server.BaseHTTPRequestHandler):
        def do_GET(self):
            self.send_response_only(status)
            self.send_header("Date", date or self.date_time_string())
            self.send_header("Content-Length", str(len(body)))
            self.end_headers()
            self.wfile.write(body)

        def log_message(self, *_):
            pass

    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
    thread = threading.Thread(target=server.serve_forever)
    thread.start()
    try:
        yield f"http://127.0.0.1:{server.server_address[1]}"
    finally:
        server.shutdown()
        thread.join()
        server.server_close()


class CommandLine(unittest.TestCase):
    def setUp(self):
        holder = tempfile.TemporaryDirectory()
        self.addCleanup(holder.cleanup)
        self.folder = pathlib.Path(holder.name)
        self.data = self.folder / "data"
        shutil.copytree(ROOT / "examples/data", self.data)

    def run_here(self, *arguments, **options):
        return program(*arguments, cwd=self.folder, **options)

    def clean(self, *more, source="in.csv", target="out.csv", **options):
        return self.run_here("clean", source, target, "--postcode", "postcode", "--house", "house", "--data", "data",
                             *more, **options)

    def write_list(self, rows):
        """A list long enough to be cut off in the middle."""
        lines = (f"{i},{i % 60},{POSTCODES[i % len(POSTCODES)]}\n" for i in range(rows))
        (self.folder / "in.csv").write_text("id,house,postcode\n" + "".join(lines))

    def verdicts(self, content, encoding="utf-8"):
        """The rows that come out of a list, as fields by column."""
        (self.folder / "in.csv").write_bytes(content)
        result = self.clean("--overwrite")
        self.assertEqual(result.returncode, 0, result.stderr)
        out = (self.folder / "out.csv").read_bytes().decode(encoding).removeprefix("\ufeff")
        return list(csv.DictReader(io.StringIO(out, newline=""), delimiter=";" if ";" in out else ","))

    def test_lists_as_people_have_them(self):
        rows = self.verdicts(b'name;house;postcode\r\n"A ""x""\r\nB";35-37;ab10df\r\n;1;\r\nshort\r\n\r\n;;PE13 4PZ\r\n')
        self.assertEqual([row["verdict"] for row in rows], ["exact", "failed", "failed", "failed", "several"])
        self.assertEqual(rows[0]["name"], 'A "x"\r\nB')
        self.assertEqual(rows[0]["found_organisation"], "GORSE SURVEYORS SERVICES")
        self.assertEqual([row["reason"] for row in rows[1:4]],
                         ["no postcode", "1 fields where the header has 3", "the row is empty"])
        self.assertEqual((rows[4]["found_town"], rows[4]["found_id"], rows[4]["matches"]), ("WISBECH", "", "44"))
        rows = self.verdicts("café,house,postcode\né,19,PE13 4PZ\n".encode("cp1252"), "cp1252")
        self.assertEqual((rows[0]["café"], rows[0]["found_id"]), ("é", "PE13 4PZ_1_F"))
        rows = self.verdicts(b"\xef\xbb\xbfpostcode,house\nAB1 0DF,\"never closed\nAB1 0DF,x\n")
        self.assertEqual([row["reason"] for row in rows], ["a quote is never closed"])

    def test_lists_that_cannot_be_used(self):
        for content, arguments, code, message in (
                (b"", [], 3, b"empty"), (b"a,b\n1,2\n", [], 2, b'no column "postcode"'),
                (b"\xff\xfea\0", [], 3, b"UTF-16"), (b"house,postcode\n", [], 1, b"no rows"),
                (b"house,postcode\n", ["--separator", "xy"], 2, b"--separator")):
            (self.folder / "in.csv").write_bytes(content)
            (self.folder / "out.csv").unlink(missing_ok=True)
            result = self.clean(*arguments)
            self.assertEqual(result.returncode, code, result.stderr)
            self.assertIn(message, result.stderr)
        self.assertEqual(self.clean(source="no such file.csv").returncode, 3)
        self.write_list(3)
        self.assertEqual(self.clean(target="in.csv").returncode, 2)
        (self.folder / "out.csv").write_text("precious")
        self.assertEqual(self.clean().returncode, 2)
        self.assertEqual(self.clean("--resume").returncode, 3)
        self.assertEqual((self.folder / "out.csv").read_text(), "precious")

    def whole(self):
        """The output of an undisturbed run."""
        self.assertEqual(self.clean(target="whole.csv").returncode, 0)
        return (self.folder / "whole.csv").read_bytes()

    def test_a_run_that_is_cut_off_anywhere_is_resumed(self):
        self.write_list(300)
        whole = self.whole()
        for size in (*range(0, 700, 97), len(whole) - 1, len(whole)):
            (self.folder / "out.csv").write_bytes(whole[:size])
            result = self.clean("--resume")
            header = whole.index(b"\n") + 1
            if 0 < size < header:  # not even the header: it could be any file
                self.assertEqual(result.returncode, 3)
                continue
            self.assertEqual(result.returncode, 0, result.stderr)
            self.assertEqual((self.folder / "out.csv").read_bytes(), whole)

    def test_a_list_that_changed_is_not_resumed(self):
        self.write_list(50)
        whole = self.whole()
        (self.folder / "out.csv").write_bytes(whole[:2000])
        text = (self.folder / "in.csv").read_text().replace("\n1,", "\n").replace("id,", "id,", 1)
        (self.folder / "in.csv").write_text(text.replace("id,house,postcode\n", "id,house,postcode\n7,7,M1 9AA\n"))
        self.assertEqual(self.clean("--resume").returncode, 3)
        self.assertEqual((self.folder / "out.csv").read_bytes(), whole[:2000])

    @unittest.skipIf("wine" in " ".join(sys.argv), "Wine's processes get no Ctrl+C from a test")
    def test_ctrl_c_leaves_whole_rows(self):
        self.write_list(400000)
        process = subprocess.Popen([*PROGRAM, "clean", "in.csv", "out.csv", "--postcode", "postcode", "--data", "data"],
                                   cwd=self.folder, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        out = self.folder / "out.csv"
        while process.poll() is None and (not out.exists() or out.stat().st_size < 100000):
            time.sleep(0.005)
        process.send_signal(signal.SIGINT)
        _, errors = process.communicate(timeout=60)
        self.assertEqual(process.returncode, 3)
        self.assertIn(b"--resume", errors)
        self.assertTrue(out.read_bytes().endswith(b"\n"))
        result = self.run_here("clean", "in.csv", "out.csv", "--postcode", "postcode", "--data", "data", "--resume")
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual(out.read_bytes().count(b"\n"), 400001)

    @unittest.skipIf("wine" in " ".join(sys.argv), "a size limit would hit Wine's own files")
    def test_a_full_disk_leaves_whole_rows(self):
        self.write_list(20000)
        whole = self.whole()
        limit = 1000003
        result = self.clean(preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit)))
        self.assertEqual(result.returncode, 3)
        self.assertIn(b"rows are written", result.stderr)
        written = (self.folder / "out.csv").read_bytes()
        self.assertTrue(written.endswith(b"\n") and whole.startswith(written) and len(written) > 1000)
        self.assertEqual(self.clean("--resume").returncode, 0)
        self.assertEqual((self.folder / "out.csv").read_bytes(), whole)

    @unittest.skipIf("wine" in " ".join(sys.argv), "pipes of a shell are tested natively")
    def test_a_closed_pipe_ends_the_run(self):
        self.write_list(200000)
        process = subprocess.Popen([*PROGRAM, "clean", "in.csv", "-", "--postcode", "postcode", "--data", "data"],
                                   cwd=self.folder, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        process.stdout.readline()
        process.stdout.close()
        errors = process.stderr.read()
        self.assertEqual(process.wait(60), 3)
        self.assertIn(b"closed", errors)
        process.stderr.close()

    @unittest.skipIf("wine" in " ".join(sys.argv), "cli tests that, with Windows' own ways to start a program")
    def test_a_list_is_written_without_a_console(self):
        self.write_list(50)
        arguments = ["clean", "in.csv", "out.csv", "--postcode", "postcode", "--house", "house", "--data", "data"]
        result = subprocess.run(["bash", "-c", '"$@" <&- >&- 2>&-', "bash", *PROGRAM, *arguments], cwd=self.folder, timeout=120)
        self.assertEqual(result.returncode, 0)
        self.assertEqual((self.folder / "out.csv").read_bytes(), self.whole())

    def test_an_update_gets_its_turn(self):
        self.write_list(100000)
        shutil.copytree(ROOT / "examples/data/updates", self.folder / "updates")
        process = subprocess.Popen([*PROGRAM, "clean", "in.csv", "out.csv", "--postcode", "postcode", "--data", "data"],
                                   cwd=self.folder, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
        update = self.run_here("update", "--from", "updates", "--data", "data", "--json")
        _, errors = process.communicate(timeout=120)
        self.assertEqual(process.returncode, 0, errors)
        self.assertEqual((self.folder / "out.csv").read_bytes().count(b"\n"), 100001)
        # The engine waits for its turn only so long; a package that did not get one is applied by the next run.
        self.assertIn(update.returncode, (0, 3), update.stdout)
        self.run_here("update", "--from", "updates", "--data", "data")
        status = json.loads(self.run_here("status", "--data", "data", "--json").stdout)
        self.assertEqual(status["rows"][0]["date"], "20260331")
        self.assertEqual(self.run_here("check", "--data", "data").returncode, 0)

    def test_foreign_letters(self):
        name = "Zürich Ωmega ŵ"
        self.data.rename(self.folder / name)
        self.write_list(3)
        (self.folder / "in.csv").rename(self.folder / f"{name}.csv")
        result = self.run_here("clean", f"{name}.csv", f"{name} out.csv", "--postcode", "postcode", "--data", name)
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual((self.folder / f"{name} out.csv").read_bytes().count(b"\n"), 4)
        result = self.run_here("find", "XX1 1XX", "--house", "ŵy", "--data", name)
        self.assertEqual(result.returncode, 1)
        self.assertIn("ŵy".encode(), result.stderr)

    def doctor(self, data, service="http://127.0.0.1:1"):
        result = self.run_here("doctor", "--data", data, "--service", service, "--json")
        return result.returncode, [(row["grade"], row["finding"], row["advice"]) for row in json.loads(result.stdout)["rows"]]

    def assert_found(self, grade, text, data="data", service="http://127.0.0.1:1"):
        code, findings = self.doctor(data, service)
        named = [finding for finding in findings if finding[0] == grade and text in finding[1] and finding[2]]
        self.assertTrue(named, f"{grade}, {text}: {findings}")
        self.assertEqual(code, 3 if any(finding[0] == "problem" for finding in findings) else 0)

    def test_doctor_names_what_is_wrong_with_the_data(self):
        full, table = self.data / "PAF_FULL.dat", self.data / "PAF_SUBSTITUTION.txt"
        whole = full.read_bytes()
        for grade, text, breakage in (
                ("warning", "PAF_FULL.dat is missing", full.unlink),
                ("problem", "PAF_FULL.dat is empty", lambda: full.write_bytes(b"")),
                ("problem", "PAF_FULL.dat: ", lambda: full.write_bytes(whole[:10000])),
                ("problem", "PAF_FULL.dat: ", lambda: full.write_text("not a database" * 1000)),
                ("problem", "PAF_FULL.dat: ", lambda: full.write_bytes(whole[:4096] + bytes(len(whole) - 4096))),
                ("problem", "PAF_SUBSTITUTION.txt", lambda: table.write_text("ABC\n")),
                ("warning", "PAF_SUBSTITUTION.txt is missing", table.unlink),
                ("warning", "PAF_FULL.dat-journal", lambda: (self.data / "PAF_FULL.dat-journal").write_bytes(b"")),
                ("warning", "waits to be applied", lambda: (self.data / "UPDATE_F_20270101.zip").write_bytes(b"x"))):
            breakage()
            with self.subTest(text):
                self.assert_found(grade, text)
            shutil.rmtree(self.data)
            shutil.copytree(ROOT / "examples/data", self.data)
        (self.folder / "empty").mkdir()
        self.assert_found("problem", "no data files", "empty")
        self.assert_found("problem", "does not exist", "nowhere")

    def test_doctor_names_what_is_wrong_with_the_service(self):
        well = b"<confirm>Yes</confirm><errormessage></errormessage>"
        self.assert_found("warning", "http://127.0.0.1:1: ")
        self.assert_found("warning", "no.such.host.invalid", service="http://no.such.host.invalid")
        self.assert_found("warning", "is not an http or https address", service="ftp://x")
        for status, body, date, text in (
                (503, b"<html>", None, "answers with status 503"),
                (200, b"<html>sign in</html>", None, "something else answers"),
                (200, b"<confirm>No</confirm><errormessage>Unknown key</errormessage>", None, "refuses the data key: Unknown key"),
                (200, well, "Mon, 05 Jan 2015 10:00:00 GMT", "seconds ahead of the service's")):
            with web_server(status, body, date) as address:
                self.assert_found("warning", text, service=address)
        (self.folder / "RegServerProxySettings.xml").write_text("<Proxy_Port_80>http://proxy</Proxy_Port_80>")
        self.assert_found("problem", "names no usable proxy")

    def test_wrong_calls(self):
        for arguments in ([], ["nonsense"], ["find"], ["find", "PE13"], ["find", "PE13 4PZ", "--data", "data", "--service",
                          "http://x"], ["status"], ["clean", "a"], ["nearest", "x", "--at", "PE13 4PZ", "--within", "-1"]):
            result = self.run_here(*arguments)
            self.assertEqual(result.returncode, 2, arguments)
            self.assertTrue(result.stderr, arguments)
            self.assertFalse(result.stdout, arguments)
        for command in ("find", "clean", "doctor"):
            result = self.run_here(command, "--help")
            self.assertEqual(result.returncode, 0)
            self.assertLessEqual(result.stdout.count(b"\n"), 24)

    def test_every_report_has_the_one_shape(self):
        self.write_list(3)
        for arguments in (["find", "PE13 4PZ"], ["record", "PE13 4PZ_1_F"], ["street", "AB1 0DF"], ["postzon", "AB1 0DF"],
                          ["distance", "AB1 0DF", "M1 9AA"], ["status"], ["check"], ["update"], ["doctor", "--service",
                          "http://127.0.0.1:1"], ["clean", "in.csv", "out.csv", "--postcode", "postcode"],
                          ["nearest", ROOT / "examples/jscript/branches.csv", "--at", "AB1 0DF", "--within", "9"], ["clean"]):
            result = self.run_here(*arguments, "--data", "data", "--json")
            self.assertTrue(result.stdout, f"{arguments}: {result.stderr}")
            report = json.loads(result.stdout)
            self.assertEqual(list(report), ["command", "outcome", "message", "rows"])
            self.assertEqual(report["command"], arguments[0])
            self.assertIn(report["outcome"], ("done", "nothing", "wrong call", "failed"), arguments)
            self.assertEqual(report["outcome"] == "wrong call", arguments == ["clean"])


if __name__ == "__main__":
    arguments = sys.argv[1:]
    PROGRAM = arguments[1:]
    unittest.main(argv=[sys.argv[0]], verbosity=1)
