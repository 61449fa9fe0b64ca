#!/bin/sh
# Exports a folder of scenes as an array job of Slurm: each task exports its share, with all of its processors.
#
#     sbatch --array=0-7 --cpus-per-task=4 export_array.sh SCENES OUTPUT [OPTION...]
#
# Both folders have to be on a file system that all nodes share; OPTIONs are those of tv2 export. The answers of a task
# are lines of JSON in its output, docs/batch.md says more.
#SBATCH --job-name=tv2-export
#SBATCH --output=tv2-export-%A_%a.jsonl
#SBATCH --error=tv2-export-%A_%a.log
#SBATCH --requeue
set -eu
scenes="$1"
output="$2"
shift 2
part=$(((SLURM_ARRAY_TASK_ID - ${SLURM_ARRAY_TASK_MIN:-0}) / ${SLURM_ARRAY_TASK_STEP:-1} + 1))
exec tv2 export --recursive --shard "$part/$SLURM_ARRAY_TASK_COUNT" --newer -j "${SLURM_CPUS_PER_TASK:-1}" --json \
    "$@" -o "$output" -- "$scenes"
