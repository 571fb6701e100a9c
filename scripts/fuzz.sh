#!/usr/bin/env bash
# Runs each fuzz target of the fuzz build for a given time, at the lowest
# priority, and fails on the first finding: a crash, a sanitizer report, a
# leak or an input that runs past the per-input timeout.
#
#   scripts/fuzz.sh BUILD_FOLDER SECONDS [TARGET...]
#
# Each target starts from its seeds in fuzz/corpus/<target> and keeps what
# it finds in BUILD_FOLDER/corpus/<target>, so that the seeds stay small and
# a later run goes on from where the last one stopped. A finding is written
# to BUILD_FOLDER/findings/<target>-<kind>-<hash>, and the run's log, with
# its final statistics, to BUILD_FOLDER/findings/<target>.log.
set -uo pipefail
cd "$(dirname "$0")/.."

build=${1:?build folder}
seconds=${2:?seconds per target}
shift 2
targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
  targets=(fuzz_commands fuzz_csv fuzz_dictionary fuzz_pattern fuzz_statxml fuzz_pmml fuzz_run)
fi

# The command language's keywords help the targets that read commands.
declare -A dictionary=([fuzz_commands]=1 [fuzz_run]=1)

mkdir -p "$build/findings"
export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}

failed=()
for target in "${targets[@]}"; do
  seeds="fuzz/corpus/${target#fuzz_}"
  corpus="$build/corpus/$target"
  log="$build/findings/$target.log"
  mkdir -p "$corpus"
  args=(-max_total_time="$seconds" -timeout=60 -rss_limit_mb=2560 -print_final_stats=1
        -artifact_prefix="$build/findings/$target-")
  if [ -n "${dictionary[$target]:-}" ]; then args+=(-dict=fuzz/glmixfit.dict); fi
  echo "== $target: $seconds s"
  nice -n 19 "$build/fuzz/$target" "${args[@]}" "$corpus" "$seeds" > "$log" 2>&1
  status=$?
  if [ $status -ne 0 ]; then
    failed+=("$target")
    echo "$target found a problem (exit $status); the last lines of $log:"
    tail -n 40 "$log"
  else
    grep -E '^(#[0-9]+[[:space:]]+DONE|stat::number_of_executed_units)' "$log" || true
  fi
done

if [ ${#failed[@]} -ne 0 ]; then
  echo "Findings in: ${failed[*]} (inputs in $build/findings)"
  exit 1
fi
