"""What the workflow's programs do for Snakemake: cluster_test.py FOLDER-OF-THE-WORKFLOW"""

import json
import os
import subprocess
import sys
import tempfile
import unittest

sys.dont_write_bytecode = True
WORKFLOW = sys.argv.pop(1)
sys.path.insert(0, WORKFLOW)
import plan

# In place of kilnbatch: the report's lines are what stands in the file "told".
PROGRAM = """#!/bin/sh
case $1 in --version) echo kilnbatch 1; exit;; esac
while [ "$1" != --report ]; do shift; done
cp told "$2"
exit "$(cat status)"
"""


class InFolder(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.addCleanup(os.chdir, os.getcwd())
        os.chdir(folder.name)
        self.write("program", PROGRAM)
        os.chmod("program", 0o755)

    def write(self, path, text=""):
        os.makedirs(os.path.dirname(path) or ".", exist_ok=True)
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)


class Plan(InFolder):
    def make(self, size=2, **more):
        config = {"source": "db", "results": "db/out", "shard_files": size, **more}
        self.assertEqual(plan.make("plan", {**config, "kilnbatch": "./program"}), [])
        return {name: plan.lines_of(f"plan/{name}.list") for name in plan.shards("plan")}

    def state(self, shard):
        return plan.lines_of(f"plan/{shard}.state")

    def test_lists_the_files_of_the_database_alone(self):
        for path in ("b.flt", "a/塔 1.FLT", "a/c.rgb", "out/b.flt", ".kilnbatch/x.flt"):
            self.write("db/" + path)
        os.symlink("a", "db/link")
        self.assertEqual(self.make(), {"00000": ["a/塔 1.FLT", "b.flt"]})

    def test_keeps_the_shards_of_files_that_stay(self):
        for name in "bdfhj":
            self.write(f"db/{name}.flt")
        first = self.make()
        self.assertEqual(list(map(len, first.values())), [2, 2, 1])
        self.write("db/a.flt")  # before the first
        self.write("db/g.flt")
        second = self.make()
        self.assertEqual(second["00000"], ["a.flt", "b.flt", "d.flt"])
        self.assertEqual(second["00001"], ["f.flt", "g.flt", "h.flt"])
        self.assertEqual(second["00002"], first["00002"])
        self.write("db/c.flt")  # twice as many as there should be
        third = self.make()
        self.assertEqual(third["00000"], ["a.flt", "b.flt"])
        self.assertEqual(third["00003"], ["c.flt", "d.flt"])
        self.assertEqual(list(third), ["00000", "00003", "00001", "00002"])
        os.remove("db/j.flt")
        self.assertEqual(list(self.make()), ["00000", "00003", "00001"])
        self.assertFalse(os.path.exists("plan/00002.state"))

    def test_does_again_what_read_something_that_has_changed(self):
        for name in "abc":
            self.write(f"db/{name}.flt")
        self.make(1)
        absolute = os.path.abspath("elsewhere")
        self.write("elsewhere")
        reads = ["a.flt", "c.flt", "none.flt", absolute]
        rows = [f"{path}\t{plan.state_of(os.path.join('db', path))}" for path in reads]
        plan.write_lines("stages/check/00000.reads", rows)
        # Of runs with a script.
        plan.write_lines("stages/edit/00001.reads", ["b.flt\tanother"])
        before = self.state("00000")
        self.make(1)
        self.assertEqual(self.state("00000"), before)
        for path in ("db/c.flt", "db/none.flt", "elsewhere"):
            plan.write_lines("stages/check/00000.reads", rows)
            self.write(path, "another content")
            self.make(1)
            self.assertNotEqual(self.state("00000"), before, path)
            before = self.state("00000")
            rows = [f"{path}\t{plan.state_of(os.path.join('db', path))}" for path in reads]
        self.assertEqual(self.state("00001"), ["new"])
        self.make(1, script="edit.ks")
        self.assertNotEqual(self.state("00001"), ["new"])


