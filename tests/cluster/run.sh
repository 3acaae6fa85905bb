#!/usr/bin/env bash
# Runs the workflow over a city on one machine and on a Slurm cluster, which it starts on the
# loopback address, and compares: run.sh FOLDER KILNBATCH FLTOOL MAKE_SAMPLES
# Everything it starts ends with it.
set -uo pipefail
export LC_ALL=C.UTF-8
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
workflow=$(realpath "$here/../../cluster")
place=$(realpath -m "$1") kilnbatch=$(realpath "$2") fltool=$(realpath "$3") make_samples=$(realpath "$4")
files=300 shard=100
started=()

say() { printf '%s %s\n' "$(date +%T)" "$*"; }
stop() { # of what was started, the last first
    local i
    for ((i = ${#started[@]} - 1; i >= 0; i--)); do
        kill "${started[i]}" 2>/dev/null
        wait "${started[i]}" 2>/dev/null
    done
}
# A step of a job is no child of this shell: those that are left end with the cluster's queue.
trap 'scancel --full --user "$(id -un)" 2>/dev/null; stop' EXIT
trap 'exit 1' INT TERM
fail() {
    say "FAILED: $*"
    tail -n 20 "$place"/*.log "$place"/slurm/*.log 2>/dev/null
    exit 1
}
wait_for() { # SECONDS WHAT COMMAND...
    local end=$((SECONDS + $1)) what=$2
    shift 2
    until "$@" >/dev/null; do
        [ "$SECONDS" -lt "$end" ] || fail "$what did not come"
        sleep 0.2
    done
}

free_port() {
    python3 -c 'import socket; s = socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])'
}

# One node of two processors, without systemd and without accounts.
start_slurm() {
    local slurm=$place/slurm user
    user=$(id -un)
    mkdir -p "$slurm"/{state,spool}
    (umask 077 && head -c 128 /dev/urandom >"$slurm/munge.key")
    munged --foreground --force --key-file="$slurm/munge.key" --socket="$slurm/munge.socket" \
        --pid-file="$slurm/munged.pid" --seed-file="$slurm/munge.seed" \
        --log-file="$slurm/munged.log" >"$slurm/munged.out" 2>&1 &
    started+=($!)
    wait_for 20 "munge's socket" test -S "$slurm/munge.socket"
    cat >"$slurm/slurm.conf" <<CONF
ClusterName=loopback
SlurmctldHost=$(hostname -s)(127.0.0.1)
SlurmctldPort=$(free_port)
SlurmdPort=$(free_port)
SlurmUser=$user
SlurmdUser=$user
AuthType=auth/munge
AuthInfo=socket=$slurm/munge.socket
CredType=cred/munge
StateSaveLocation=$slurm/state
SlurmdSpoolDir=$slurm/spool
SlurmctldPidFile=$slurm/slurmctld.pid
SlurmdPidFile=$slurm/slurmd.pid
SlurmctldLogFile=$slurm/slurmctld.log
SlurmdLogFile=$slurm/slurmd.log
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
JobAcctGatherType=jobacct_gather/none
AccountingStorageType=accounting_storage/none
MpiDefault=none
SelectType=select/cons_tres
SelectTypeParameters=CR_CPU
SchedulerParameters=sched_min_interval=0,batch_sched_delay=0
KillWait=2
ReturnToService=2
SlurmdParameters=config_overrides
NodeName=loopback NodeHostname=$(hostname -s) NodeAddr=127.0.0.1 CPUs=2 RealMemory=100000
PartitionName=all Nodes=ALL Default=YES MaxTime=INFINITE State=UP
CONF
    printf 'CgroupPlugin=cgroup/v1\n' >"$slurm/cgroup.conf"
    export SLURM_CONF=$slurm/slurm.conf
    slurmctld -D -f "$SLURM_CONF" >"$slurm/slurmctld.out" 2>&1 &
    started+=($!)
    slurmd -D -N loopback -f "$SLURM_CONF" >"$slurm/slurmd.out" 2>&1 &
    started+=($!)
    wait_for 60 "an idle node" is_idle
}
is_idle() { [ "$(sinfo --noheader --format=%T 2>/dev/null)" = idle ]; }

# A run is a folder with its configuration.
prepare() { # RUN
    mkdir -p "$place/$1"
    cat >"$place/$1/config.yaml" <<CONFIG
source: ../city
results: results
script: ../edit.ks
revision: 1570
shard_files: $shard
kilnbatch: $kilnbatch
fltool: $fltool
CONFIG
}
# In place of this shell. What Snakemake did goes into RUN.log. A shell has what it begins in the
# background ignore interruptions; with CI set, Snakemake asks for jobs each second, otherwise each tenth.
become_snake() { # RUN PROFILE OPTION...
    local run=$1 profile=$2
    shift 2
    cd "$place/$run" || exit 1
    exec env --default-signal=INT CI=true snakemake --snakefile "$workflow/Snakefile" \
        --profile "$workflow/$profile" --nocolor "$@" >>"$place/$run.log" 2>&1
}
snake() { (become_snake "$@"); }
same() { # RUN RUN
    diff -r --exclude=.kilnbatch "$place/$1/results" "$place/$2/results" || fail "results differ"
    diff -r "$place/$1/report" "$place/$2/report" || fail "reports differ"
}
jobs_begun() { grep -cE "^rule (check|edit|export):" "$place/$1.log"; }

is_quiet() { [ -z "$(squeue --noheader 2>&1)" ]; }
is_editing() { [ -n "$(find "$place/slurm-run/edited" -name '*.flt' -print -quit 2>/dev/null)" ]; }
running_job() { squeue --noheader --states=R --format=%i | head -n 1 | grep .; }

rm -rf "$place"
mkdir -p "$place"
"$make_samples" --city "$files" "$place/city" >/dev/null || fail "no city"
# Long enough that a job can be met while it runs, and refused by one file.
cat >"$place/edit.ks" <<'SCRIPT'
createDummy name:"edited"
if arguments[1] == "tiles/d0001.flt" then throw "not this one"
t = 0
for i = 1 to 60000 do t = t + 1
SCRIPT
head -c 3000 "$place/city/models/m01.flt" >"$place/city/models/damaged.flt"
files=$((files + 1))

say "One machine"
prepare local-run
snake local-run local || fail "the run on one machine"
[ "$(find "$place/local-run/results" -name '*.flt' | wc -l)" -eq $((files - 2)) ] || fail "results are missing"
grep -qx "check: $files files, 1 failed, .*" "$place/local-run/report/summary.txt" || fail "the report's checks"
grep -qx "edit: $files files, 2 failed, .*" "$place/local-run/report/summary.txt" || fail "the report's edits"
grep -q "tiles/d0001.flt: .*not this one" "$place/local-run/report/summary.txt" || fail "the report's reasons"
[ "$(wc -l <"$place/local-run/report/files.jsonl")" -eq "$files" ] || fail "the report's files"
[ "$(cat "$place/local-run/report/page.files"/*.js | grep -c '^fltoolDetails(')" -eq "$files" ] || fail "the page's files"

say "A cluster: a run that is interrupted"
start_slurm
prepare slurm-run
become_snake slurm-run slurm --jobs 30 &
run=$!
started+=("$run")
wait_for 120 "a file that is edited" is_editing
kill -INT "$run"
wait "$run" && fail "the run was not interrupted"
unset 'started[-1]'
wait_for 60 "the end of the jobs" is_quiet
interrupted_after=$(jobs_begun slurm-run)
[ ! -e "$place/slurm-run/report/summary.txt" ] || fail "the run had come to its end"

say "Going on, with a job that is cancelled"
become_snake slurm-run slurm --jobs 30 &
run=$!
started+=("$run")
wait_for 120 "a job that runs" running_job
scancel "$(running_job)" || fail "scancel"
wait "$run" || fail "the run on the cluster"
unset 'started[-1]'
grep -q "Trying to restart job" "$place/slurm-run.log" || fail "no job was tried again"
same local-run slurm-run
begun=$(jobs_begun slurm-run)
say "The same bytes; $interrupted_after jobs begun before the interruption, $begun in all"

say "Once more, and with another tile"
snake slurm-run slurm --jobs 30 || fail "a run without anything to do"
[ "$(jobs_begun slurm-run)" -eq "$begun" ] || fail "something was done again"
cp "$place"/city/tiles/d0000/t000051.flt "$place"/city/tiles/d0000/t000050.flt
# The shard of the tile, and of the district's and the city's file, which refer to it: one and the same.
concerned=$(grep -lxE "tiles/d0000/t000050.flt|tiles/d0000.flt|city.flt" "$place"/slurm-run/plan/*.list | wc -l)
snake slurm-run slurm --jobs 30 || fail "the run with another tile"
again=$(($(jobs_begun slurm-run) - begun))
[ "$concerned" -eq 1 ] && [ "$again" -eq 2 ] || fail "$again jobs for $concerned shards were done again"
prepare fresh-run
snake fresh-run local || fail "the run on one machine with another tile"
same fresh-run slurm-run
! cmp -s "$place/local-run/report/files.jsonl" "$place/fresh-run/report/files.jsonl" || fail "nothing has changed"
say "All is well"
