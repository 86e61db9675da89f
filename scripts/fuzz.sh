#!/usr/bin/env bash
# Fuzzes the standalone host's readers with libFuzzer under AddressSanitizer
# and UndefinedBehaviorSanitizer (docs/fuzzing.md).
#
#   bash scripts/fuzz.sh [SECONDS] [TARGET...]
#
# SECONDS per target (default 600); TARGETs among scene_reader, obj_reader,
# map_reader and patches_reader (default all). Builds build/fuzz with clang, grows the corpus in
# build/fuzz/corpus/<target>, keeps one input per distinct fault with its
# report in build/fuzz/findings/<target>, and exits 1 when a finding stands.
set -euo pipefail
cd "$(dirname "$0")/.."
root=$PWD

all_targets=(scene_reader obj_reader map_reader patches_reader)

max_len_of() {
  case $1 in
    scene_reader) echo 16384 ;;
    obj_reader) echo 131072 ;;  # the example's meshes are up to 90 kB
    map_reader) echo 8192 ;;
    patches_reader) echo 4096 ;;
  esac
}

dictionary_of() {
  case $1 in
    scene_reader) echo "build/fuzz/fuzz/scene_reader.dict" ;;  # made from the attribute tables
    obj_reader) echo "fuzz/obj_reader.dict" ;;
    map_reader) echo "fuzz/map_reader.dict" ;;
    patches_reader) echo "fuzz/patches_reader.dict" ;;
  esac
}

example_seeds_of() {
  case $1 in
    scene_reader) compgen -G "examples/*/*.json" || true ;;
    obj_reader) compgen -G "examples/*/meshes/*.obj" || true ;;
    map_reader) compgen -G "examples/*/maps/*.txt" || true ;;
    patches_reader) compgen -G "examples/*/*.mmp" || true ;;
  esac
}

usage() {
  echo "usage: bash scripts/fuzz.sh [SECONDS] [TARGET...]   targets: ${all_targets[*]}" >&2
  exit 2
}