class Shard(InFolder):
    def run_shard(self, told, status=0, attempt=1, stage="check"):
        self.write("told", "".join(json.dumps(line) + "\n" for line in told))
        self.write("status", str(status))
        plan.write_lines("plan/00000.list", [f"{i}.flt" for i in range(2)])
        command = [sys.executable, "-B", WORKFLOW + "/shard.py", stage, "00000"]
        command += ["--list", "plan/00000.list", "--attempt", str(attempt), "--attempts", "2"]
        command += ["--", "./program", "batch", "db", "out"]
        return subprocess.run(command, stderr=subprocess.DEVNULL).returncode

    def test_tells_results_from_failures(self):
        good = {"file": "0.flt", "result": "done", "nodes": 3, "seconds": 1, "reads": ["0.flt"]}
        faulty = {"file": "1.flt", "result": "failed", "cause": "error", "reason": "damaged"}
        self.assertEqual(self.run_shard([faulty, good], status=1), 0)
        lines = [json.loads(line) for line in plan.lines_of("stages/check/00000.jsonl")]
        self.assertEqual(lines[0], {"failed": False, "file": "0.flt", "nodes": 3})
        self.assertEqual(lines[1]["reason"], "damaged")
        self.assertEqual(plan.lines_of("stages/check/00000.done"), ["0.flt"])
        for status, told in [(0, [good]), (130, [good, faulty]), (139, [good, faulty])]:
            self.assertNotEqual(self.run_shard(told, status), 0)
        for cause in ("crash", "time", "memory"):
            unlucky = {**faulty, "cause": cause}
            self.assertNotEqual(self.run_shard([good, unlucky], 1), 0)
            self.assertEqual(self.run_shard([good, unlucky], 1, attempt=2), 0)

    def test_edits_tell_what_the_sources_were(self):
        finding = {"severity": "error", "code": "X", "node": "n", "text": "t"}
        source = {"nodes": 3, "errors": 1, "findings": [finding]}
        mended = {"file": "0.flt", "result": "done", "nodes": 4, "errors": 0, "source": source}
        refused = {"file": "1.flt", "result": "failed", "cause": "error", "reason": "r"}
        self.assertEqual(self.run_shard([mended, {**refused, "source": source}], 1, stage="edit"), 0)

        def told(stage):
            return [json.loads(line) for line in plan.lines_of(f"stages/{stage}/00000.jsonl")]

        of_source = {"failed": False, **source}
        self.assertEqual(
            told("check"), [{"file": "0.flt", **of_source}, {"file": "1.flt", **of_source}]
        )
        self.assertEqual(
            told("edit")[0], {"failed": False, "file": "0.flt", "nodes": 4, "errors": 0}
        )
        self.assertEqual([line["failed"] for line in told("edit")], [False, True])
        # One that could not be read has failed in both.
        self.assertEqual(self.run_shard([mended, refused], 1, stage="edit"), 0)
        self.assertEqual([line["failed"] for line in told("check")], [False, True])

    def test_does_not_trust_what_was_written_meanwhile(self):
        self.write("db/0.flt")
        self.write("db/1.flt")
        os.utime("db/1.flt", (4e9, 4e9))
        both = [{"file": f"{i}.flt", "result": "done", "reads": [f"{i}.flt"]} for i in (0, 1)]
        self.assertEqual(self.run_shard(both), 0)
        reads = dict(line.split("\t") for line in plan.lines_of("stages/check/00000.reads"))
        self.assertEqual(reads["0.flt"], plan.state_of("db/0.flt"))
        self.assertNotEqual(reads["1.flt"], plan.state_of("db/1.flt"))


class Report(InFolder):
    def test_joins_stages_by_file(self):
        finding = {"severity": "error", "code": "X", "node": "n", "text": "t"}
        bad = {"failed": True, "cause": "error", "reason": "damaged"}
        told = {
            "check/00001": [{"file": "a.flt", "failed": False, "errors": 1, "findings": [finding]}],
            "check/00000": [{"file": "b.flt", **bad}, {"file": "c.flt", "failed": False}],
            "export/00001": [{"file": "a.flt", "failed": False}],
            "export/00000": [{"file": "c.flt", "failed": False}],
        }
        plan.write_lines("plan/00001.list", ["a.flt"])
        plan.write_lines("plan/00000.list", ["b.flt", "c.flt"])
        for name, lines in told.items():
            plan.write_lines(f"stages/{name}.jsonl", map(json.dumps, lines))
        command = [sys.executable, "-B", WORKFLOW + "/report.py", "check", "export"]
        subprocess.run(command, check=True)
        files = [json.loads(line) for line in plan.lines_of("report/files.jsonl")]
        self.assertEqual([line["file"] for line in files], ["a.flt", "b.flt", "c.flt"])
        self.assertEqual(["export" in line for line in files], [True, False, True])
        with open("report/summary.json", encoding="utf-8") as file:
            summary = json.load(file)
        self.assertEqual(summary["check"]["listedFindings"], {"error X": 1})
        self.assertEqual(summary["check"]["filesWithErrors"], [{"file": "a.flt", "errors": 1}])
        self.assertEqual(summary["check"]["failed"][0]["file"], "b.flt")
        text = "\n".join(plan.lines_of("report/summary.txt"))
        self.assertIn("check: 3 files, 1 failed, 1 errors", text)
        self.assertIn("export: 2 files, 0 failed", text)
        # What no stage before it knows is a fault of the plan, and not left out.
        plan.write_lines("stages/export/00000.jsonl", [json.dumps({"file": "z", "failed": False})])
        self.assertNotEqual(subprocess.run(command, stderr=subprocess.DEVNULL).returncode, 0)


unittest.main()
