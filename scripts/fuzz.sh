#!/usr/bin/env bash
# Builds the libFuzzer targets (the fuzz preset: clang, AddressSanitizer and
# UndefinedBehaviorSanitizer) and runs each of them from its seed corpus.
#
#   bash scripts/fuzz.sh                 every target, a bounded number of runs (CI)
#   bash scripts/fuzz.sh TARGET RUNS     one target (call_sequence, script_reader,
#                                        usb_rig, serial_rig, dcon_reply) for RUNS
#                                        runs (-1: until stopped)
#
# Inputs found on the way go to build/fuzz/corpus/TARGET (the seeds in
# fuzz/corpus/TARGET are only read); a crashing input is written to
# build/fuzz/artifacts/ and the run stops with a non-zero status.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

bash scripts/install-deps.sh fuzz
cmake --preset fuzz
cmake --build --preset fuzz

# target, runs in CI
targets=(
  "call_sequence 20000"
  "script_reader 100000"
  "usb_rig 50000"
  "serial_rig 50000"
  "dcon_reply 100000"
)

run() {
  local target=$1 runs=$2 time_limit=$3
  local dict=()
  case $target in
    script_reader) dict=(-dict=fuzz/script_reader.dict) ;;
    usb_rig|serial_rig) dict=(-dict=fuzz/rig.dict) ;;
    dcon_reply) dict=(-dict=fuzz/dcon_reply.dict) ;;
  esac
  mkdir -p "build/fuzz/corpus/$target" build/fuzz/artifacts build/fuzz/logs
  local log="build/fuzz/logs/$target.log" status=0
  echo "=== fuzz_$target: $runs runs (log: $log)"
  "build/fuzz/bin/fuzz_$target" -runs="$runs" -max_total_time="$time_limit" -print_final_stats=1 \
    -artifact_prefix=build/fuzz/artifacts/ "${dict[@]}" \
    "build/fuzz/corpus/$target" "fuzz/corpus/$target" >"$log" 2>&1 || status=$?
  if [[ $status -ne 0 ]]; then
    tail -n 60 "$log"
    return "$status"
  fi
  grep -E '^(Done|stat::number_of_executed_units)' "$log" || true
}

if [[ $# -ge 1 ]]; then
  run "$1" "${2:--1}" 0
else
  failed=()
  for entry in "${targets[@]}"; do
    read -r target runs <<<"$entry"
    run "$target" "$runs" 20 || failed+=("$target")
  done
  if [[ ${#failed[@]} -gt 0 ]]; then
    echo "fuzz: failed: ${failed[*]}" >&2
    exit 1
  fi
fi
