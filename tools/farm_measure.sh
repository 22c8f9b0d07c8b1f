#!/usr/bin/env bash
# Measures what tools/farm_figures.json has of two nodes, of merging and of pictures, and prints it as JSON. Needs root
# and the packages of ./run test --farm. The machine should have two cores and nothing else to do.
#
#     tools/farm_measure.sh VELM
set -euo pipefail
cd "$(dirname "$0")/.."
# shellcheck source=tests/farm/cluster.sh
source tests/farm/cluster.sh

velm=$(realpath "$1")
scene=$PWD/examples/occlusion.json
picture=(--size 960x540 --samples 9) megapixels=0.5184
work=$(mktemp -d "${TMPDIR:-/tmp}/velm-farm-XXXXXX")
chmod 755 "$work" # munge wants its socket to be accessible to all
trap 'cluster_down; rm -rf "$work"' EXIT

now() { date +%s.%N; }

since() { python3 -c 'import sys; print(round(float(sys.argv[2]) - float(sys.argv[1]), 2))' "$1" "$(now)"; }

job_is_over() { # JOB
    [ -z "$(squeue --noheader --jobs="$1" --states=PENDING,RUNNING,COMPLETING 2>/dev/null)" ]
}

wait_for() { # JOB
    until wait_until job_is_over "$1" 2>/dev/null; do :; done
}

still() { # PARTS: prints the seconds until it is merged
    "$velm" farm "$scene" --engine slurm --parts "$1" -o "$work/still_$1.exr" -- "${picture[@]}" --threads 1 \
        >"$work/still.sbatch"
    local began jobs
    began=$(now)
    jobs=$(cd "$work" && bash still.sbatch)
    wait_for "${jobs##*$'\n'}"
    test -e "$work/still_$1.exr"
    since "$began"
}

tasks() { # COUNT: prints the seconds that so many tasks take that do nothing
    local began job
    began=$(now)
    job=$(cd "$work" && sbatch --parsable --array="1-$1" --output=/dev/null --wrap true)
    wait_for "$job"
    since "$began"
}

"$velm" render "$scene" "${picture[@]}" --threads 1 -o "$work/whole.exr" --quiet --stats --json >"$work/whole.json"
cluster_up "$work/slurm" 2
one=$(tasks 2) many=$(tasks 42)
six=$(still 6) many_parts=$(still 24)
began=$(now)
"$velm" merge "$work"/still_6_parts/part_*.exr -o "$work/merged.exr" --expect 6
merge=$(since "$began")
python3 - "$work/whole.json" "$one" "$many" "$six" "$many_parts" "$merge" "$megapixels" \
    "$(stat --format=%s "$work/whole.exr")" <<'PYTHON'
import json
import sys

one, many, six, many_parts, merge, megapixels, size = map(float, sys.argv[2:])
with open(sys.argv[1], encoding="utf-8") as file:
    seconds = json.load(file)["seconds"]
print(json.dumps({
    "picture bytes a pixel": round(size / (megapixels * 1e6), 2),
    "merge seconds a megapixel": round(merge / megapixels, 3),
    "scheduler seconds a task": round((many - one) / 40, 3),
    "two nodes": {
        "whole": round(seconds["preparation"] + seconds["rendering"], 2),
        "start": round(seconds["preparation"], 3),
        "merge": merge,
        "start of a job": one,
        "runs": [{"parts": 6, "seconds": six}, {"parts": 24, "seconds": many_parts}],
    },
}, indent=2))
PYTHON
