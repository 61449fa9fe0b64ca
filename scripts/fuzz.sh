#!/bin/sh
# Runs every fuzz target for so many seconds (60 when not given), as many at a time as there are processors. What they
# learn is kept below the build folder for the next run; an input that breaks something is left there as well, and fails
# the run.
set -eu
cd "$(dirname "$0")/.."
seconds="${1:-60}"
build=build/fuzz
# Most of the time would go into remembering allocations that were all right. Played once more, with the default options,
# a finding tells where its memory came from.
export ASAN_OPTIONS="quarantine_size_mb=1:malloc_context_size=1"
mkdir -p $build/corpus $build/findings $build/logs

run_target()
{
    name="$1"
    mkdir -p "$build/corpus/$name"
    if "$build/bin/fuzz_$name" -max_total_time="$seconds" -timeout=1 -rss_limit_mb=1024 -malloc_limit_mb=64 \
        -entropic=0 -reload=0 -print_final_stats=1 -artifact_prefix="$build/findings/$name-" \
        "$build/corpus/$name" "fuzz/corpus/$name" >"$build/logs/$name.log" 2>&1; then
        sed -n "s/^stat::average_exec_per_sec: */$name: executions a second: /p" "$build/logs/$name.log"
    else
        tail -n 60 "$build/logs/$name.log"
        echo "$name: broken by the file named above; log in $build/logs/$name.log"
        return 1
    fi
}

if [ "${2:-}" ]; then
    run_target "$2"
else
    find $build/bin -name 'fuzz_*' -type f | sed 's/.*fuzz_//' | sort |
        xargs -P "$(nproc)" -n 1 "$0" "$seconds"
fi
