"""Divides a database into shards, and says which of them have to be done again.

Below the folder of the plan, each shard has a list of its files, a path a line, relative to the
source, and a state: a text that is another one each time that something its files have read is not
what it was. Snakemake does a shard again when either has changed. What was read the jobs say (see
shard.py).
"""

import bisect
import glob
import os
import shutil
import subprocess
import time

GONE = "-"


def state_of(path):
    """What tells one content of a file from another: size and time, or that there is none."""
    try:
        found = os.stat(path)
    except OSError:
        return GONE
    return f"{found.st_size}:{found.st_mtime_ns}"


def files_below(root, left_out=()):
    """The .flt files below a folder by their relative paths. Links to folders are not followed."""
    states = {}
    folders = [""]
    while folders:
        folder = folders.pop()
        with os.scandir(os.path.join(root, folder)) as entries:
            for entry in entries:
                path = folder + entry.name
                if entry.is_dir(follow_symlinks=False):
                    if entry.name != ".kilnbatch" and os.path.realpath(entry.path) not in left_out:
                        folders.append(path + "/")
                elif entry.name.lower().endswith(".flt") and entry.is_file():
                    found = entry.stat()
                    states[path] = f"{found.st_size}:{found.st_mtime_ns}"
    return states


def lines_of(path):
    with open(path, encoding="utf-8", errors="surrogateescape") as file:
        return file.read().splitlines()


def write_lines(path, lines):
    """The file is whole, or as it was."""
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path + ".new", "w", encoding="utf-8", errors="surrogateescape") as file:
        file.writelines(line + "\n" for line in lines)
    os.replace(path + ".new", path)


def shards(folder):
    """The names of the shards, in the order of their first files."""
    lists = glob.glob(os.path.join(folder, "*.list"))
    named = [(lines_of(path)[0], os.path.basename(path)[: -len(".list")]) for path in lists]
    return [name for first, name in sorted(named)]


def divide(files, size, firsts):
    """The sorted files by shard, `size` in each.

    `firsts` has the first file of each shard that there is: they keep what follows it, so that a
    new file changes one shard. One that has become twice as large is divided.
    """
    starts = sorted((first, name) for name, first in firsts.items())
    found = {}
    for file in files:
        at = max(bisect.bisect_right(starts, file, key=lambda start: start[0]) - 1, 0)
        found.setdefault(starts[at][1] if starts else None, []).append(file)
    divided = {}
    new = max((int(name) for name in firsts), default=-1) + 1
    for name, those in found.items():
        if name is not None and len(those) < 2 * size:
            divided[name] = those
            continue
        for begin in range(0, len(those), size):
            divided[name if name is not None else f"{new:05}"] = those[begin : begin + size]
            new += name is None
            name = None
    return divided


def is_stale(reads, root, states):
    """Whether anything that a shard's files have read, as its lines say, is not what it was."""
    for line in reads:
        path, _, state = line.rpartition("\t")
        if (states.get(path) or state_of(os.path.join(root, path))) != state:
            return True
    return False


def write_if_changed(path, lines):
    if not os.path.exists(path) or lines_of(path) != lines:
        write_lines(path, lines)


def make(folder, config):
    """Makes the plan, or brings it up to date; gives sentences for the user."""
    root = config["source"]
    results = os.path.realpath(config["results"])
    states = files_below(root, {results, os.path.realpath(".")})
    files = sorted(path for path in states if "\n" not in path)
    if not files:
        raise SystemExit(f"cluster: there are no .flt files below {root}")
    os.makedirs(folder, exist_ok=True)
    firsts = {name: lines_of(f"{folder}/{name}.list")[0] for name in shards(folder)}
    divided = divide(files, config["shard_files"], firsts)
    for name in firsts.keys() - divided.keys():
        os.remove(f"{folder}/{name}.list")
        os.remove(f"{folder}/{name}.state")
    # The stage that reads the sources.
    stage = "edit" if "script" in config else "check"
    for name, those in divided.items():
        write_if_changed(f"{folder}/{name}.list", those)
        state = f"{folder}/{name}.state"
        reads = f"stages/{stage}/{name}.reads"
        if os.path.exists(reads) and is_stale(lines_of(reads), root, states):
            # A new time would not do: small files are known by their content.
            write_lines(state, [str(time.time_ns())])
        elif not os.path.exists(state):
            write_lines(state, ["new"])
    write_if_changed(f"{folder}/program", [version_of(config["kilnbatch"])])
    if config.get("page", "none") != "none":
        write_if_changed(f"{folder}/page-program", [version_of(config["fltool"])])
    left = len(states) - len(files)
    return [f"{left} files with line breaks in their names are left out"] if left else []


def version_of(program):
    """What tells a program from another one. A run needs it on the machine that begins it too."""
    path = shutil.which(program)
    if path is None:
        raise SystemExit(f"cluster: there is no program {program}")
    said = subprocess.run([path, "--version"], check=True, stdout=subprocess.PIPE, text=True)
    return f"{said.stdout.strip()} {os.stat(path).st_size}"
