#!/usr/bin/env bash
# Submits a list of myoforge scenes to Slurm as one job array: one task per
# scene, each running
#   myoforge run --list LIST --index $SLURM_ARRAY_TASK_ID -o OUTPUT --resume
#            --checkpoint-every N --threads $SLURM_CPUS_PER_TASK
# so that every scene writes into OUTPUT/<scene name> and a task that is
# preempted and requeued goes on from its last checkpoint. docs/farm.md
# tells the whole story.
#
# Usage: scripts/farm/submit-slurm.sh [OPTIONS] LIST OUTPUT [-- MYOFORGE_RUN_OPTIONS...]
set -euo pipefail

usage() {
  cat <<'USAGE'
Usage: submit-slurm.sh [OPTIONS] LIST OUTPUT [-- MYOFORGE_RUN_OPTIONS...]

Submits the scenes of LIST (one scene file per line, '#' starts a comment;
relative names are taken from the list's folder) as one Slurm job array.
Scene i writes into OUTPUT/<scene name>; task logs go to OUTPUT/logs/.

Options (defaults in brackets):
  --myoforge PATH         the myoforge binary [myoforge on PATH, else this
                          checkout's build/release/app/myoforge]
  --cpus N                CPUs (threads) per task [4]
  --mem SIZE              memory per task, as sbatch --mem takes it [2G]
  --time LIMIT            time limit per task, as sbatch --time takes it [none]
  --partition NAME        partition [the cluster's default]
  --job-name NAME         job name [myoforge]
  --max-running K         at most K tasks at once (array throttle) [no limit]
  --checkpoint-every N    frames between checkpoints [10]
  --sbatch ARG            one more argument for sbatch (repeatable)
  --dry-run               print the sbatch command and the job script, submit nothing
  --parsable              print only the job id
  -h, --help              this help
Everything after "--" is passed to "myoforge run" (e.g. -f pc2, --no-viewer).

Each task runs with --resume: a task that Slurm preempts and requeues (the
array is submitted with --requeue) goes on from its newest checkpoint; a
task without a checkpoint starts from its first frame. Exit codes of a task
are those of myoforge run: 0 done, 3 invalid scene, 4 run failed, 130
stopped by a signal.
USAGE
}

fail() { echo "submit-slurm.sh: $*" >&2; exit 2; }

here=$(cd "$(dirname "$0")/../.." && pwd)
myoforge=""
cpus=4 mem=2G time_limit="" partition="" job_name=myoforge max_running="" every=10
dry_run=0 parsable=0
sbatch_extra=()
positional=()
while [ $# -gt 0 ]; do
  case "$1" in
    --myoforge) myoforge=${2:?--myoforge needs a path}; shift 2 ;;
    --cpus) cpus=${2:?--cpus needs a number}; shift 2 ;;
    --mem) mem=${2:?--mem needs a size}; shift 2 ;;
    --time) time_limit=${2:?--time needs a limit}; shift 2 ;;
    --partition) partition=${2:?--partition needs a name}; shift 2 ;;
    --job-name) job_name=${2:?--job-name needs a name}; shift 2 ;;
    --max-running) max_running=${2:?--max-running needs a number}; shift 2 ;;
    --checkpoint-every) every=${2:?--checkpoint-every needs a number}; shift 2 ;;
    --sbatch) sbatch_extra+=("${2:?--sbatch needs an argument}"); shift 2 ;;
    --dry-run) dry_run=1; shift ;;
    --parsable) parsable=1; shift ;;
    -h|--help) usage; exit 0 ;;
    --) shift; break ;;
    -*) fail "unknown option \"$1\" (see --help)" ;;
    *) positional+=("$1"); shift ;;
  esac
done
run_options=("$@")
[ ${#positional[@]} -eq 2 ] || fail "expected LIST and OUTPUT (see --help)"
list=${positional[0]} output=${positional[1]}
[[ "$cpus" =~ ^[1-9][0-9]*$ ]] || fail "--cpus: expected a whole number above 0, not \"$cpus\""
[[ "$every" =~ ^[0-9]+$ ]] || fail "--checkpoint-every: expected a whole number, not \"$every\""
[ -z "$max_running" ] || [[ "$max_running" =~ ^[1-9][0-9]*$ ]] ||
  fail "--max-running: expected a whole number above 0, not \"$max_running\""
[ -f "$list" ] && [ -r "$list" ] || fail "$list: cannot read the list of scenes"

if [ -z "$myoforge" ]; then
  myoforge=$(command -v myoforge || true)
  [ -n "$myoforge" ] || myoforge="$here/build/release/app/myoforge"
fi
[ -x "$myoforge" ] || fail "$myoforge: no myoforge binary there (build it with scripts/build.sh release myoforge, or give --myoforge)"
myoforge=$(cd "$(dirname "$myoforge")" && pwd)/$(basename "$myoforge")
list=$(cd "$(dirname "$list")" && pwd)/$(basename "$list")
case "$output" in /*) ;; *) output="$PWD/$output" ;; esac

# One task per scene: the list's scene lines, as myoforge counts them.
count=$(grep -cvE '^[[:space:]]*(#|$)' "$list" || true)
[ "$count" -gt 0 ] || fail "$list: the list names no scene"
"$myoforge" --version >/dev/null 2>&1 || fail "$myoforge does not run (try: $myoforge --version)"

array="0-$((count - 1))"
[ -z "$max_running" ] || array="$array%$max_running"

quoted_options=""
[ ${#run_options[@]} -eq 0 ] || printf -v quoted_options ' %q' "${run_options[@]}"
job_script="$output/logs/$job_name.sbatch"
job_text=$(cat <<JOB
#!/usr/bin/env bash
# One scene of $list, chosen by the task's array index.
echo "myoforge task \$SLURM_ARRAY_TASK_ID of job \$SLURM_ARRAY_JOB_ID on \$(hostname), attempt \$((\${SLURM_RESTART_COUNT:-0} + 1)), \$(date -u +%FT%TZ)"
exec $(printf '%q' "$myoforge") run --list $(printf '%q' "$list") --index "\$SLURM_ARRAY_TASK_ID" \\
  -o $(printf '%q' "$output") --resume --checkpoint-every $every --threads "\${SLURM_CPUS_PER_TASK:-1}" \\
  --no-progress$quoted_options
JOB
)

sbatch_args=(--job-name="$job_name" --array="$array" --cpus-per-task="$cpus" --ntasks=1 --mem="$mem"
             --requeue --open-mode=append --output="$output/logs/%x_%A_%a.log" --chdir="$output")
[ -z "$time_limit" ] || sbatch_args+=(--time="$time_limit")
[ -z "$partition" ] || sbatch_args+=(--partition="$partition")
sbatch_args+=("${sbatch_extra[@]+"${sbatch_extra[@]}"}")

if [ $dry_run -eq 1 ]; then
  printf 'sbatch'; printf ' %q' "${sbatch_args[@]}" "$job_script"; printf '\n\n%s\n' "$job_text"
  exit 0
fi
mkdir -p "$output/logs"
printf '%s\n' "$job_text" >"$job_script"
chmod +x "$job_script"
job=$(sbatch --parsable "${sbatch_args[@]}" "$job_script")
job=${job%%;*}
if [ $parsable -eq 1 ]; then
  echo "$job"
else
  echo "Submitted job array $job: $count scenes of $list, results in $output/<scene name>, logs in $output/logs/"
fi
