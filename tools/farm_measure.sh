#!/usr/bin/env bash
# Measures what tools/farm_figures.json has of two nodes and of the size of pictures, and prints it as JSON. The time to
# launch a task is fitted to the picture in six parts, so that the one in 24 parts checks the model. Needs root and the
# packages of ./run test --farm. The machine should have two cores and nothing else to do.
#
#     tools/farm_measure.sh VELM
set -euo pipefail
shopt -s inherit_errexit
cd "$(dirname "$0")/.."
# shellcheck source=tests/farm/cluster.sh
source tests/farm/cluster.sh

velm=$(realpath "$1")
scene=$PWD/examples/occlusion.json
picture=(--size 320x180 --samples 4) megapixels=0.0576
work=$(mktemp -d "${TMPDIR:-/tmp}/velm-farm-XXXXXX")
chmod 755 "$work" # munge wants its socket to be accessible to all
trap 'cluster_down; rm -rf "$work"' EXIT

now() { date +%s.%N; }

since() { python3 -c 'import sys; print(round(float(sys.argv[2]) - float(sys.argv[1]), 2))' "$1" "$(now)"; }

still() { # PARTS: prints the seconds until it is merged
    "$velm" farm "$scene" --engine slurm --parts "$1" -o "$work/still_$1.exr" -- "${picture[@]}" --threads 1 \
        >"$work/still.sbatch"
    local began jobs
    began=$(now)
    jobs=$(cd "$work" && bash still.sbatch)
    wait_for_job "${jobs##*$'\n'}"
    test -e "$work/still_$1.exr"
    since "$began"
}

tasks() { # COUNT: prints the seconds that so many tasks take that do nothing
    local began job
    began=$(now)
    job=$(cd "$work" && sbatch --parsable --array="1-$1" --output=/dev/null --wrap true)
    wait_for_job "$job"
    since "$began"
}

began=$(now)
"$velm" render "$scene" "${picture[@]}" --threads 1 -o "$work/whole.exr" --quiet
whole=$(since "$began")
began=$(now)
"$velm" render "$scene" --size 32x32 --samples 1 --threads 1 -o "$work/small.exr" --quiet
start=$(since "$began")
cluster_up "$work/slurm" 2
job=$(tasks 2)
six=$(still 6) many_parts=$(still 24)
began=$(now)
"$velm" merge "$work"/still_6_parts/part_*.exr -o "$work/merged.exr" --expect 6
merge=$(since "$began")
python3 - "$whole" "$start" "$job" "$six" "$many_parts" "$merge" "$megapixels" \
    "$(stat --format=%s "$work/whole.exr")" <<'PYTHON'
import json
import sys

whole, start, job, six, many_parts, merge, megapixels, size = map(float, sys.argv[1:])
# Of the six parts each node renders three, one after another. What the model has no other figure for is launching.
launch = (six - job - merge) / 3 - start - (whole - start) / 6
print(json.dumps({
    "picture bytes a pixel": round(size / (megapixels * 1e6), 2),
    "seconds a machine takes to launch a task": round(launch, 2),
    "two nodes": {
        "whole": whole,
        "start": start,
        "merge": merge,
        "start of a job": job,
        "runs": [{"parts": 6, "seconds": six}, {"parts": 24, "seconds": many_parts}],
    },
}, indent=2))
PYTHON
