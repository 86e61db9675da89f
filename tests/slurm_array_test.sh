#!/usr/bin/env bash
# A one-machine Slurm cluster brought up inside the test: munge, a controller
# and a node daemon (proctrack/linuxproc, task/none: no systemd, no cgroups),
# each with its own key, state folders, ports and logs in a temporary folder.
# The bundled examples are submitted with scripts/farm/submit-slurm.sh as one
# job array; the forearm's task is requeued in the middle of its run (after
# its first checkpoint), as a preemption would; every task must end with exit
# code 0, the requeued one having gone on from its checkpoint, and every
# output must equal, byte for byte, that of plain local runs of the same list.
# Skipped (exit 77) where the daemons cannot start: not root, Slurm or munge
# not installed (scripts/test.sh installs them), or a daemon that does not
# come up. Daemons and jobs are stopped whatever happens; every wait is bounded.
# Usage: slurm_array_test.sh MYOFORGE EXAMPLES_DIR SUBMIT_SCRIPT
set -uo pipefail
myoforge=$1
examples=$2
submit=$3
began=$(date +%s)

say() { echo "slurm_array_test: $*"; }
skip() { say "SKIPPED: $*"; exit 77; }
fail() {
  say "FAILED: $*"
  for log in "$work"/*.log "$work"/farm/logs/*.log; do
    [ -f "$log" ] && { echo "--- $log"; tail -n 25 "$log"; }
  done
  exit 1
}

[ "$(id -u)" -eq 0 ] || skip "the daemons run as root here (run the tests as root, as CI does)"
for tool in munged munge slurmctld slurmd sbatch squeue scontrol; do
  command -v "$tool" >/dev/null 2>&1 ||
    skip "$tool is not installed (apt-get install slurm-wlm munge; scripts/test.sh installs them)"
done

work=$(mktemp -d /tmp/myoforge-slurm.XXXXXX)
chmod 755 "$work"
pids=()
job=""
cleanup() {
  if [ -n "$job" ]; then
    scancel "$job" >/dev/null 2>&1
    for _ in $(seq 1 100); do
      [ -z "$(squeue -h -j "$job" 2>/dev/null)" ] && break
      sleep 0.1
    done
  fi
  for ((k = ${#pids[@]} - 1; k >= 0; --k)); do kill "${pids[k]}" 2>/dev/null; done
  for pid in "${pids[@]+"${pids[@]}"}"; do
    for _ in $(seq 1 50); do kill -0 "$pid" 2>/dev/null || break; sleep 0.1; done
    kill -9 "$pid" 2>/dev/null
  done
  rm -rf "$work"
}
trap cleanup EXIT
trap 'exit 1' INT TERM

# Two free ports on the loopback, for the controller and the node daemon.
free_port() {
  local port
  for _ in $(seq 1 200); do
    port=$((20000 + RANDOM % 20000))
    (exec 3<>"/dev/tcp/127.0.0.1/$port") 2>/dev/null || { echo "$port"; return; }
  done
  return 1
}
controller_port=$(free_port) || skip "no free port for the controller"
node_port=$(free_port) || skip "no free port for the node daemon"
[ "$node_port" != "$controller_port" ] || node_port=$((controller_port + 1))

# Munge with a key of its own, on a socket of its own.
mkdir -p "$work/munge" && chmod 755 "$work/munge"
head -c 1024 /dev/urandom >"$work/munge/munge.key" && chmod 400 "$work/munge/munge.key"
socket="$work/munge/munge.socket"
munged -F --force --socket="$socket" --key-file="$work/munge/munge.key" --pid-file="$work/munge/munged.pid" \
  --log-file="$work/munged.log" --seed-file="$work/munge/munged.seed" >>"$work/munged.log" 2>&1 &
pids+=($!)
for _ in $(seq 1 50); do munge -n -S "$socket" >/dev/null 2>&1 && break; sleep 0.1; done
munge -n -S "$socket" >/dev/null 2>&1 || skip "munged did not start ($(tail -n 1 "$work/munged.log"))"

# The cluster: this machine as controller and as its one node.
host=$(hostname -s)
cpus=$(nproc)
memory=$(awk '/MemTotal/ { print int($2 / 1024 / 2) }' /proc/meminfo)
mkdir -p "$work/state" "$work/spool"
export SLURM_CONF="$work/slurm.conf"
cat >"$SLURM_CONF" <<CONF
ClusterName=myoforge-test
SlurmctldHost=$host(127.0.0.1)
SlurmctldPort=$controller_port
SlurmdPort=$node_port
SlurmUser=root
SlurmdUser=root
AuthType=auth/munge
AuthInfo=socket=$socket
CredType=cred/munge
StateSaveLocation=$work/state
SlurmdSpoolDir=$work/spool
SlurmctldPidFile=$work/slurmctld.pid
SlurmdPidFile=$work/slurmd.pid
SlurmctldLogFile=$work/slurmctld.log
SlurmdLogFile=$work/slurmd.log
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
SwitchType=switch/none
MpiDefault=none
SelectType=select/cons_tres
SelectTypeParameters=CR_Core_Memory
SchedulerType=sched/backfill
JobCompType=jobcomp/none
AccountingStorageType=accounting_storage/none
JobAcctGatherType=jobacct_gather/none
SlurmdParameters=config_overrides
ReturnToService=2
KillWait=5
MinJobAge=600
MailProg=/bin/true
NodeName=$host NodeAddr=127.0.0.1 CPUs=$cpus RealMemory=$memory State=UNKNOWN
PartitionName=test Nodes=$host Default=YES MaxTime=INFINITE State=UP
CONF
slurmctld -D -i -f "$SLURM_CONF" >>"$work/slurmctld.log" 2>&1 &
pids+=($!)
slurmd -D -f "$SLURM_CONF" >>"$work/slurmd.log" 2>&1 &
pids+=($!)
up=0
for _ in $(seq 1 300); do
  state=$(timeout 5 sinfo -h -n "$host" -o %T 2>/dev/null | head -n 1)
  case "$state" in idle*|mixed*|allocated*) up=1; break ;; esac
  sleep 0.1
done
[ $up -eq 1 ] || skip "the Slurm daemons did not come up (node state \"${state:-none}\"; see $work/slurmctld.log)"
say "cluster up in $(($(date +%s) - began)) s: $cpus CPUs, ports $controller_port and $node_port"

# The bundled examples, the forearm first: it is the task preempted.
printf '%s\n' "$examples/forearm/forearm.json" "$examples/jiggle/jiggle.json" >"$work/scenes.txt"
job=$(timeout 60 "$submit" --parsable --myoforge "$myoforge" --cpus 1 --mem 512M --checkpoint-every 5 \
      --job-name myotest "$work/scenes.txt" "$work/farm") || fail "submit-slurm.sh failed"
say "submitted job array $job"

# Once the forearm has a checkpoint and is still running, requeue it.
checkpoints="$work/farm/forearm/checkpoints"
requeued=0
for _ in $(seq 1 6000); do
  if compgen -G "$checkpoints/checkpoint.*.myostate" >/dev/null && [ ! -f "$work/farm/forearm/summary.json" ]; then
    timeout 10 scontrol requeue "${job}_0" && requeued=1
    # Slurm holds a requeued job back for two minutes once it is pending
    # again; the test need not wait.
    for _ in $(seq 1 300); do
      if timeout 10 scontrol show job "${job}_0" 2>/dev/null | grep -q "JobState=PENDING"; then
        timeout 10 scontrol update jobid="${job}_0" StartTime=now >/dev/null
        break
      fi
      sleep 0.1
    done
    break
  fi
  sleep 0.01
done
[ $requeued -eq 1 ] || fail "the forearm's task wrote no checkpoint that could be preempted"
say "requeued task 0 after its checkpoint $(basename "$(ls "$checkpoints" | sort | tail -n 1)")"

# Meanwhile the same list, run plainly here.
timeout 600 "$myoforge" run -q --no-progress --list "$work/scenes.txt" -o "$work/local" ||
  fail "the local run of the list failed"

finished=0
for _ in $(seq 1 3000); do
  [ -z "$(timeout 5 squeue -h -j "$job" 2>/dev/null)" ] && { finished=1; break; }
  sleep 0.2
done
[ $finished -eq 1 ] || fail "the job array did not finish within 10 minutes"

for task in 0 1; do
  record=$(timeout 10 scontrol show job "${job}_$task" 2>/dev/null)
  exit_code=$(grep -o 'ExitCode=[0-9:]*' <<<"$record" | head -n 1)
  [ "$exit_code" = "ExitCode=0:0" ] || fail "task $task ended with ${exit_code:-no exit code}"
done
restarts=$(timeout 10 scontrol show job "${job}_0" | grep -o 'Restarts=[0-9]*')
[ "$restarts" != "Restarts=0" ] || fail "task 0 was not requeued"
log=$(ls "$work"/farm/logs/myotest_*_0.log)
grep -q "Going on from the checkpoint of frame" "$log" || fail "the requeued task did not go on from its checkpoint"
grep -q "attempt 2" "$log" || fail "the log of task 0 shows no second attempt"

# Every output of the farm equals that of the local run.
compared=0
while IFS= read -r file; do
  name=${file#"$work/local/"}
  case "$name" in */figures.csv|*/summary.json|*/.myoforge-run|runs.json) continue ;; esac
  cmp -s "$file" "$work/farm/$name" || fail "$name differs between the farm and the local run"
  compared=$((compared + 1))
done < <(find "$work/local" -type f | sort)
for scene in forearm jiggle; do
  [ -f "$work/farm/$scene/summary.json" ] || fail "$scene: no summary.json from the farm"
  [ ! -e "$work/farm/$scene/checkpoints" ] || fail "$scene: checkpoints left after a finished run"
done
[ $compared -gt 200 ] || fail "only $compared files compared"
sed 's/^/  /' "$log"
say "ok: $compared files equal to the local run; task 0 $restarts, went on from its checkpoint; $(($(date +%s) - began)) s"
