"""Joins what the shards tell: report.py STAGE...

Writes report/files.jsonl, a line for each file with what each stage says of it, report/summary.json
and report/summary.txt. The same bytes whatever the shards and the order in which they were done.
"""

import collections
import json
import sys

import plan

SEVERITIES = ("errors", "warnings", "hints")
WORST = 20


class Stage:
    """What one stage says, in sum."""

    def __init__(self):
        self.files = 0
        self.nodes = 0
        self.failed = []
        self.findings = collections.Counter()
        self.rules = collections.Counter()
        self.faulty = []

    def add(self, line):
        self.files += 1
        self.nodes += line.get("nodes", 0)
        if line["failed"]:
            self.failed.append({key: line[key] for key in ("file", "cause", "reason")})
        for severity in SEVERITIES:
            self.findings[severity] += line.get(severity, 0)
        for finding in line.get("findings", []):
            self.rules[f"{finding['severity']} {finding['code']}"] += 1
        if line.get("errors", 0) > 0:
            self.faulty.append((-line["errors"], line["file"]))

    def summary(self):
        self.faulty.sort()
        return {
            "files": self.files,
            "nodes": self.nodes,
            "failed": self.failed,
            **{severity: self.findings[severity] for severity in SEVERITIES},
            "listedFindings": dict(sorted(self.rules.items())),
            "filesWithErrors": [{"file": file, "errors": -less} for less, file in self.faulty],
        }


def lines_of(stage, shards):
    for shard in shards:
        with open(f"stages/{stage}/{shard}.jsonl", encoding="utf-8") as file:
            yield from map(json.loads, file)


def by_file(stages, shards):
    """For each file what each stage says of it. Stages have the files in the same order; one that
    has failed is missing in those that follow."""
    rest = {stage: lines_of(stage, shards) for stage in stages}
    ahead = {stage: next(lines, None) for stage, lines in rest.items()}
    while ahead[stages[0]] is not None:
        file = ahead[stages[0]]["file"]
        told = {"file": file}
        for stage in stages:
            if ahead[stage] is not None and ahead[stage]["file"] == file:
                told[stage] = {key: value for key, value in ahead[stage].items() if key != "file"}
                ahead[stage] = next(rest[stage], None)
        yield told
    left = [line["file"] for line in ahead.values() if line is not None]
    if left:
        sys.exit(f"report: nothing was checked of {left[0]}")


def text_of(summaries):
    for name, summary in summaries.items():
        failed = summary["failed"]
        counts = ", ".join(f"{summary[severity]} {severity}" for severity in SEVERITIES)
        told = "" if name == "export" else f", {counts}"
        yield f"{name}: {summary['files']} files, {len(failed)} failed{told}"
        for line in failed[:WORST]:
            yield f"  {line['file']}: {line['reason']}"
        for line in summary["filesWithErrors"][:WORST]:
            yield f"  {line['file']}: {line['errors']} errors"
        left = len(failed[WORST:]) + len(summary["filesWithErrors"][WORST:])
        if left:
            yield f"  and {left} more, which stand in summary.json"


def main(names):
    stages = {name: Stage() for name in names}

    def told():
        for line in by_file(names, plan.shards("plan")):
            for name in names:
                if name in line:
                    stages[name].add({"file": line["file"], **line[name]})
            yield json.dumps(line, ensure_ascii=False, sort_keys=True)

    plan.write_lines("report/files.jsonl", told())
    summaries = {name: stage.summary() for name, stage in stages.items()}
    text = json.dumps(summaries, ensure_ascii=False, indent=1)
    plan.write_lines("report/summary.json", [text])
    plan.write_lines("report/summary.txt", text_of(summaries))


if __name__ == "__main__":
    main(sys.argv[1:])
