"""Does one shard in a job: shard.py STAGE SHARD --list FILE --attempt N --attempts M -- KILNBATCH...

Leaves in stages/STAGE what each file has become (SHARD.jsonl) and, where sources are read, what was
read meanwhile with its state (SHARD.reads), and the files to go on with (SHARD.done). The stage edit
leaves in stages/check too what the files were before. A file that is faulty
or has errors is a result and no failure. One that its process did not survive, or for which it had
too little time or memory, has the job fail, until the last attempt.
"""

import argparse
import json
import os
import subprocess
import sys
import time

import plan

# What differs from run to run, and what was done before.
OF_THE_RUN = ("seconds", "peakBytes", "reads", "result")


def run(command, shard_list, report):
    """The report's lines by file. Every file has one, or there is no going on."""
    status = subprocess.run([*command, "--list", shard_list, "--report", report]).returncode
    if status not in (0, 1):
        sys.exit(f"{command[0]} has ended with status {status}")
    with open(report, encoding="utf-8") as file:
        lines = [json.loads(line) for line in file]
    if len(lines) != len(plan.lines_of(shard_list)):
        sys.exit(f"{command[0]} has told of {len(lines)} files only")
    return sorted(lines, key=lambda line: line["file"])


def needs_another_attempt(line):
    return line.get("cause") in ("crash", "time", "memory")


def reads_of(lines, source, begun):
    """What was read, each with its state. Nobody knows what was read of one that has been written
    since the job began."""
    for path in sorted({path for line in lines for path in line.get("reads", [line["file"]])}):
        whole = os.path.join(source, path)
        state = plan.state_of(whole)
        if state != plan.GONE and int(state.partition(":")[2]) >= begun:
            state = "unknown"
        yield f"{path}\t{state}"


def write_report(path, lines):
    """What a stage tells of its files."""
    plan.write_lines(
        path,
        (
            json.dumps(
                {
                    "failed": line["result"] == "failed",
                    **{key: value for key, value in line.items() if key not in OF_THE_RUN},
                },
                ensure_ascii=False,
                sort_keys=True,
            )
            for line in lines
        ),
    )


def of_sources(lines):
    """What was found before the script ran; one that did not come to it failed before."""
    for line in lines:
        source = line.pop("source", None)
        yield line if source is None else {"file": line["file"], "result": "done", **source}


def main():
    options = argparse.ArgumentParser(description=__doc__)
    options.add_argument("stage")
    options.add_argument("shard")
    options.add_argument("--list", required=True)
    options.add_argument("--attempt", type=int, required=True)
    options.add_argument("--attempts", type=int, required=True)
    options.add_argument("command", nargs="+")
    given = options.parse_args()
    made = f"stages/{given.stage}/{given.shard}"
    os.makedirs(os.path.dirname(made), exist_ok=True)

    begun = time.time_ns()
    lines = run(given.command, given.list, made + ".run")
    os.remove(made + ".run")
    unlucky = [line for line in lines if needs_another_attempt(line)]
    if unlucky and given.attempt < given.attempts:
        sys.exit(f"{len(unlucky)} files need another attempt")

    if given.stage != "export":
        plan.write_lines(made + ".reads", reads_of(lines, given.command[2], begun))
        done = (line["file"] for line in lines if line["result"] != "failed")
        plan.write_lines(made + ".done", done)
    if given.stage == "edit":
        # The sources are checked by the job that edits them: what they refer to is read once.
        write_report(f"stages/check/{given.shard}.jsonl", list(of_sources(lines)))
    write_report(made + ".jsonl", lines)


if __name__ == "__main__":
    main()
