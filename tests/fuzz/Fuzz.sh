#!/usr/bin/env bash
# Runs fuzz targets one after the other and prints a line for each: inputs tried, edges of the code that they reached,
# inputs tried since the last of these edges was new, inputs that reached something new (an edge, or a known one more
# often or with other values), and findings; then the sums. Fails if there are findings, whose inputs stay in the work
# folder.
# usage: Fuzz.sh run   PROGRAMS WORK SECONDS [TARGET...]   SECONDS are shared by the targets
#        Fuzz.sh merge PROGRAMS WORK [TARGET...]           puts the smallest set that reaches as much into the tree
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
command=$1 programs=$2 work=$3
shift 3
if [ "$command" = run ]; then
  seconds=$1
  shift
fi
if [ $# -gt 0 ]; then
  targets=("$@")
else
  mapfile -t targets < <(find "$programs" -name 'fuzz_*' -printf '%f\n' | sed 's/^fuzz_//' | LC_ALL=C sort)
fi

# Longer inputs reach nothing more; memory that a target keeps from input to input would be a leak.
options=(-max_len=1500 -timeout=30 -rss_limit_mb=2048 -use_value_profile=1)
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=0
# Trees of files are made fast there.
[ ! -d /dev/shm ] || export TMPDIR=/dev/shm
export LSAN_OPTIONS=suppressions=$here/../leak-suppressions.txt:print_suppressions=0

# last NAME LOG: the last number after a name in the fuzzer's output.
last() {
  { grep -oE "$1[: ]+[0-9]+" "$2" || echo 0; } | tail -1 | grep -oE '[0-9]+$'
}

# since_last_edge LOG RUNS: how many of the runs were made after the fuzzer told of another edge for the last time. It
# tells of its corpus first, as of one step.
since_last_edge() {
  awk -v runs="$2" '
    /^#[0-9]+/ {
      for (i = 2; i < NF; i++) if ($i == "cov:" && $(i + 1) > edges) { edges = $(i + 1); at = substr($1, 2) + 0 }
    }
    END { print (runs > at ? runs - at : 0) }' "$1"
}

run_target() {
  local target=$1 found=$work/$1 log=$work/$1.log place inputs=() status=0
  mkdir -p "$found/corpus" "$found/findings"
  for place in "$here/corpus/$target" "$here/regressions/$target"; do
    [ ! -d "$place" ] || inputs+=("$place")
  done
  "$programs/fuzz_$target" "${options[@]}" -max_total_time=$((seconds / ${#targets[@]} + 1)) -print_final_stats=1 \
    -artifact_prefix="$found/findings/" "$found/corpus" "${inputs[@]}" >"$log" 2>&1 || status=$?
  local runs findings
  runs=$(last stat::number_of_executed_units "$log")
  findings=$(find "$found/findings" -type f | wc -l)
  printf '%-16s %8s runs, %5s edges, %8s runs since the last of them, %5s new inputs, %d findings\n' "$target" \
    "$runs" "$(last cov "$log")" "$(since_last_edge "$log" "$runs")" "$(last stat::new_units_added "$log")" "$findings"
  all_runs=$((all_runs + runs))
  all_findings=$((all_findings + findings))
  [ "$status" = 0 ] || tail -n 40 "$log"
  return "$status"
}

merge_target() {
  local target=$1 merged=$work/$1/merged
  rm -rf "$merged"
  mkdir -p "$merged" "$here/corpus/$target"
  "$programs/fuzz_$target" "${options[@]}" -use_value_profile=0 -set_cover_merge=1 "$merged" "$here/corpus/$target" \
    "$work/$target/corpus" >"$work/$target.log" 2>&1
  # What has a name of its own was written by hand: a limit that no edge of the code tells.
  find "$here/corpus/$target" -type f -name "$(printf '?%.0s' {1..40})" -delete
  cp "$merged"/* "$here/corpus/$target"
  printf '%-16s %4d inputs, %6d bytes\n' "$target" "$(find "$merged" -type f | wc -l)" \
    "$(cat "$merged"/* | wc -c)"
}

status=0 all_runs=0 all_findings=0
for target in "${targets[@]}"; do
  if [ "$command" = merge ]; then
    merge_target "$target" || status=1
  else
    run_target "$target" || status=1
  fi
done
[ "$command" = merge ] || echo "${#targets[@]} targets, $all_runs runs, $all_findings findings"
exit "$status"