seconds=600
if [ $# -gt 0 ] && [[ $1 =~ ^[0-9]+$ ]]; then
  seconds=$1
  shift
fi
[ "$seconds" -gt 0 ] || { echo "fuzz.sh: SECONDS must be above 0, not $seconds" >&2; usage; }
targets=("$@")
[ ${#targets[@]} -gt 0 ] || targets=("${all_targets[@]}")
for t in "${targets[@]}"; do
  [[ " ${all_targets[*]} " == *" $t "* ]] || { echo "fuzz.sh: unknown target \"$t\"" >&2; usage; }
done

# The project's own packages, and clang with its fuzzer runtime.
scripts/install-deps.sh clang-14 libclang-rt-14-dev

build=build/fuzz
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_COMPILER=clang++-14 -DMYO_FUZZ=ON \
  -DMYO_BUILD_TESTS=OFF -DMYO_BUILD_BENCHMARKS=OFF >/dev/null
cmake --build "$build" -j 2 --target myo_fuzz_tests myo_fuzz_dictionaries $(printf '%s_fuzz ' "${targets[@]}")
# A harness that misjudges answers would report false findings or miss real ones.
"$build/fuzz/myo_fuzz_tests" --gtest_brief=1

export ASAN_OPTIONS=detect_leaks=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
limits=(-timeout=10 -rss_limit_mb=1024)

# Removes private directories of the targets whose processes have died.
remove_abandoned_directories() {
  local dir pid
  for dir in /dev/shm/myo-fuzz-* "${TMPDIR:-/tmp}"/myo-fuzz-*; do
    [ -d "$dir" ] || continue
    pid=${dir%-*}
    pid=${pid##*-}
    [[ $pid =~ ^[0-9]+$ ]] && [ ! -d "/proc/$pid" ] && rm -rf "$dir"
  done
  return 0
}

# What a finding's report says went wrong, without the particulars of the
# input: the target's own finding, else the sanitizer's summary and the first
# frame in the readers.
signature_of() {
  local log=$1 key summary frame
  key=$(grep -m1 -oE '^myo_fuzz: FINDING \[[^]]*\]' "$log" | sed -E 's/^myo_fuzz: FINDING \[(.*)\]$/\1/') || true
  if [ -n "$key" ]; then
    echo "$key"
    return
  fi
  summary=$(grep -m1 '^SUMMARY:' "$log" | sed -E 's/0x[0-9a-f]+//g; s/[0-9]+//g') || true
  frame=$(grep -E '^ +#[0-9]+ 0x[0-9a-f]+ in ' "$log" | grep -E "$root/|tiny_obj_loader" | grep -v "$root/fuzz/" |
          head -1 | sed -E 's/^ +#[0-9]+ 0x[0-9a-f]+ in //; s/:[0-9]+(:[0-9]+)?//g') || true
  if [ -n "$summary" ]; then
    echo "$summary${frame:+ at $frame}"
  else
    echo "did not reproduce"
  fi
}

# Runs `input` once through the target; writes its report beside it as
# <input>.log, headed by the finding's signature. True when the input still
# fails.
reproduce() {
  local binary=$1 input=$2 rc=0
  env -u MYO_FUZZ_SEEN_DIR "$binary" "${limits[@]}" "$input" >"$input.run" 2>&1 || rc=$?
  {
    echo "# signature: $(signature_of "$input.run")"
    echo "# reproduce: $binary $input"
    cat "$input.run"
  } >"$input.log"
  rm -f "$input.run"
  [ "$rc" -ne 0 ]
}

# Records a finding's signature of the target's own kind, so that the run
# does not stop on it again.
remember_kind() {
  local log=$1 seen=$2 key
  key=$(grep -m1 -oE '^myo_fuzz: FINDING \[[^]]*\]' "$log" | sed -E 's/^myo_fuzz: FINDING \[(.*)\]$/\1/') || true
  [ -n "$key" ] && printf '%s\n' "$key" >"$seen/$(printf '%s' "$key" | LC_ALL=C tr -c '[:alnum:]' '_')"
  return 0
}

artifacts_in() { find "$1" -maxdepth 1 -type f \( -name 'crash-*' -o -name 'timeout-*' -o -name 'oom-*' -o \
  -name 'leak-*' -o -name 'slow-unit-*' \) ! -name '*.log' -printf '%s %p\n' | sort -n | cut -d' ' -f2-; }

status=0
summary=()
for t in "${targets[@]}"; do
  binary=$root/$build/fuzz/${t}_fuzz
  corpus=$build/corpus/$t
  seeds=$build/seeds/$t
  findings=$root/$build/findings/$t
  seen=$findings/.seen
  log=$build/logs/$t.log
  rm -rf "$seeds" "$seen"
  mkdir -p "$corpus" "$seeds" "$findings" "$seen" "$build/logs"

  while read -r f; do [ -n "$f" ] && cp "$f" "$seeds/example-$(basename "$f")"; done < <(example_seeds_of "$t")
  for f in fuzz/seeds/"$t"/*; do [ -f "$f" ] && cp "$f" "$seeds/hand-$(basename "$f")"; done

  # Earlier findings: those the readers now pass move to fixed/, the others
  # stand and are not searched for again.
  declare -A kept=()
  while read -r f; do
    [ -n "$f" ] || continue
    if reproduce "$binary" "$f"; then
      kept["$(head -1 "$f.log")"]=1
      remember_kind "$f.log" "$seen"
    else
      mkdir -p "$findings/fixed"
      mv "$f" "$f.log" "$findings/fixed/"
      echo "$t: $(basename "$f") no longer fails; moved to $findings/fixed/"
    fi
  done < <(artifacts_in "$findings")

  echo "== $t: fuzzing for $seconds s (2 jobs; log $log)"
  MYO_FUZZ_SEEN_DIR=$seen "$binary" -fork=2 -ignore_crashes=1 -ignore_timeouts=1 -ignore_ooms=1 \
    -max_total_time="$seconds" "${limits[@]}" -max_len="$(max_len_of "$t")" -dict="$(dictionary_of "$t")" \
    -artifact_prefix="$findings/" -print_final_stats=1 "$corpus" "$seeds" >"$log" 2>&1 || true

  # One input per distinct fault, the smallest: the others are dropped.
  new=0
  while read -r f; do
    [ -n "$f" ] && [ ! -f "$f.log" ] || continue
    reproduce "$binary" "$f" || true
    signature=$(head -1 "$f.log")
    if [ -n "${kept[$signature]:-}" ]; then
      rm -f "$f" "$f.log"
    else
      kept["$signature"]=1
      new=$((new + 1))
    fi
  done < <(artifacts_in "$findings")
  remove_abandoned_directories

  executions=$(grep -oE '^#[0-9]+' "$log" | tail -1 | tr -d '#') || true
  standing=$(artifacts_in "$findings" | wc -l)
  line="$t: ${executions:-0} executions in $seconds s, corpus $(find "$corpus" -type f | wc -l) inputs, "
  if [ "$standing" -eq 0 ]; then
    line+="nothing found"
  else
    line+="$standing finding(s), $new new, in $findings"
    status=1
  fi
  summary+=("$line")
  echo "$line"
  while read -r f; do
    [ -n "$f" ] && echo "  $(basename "$f"): $(head -1 "$f.log" | sed 's/^# signature: //')"
  done < <(artifacts_in "$findings")
  unset kept
done

echo "== summary"
printf '%s\n' "${summary[@]}"
exit "$status"
