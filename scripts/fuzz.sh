#!/bin/sh
# Runs every fuzz target, or the one named, for SECONDS (default 60), one per processor at a time, and prints the
# executions per second of each. The corpora they build are kept in the build folder for the next run; an input that
# breaks a target is left there as well and fails the run.
set -eu
cd "$(dirname "$0")/.."
seconds="${1:-60}"
case "$seconds" in
[!1-9]* | *[!0-9]* | ??????????*)
    echo "usage: $0 [SECONDS [TARGET]]" >&2 # with 0 or a number that is too large the search would never end
    exit 2
    ;;
esac
programs=build/asan/bin
build=build/asan/fuzz
# Recording the stack of every allocation would take most of the time. Replay a finding with the default options to see
# where its memory came from.
export ASAN_OPTIONS="quarantine_size_mb=1:malloc_context_size=1"
mkdir -p $build/corpus $build/findings $build/logs

# A few small records reach all of the TEV2 loader; scene readers need whole files.
largest_input()
{
    case "$1" in
    tev2_*) echo 512 ;;
    *) echo 10000 ;;
    esac
}

# The mutators of TEV2 inputs change enough at once: of bodies that are changed five times, one in 150 instead of one
# in 15 is still typed.
most_mutations()
{
    case "$1" in
    tev2_*) echo 1 ;;
    *) echo 5 ;;
    esac
}

run_target()
{
    name="$1"
    log="$build/logs/$name.log"
    seeds="$(cat "$build/seeds/$name")"
    mkdir -p "$build/corpus/$name"
    # -reduce_inputs=0 and -use_counters=0: an input is kept when it reaches something new, not when it does so with
    # fewer bytes or more often. Otherwise the search slows down with thousands of long inputs that reach no more.
    # shellcheck disable=SC2086 # several folders
    if "$programs/fuzz_$name" -max_total_time="$seconds" -max_len="$(largest_input "$name")" -timeout=1 \
        -mutate_depth="$(most_mutations "$name")" -rss_limit_mb=1024 -malloc_limit_mb=64 \
        -entropic=0 -reload=0 -reduce_inputs=0 -use_counters=0 -print_final_stats=1 \
        -artifact_prefix="$build/findings/$name-" "$build/corpus/$name" $seeds >"$log" 2>&1 &&
        grep -a '^stat::average_exec_per_sec:' "$log" >/dev/null; then
        sed -n "s/^stat::average_exec_per_sec: */$name: executions a second: /p" "$log"
        return
    fi
    tail -n 60 "$log"
    if grep -a 'Test unit written to' "$log" >/dev/null; then
        echo "$name: broken by the file named above; log in $log"
    else
        echo "$name: could not run to its end; log in $log"
    fi
    return 1
}

if [ "${2:-}" ]; then
    run_target "$2"
    exit
fi
targets="$(ls $build/seeds 2>/dev/null || true)"
if [ -z "$targets" ]; then
    echo "no fuzz target in $programs: make fuzz builds them"
    exit 1
fi
echo "$targets" | xargs -P "$(nproc)" -n 1 "$0" "$seconds"
