#!/usr/bin/env bash
# Short bounded runs of every fuzz target over its committed seeds, for CI: each target for
# SECONDS (default 20), new inputs into a scratch folder (the committed seeds stay as they are),
# a crash, sanitizer finding, time-out or memory blow-up saved under BUILD/fuzz-artifacts and
# failing the run. Usage: fuzz/smoke.sh BUILD_DIR [SECONDS]
# The fuzzer's random seed is fixed (PX_FUZZ_SEED, default 1; 0 lets the fuzzer choose), so that
# test runs try much the same inputs (not exactly: operands the fuzzer picks up from comparisons
# include addresses, which differ from run to run). New findings are for longer runs of one's own
# (README.md) rather than for a test run of an unrelated change.
set -uo pipefail
build=$(cd "$1" && pwd)
seconds=${2:-20}
here=$(cd "$(dirname "$0")" && pwd)
artifacts="$build/fuzz-artifacts"
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
mkdir -p "$artifacts"

failed=()
for target in fuzz_callbook_page fuzz_html_paths fuzz_call_file fuzz_language fuzz_appcfg fuzz_nicknames fuzz_call_text; do
  name=${target#fuzz_}
  extra=()
  case "$name" in
    callbook_page) extra=(-max_len=65536 -dict="$here/callbook_page.dict") ;;
    html_paths) extra=(-max_len=65536 -dict="$here/html_paths.dict") ;;
    call_file) extra=(-max_len=20000) ;;
    language) extra=(-max_len=32768) ;;
    *) extra=(-max_len=4096) ;;
  esac
  mkdir -p "$scratch/$name"
  log="$build/fuzz-$name.log"
  "$build/fuzz/$target" -seed="${PX_FUZZ_SEED:-1}" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -print_final_stats=1 \
      -artifact_prefix="$artifacts/$name-" "${extra[@]}" "$scratch/$name" "$here/corpus/$name" > "$log" 2>&1
  status=$?
  runs=$(grep -oE 'stat::number_of_executed_units: *[0-9]+' "$log" | grep -oE '[0-9]+$')
  if [ $status -ne 0 ]; then
    failed+=("$target")
    echo "fuzz smoke: $target FAILED (exit $status); the end of $log:"
    tail -n 40 "$log"
  else
    echo "fuzz smoke: $target ok, ${runs:-?} runs in ${seconds}s"
  fi
done
[ ${#failed[@]} -eq 0 ] || { echo "fuzz smoke: failed: ${failed[*]} (inputs in $artifacts)"; exit 1; }
