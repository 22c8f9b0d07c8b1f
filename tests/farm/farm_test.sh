#!/usr/bin/env bash
# Renders one picture in parts on each engine that "velm farm" prints jobs for, and compares it with the picture rendered
# whole: on a Slurm cluster of two nodes, of which one is cut off amid its work; with GNU parallel; and from Open Job
# Description templates. Then frames in chunks. Run by ./run test --farm, as root.
#
#     tests/farm/farm_test.sh VELM
set -euo pipefail
cd "$(dirname "$0")/../.."
# shellcheck source=tests/farm/cluster.sh
source tests/farm/cluster.sh

velm=$(realpath "$1")
parts=6
work=$(mktemp -d "${TMPDIR:-/tmp}/velm-farm-XXXXXX")
chmod 755 "$work" # munge wants its socket to be accessible to all
began=$(date +%s%N)

lap() { # TEXT
    local tenths=$((($(date +%s%N) - began) / 100000000))
    printf '%4d.%d s  %s\n' $((tenths / 10)) $((tenths % 10)) "$1"
}

finish() {
    local status=$?
    cluster_down
    if [ $status -eq 0 ]; then
        rm -rf "$work"
    else
        tail -n 5 "$work"/*.log "$work"/*/*.log >&2 || true
        echo "farm test: failed; the logs are in $work" >&2
    fi
}
trap finish EXIT

expect_same() { # PICTURE PICTURE
    "$velm" compare "$1" "$2" --tolerance 0 --mean 0 --rms 0 >"$work/compare.txt" || {
        cat "$work/compare.txt" >&2
        echo "farm test: $1 differs from $2" >&2
        return 1
    }
}

# ---- Slurm ----

# The task that runs on a node, as JOB_TASK; fails if there is none.
task_on() { # NODE
    local task
    task=$(squeue --noheader --states=RUNNING --nodelist="$1" --format='%F_%K' | head -n 1)
    [ -n "$task" ] && printf '%s\n' "$task"
}

is_requeued() { # TASK
    [[ $(squeue --noheader --jobs="$1" --format='%T:%r') = PENDING:BeginTime* ]]
}

# Starts a task at once that Slurm makes wait for two minutes.
release() { # TASK
    wait_until is_requeued "$1"
    scontrol update "JobId=$1" StartTime=now
}

still_on_slurm() {
    cluster_up "$work/slurm" 2
    lap "Slurm: two nodes are up"
    # The first try of part 2 ends as if the machine had failed.
    cat >"$work/velm" <<SCRIPT
#!/bin/bash
if [[ " \$* " = *" --part 2/"* ]] && mkdir "$work/failed" 2>/dev/null; then exit 3; fi
exec "$velm" "\$@"
SCRIPT
    chmod +x "$work/velm"
    mkdir "$work/out"
    farm slurm --parts $parts -o "$work/out/slurm.exr" | sed "s|^velm=.*|velm=$work/velm|" >"$work/still.sbatch"
    local jobs array merge task
    jobs=$(cd "$work" && bash "$work/still.sbatch")
    array=${jobs%%$'\n'*} merge=${jobs##*$'\n'}
    wait_until test -d "$work/failed"
    release "${array}_2"
    lap "Slurm: part 2 ended with status 3, and was queued again"
    local try
    for ((try = 0; try < parts; ++try)); do # until a task is found amid its work
        task=$(wait_until task_on n2)
        sleep 0.5
        if [ "$(task_on n2)" = "$task" ]; then break; fi
    done
    cluster_cut n2
    lap "Slurm: node n2 is cut off, with task $task"
    release "$task"
    lap "Slurm: task $task was queued again"
    wait_for_job "$merge"
    expect_same "$work/out/slurm.exr" "$work/whole.exr"
    lap "Slurm: the merged picture equals the whole"
}

frames_on_slurm() {
    farm slurm --frames 1-4 --chunk 3 -o "$work/out/slurm_#.exr" >"$work/frames.sbatch"
    local job
    job=$(cd "$work" && bash "$work/frames.sbatch")
    wait_for_job "${job##* }"
    for frame in 1 2 3 4; do expect_same "$work/out/slurm_$frame.exr" "$work/frame_$frame.exr"; done
    lap "Slurm: frames in chunks equal those of one render"
}

# ---- The other engines ----

with_parallel() {
    farm parallel --parts $parts -o "$work/out/parallel.exr" >"$work/still.sh"
    bash "$work/still.sh" 2>"$work/parallel.log"
    expect_same "$work/out/parallel.exr" "$work/whole.exr"
    farm parallel --frames 1-4 --chunk 3 -o "$work/out/parallel_#.exr" >"$work/frames.sh"
    bash "$work/frames.sh" 2>>"$work/parallel.log"
    for frame in 1 2 3 4; do expect_same "$work/out/parallel_$frame.exr" "$work/frame_$frame.exr"; done
    lap "GNU parallel: equal"
}

with_openjd() {
    farm openjd --parts $parts -o "$work/out/openjd.exr" >"$work/still.yaml"
    farm openjd --frames 1-4 -o "$work/out/openjd_#.exr" >"$work/frames.yaml"
    farm openjd --frames 1-4 --chunk 3 -o "$work/out/openjd_#.exr" >"$work/chunks.yaml"
    python3 tests/farm/openjd.py check packaging/farm/*.yaml "$work"/*.yaml
    if python3 tests/farm/openjd.py check tests/farm/wrong.yaml >"$work/wrong.log" 2>&1; then
        echo "farm test: tests/farm/wrong.yaml was accepted" >&2
        return 1
    fi
    python3 tests/farm/openjd.py run "$work/still.yaml" >"$work/openjd.log" 2>&1
    expect_same "$work/out/openjd.exr" "$work/whole.exr"
    for job in frames chunks; do
        python3 tests/farm/openjd.py run "$work/$job.yaml" >>"$work/openjd.log" 2>&1
        for frame in 1 2 3 4; do expect_same "$work/out/openjd_$frame.exr" "$work/frame_$frame.exr"; done
        rm "$work"/out/openjd_?.exr
    done
    grep -q '^openjd_progress: 100$' "$work/openjd.log"
    lap "Open Job Description: equal"
}

# The job of the test's scene. Frames are small; the still is large enough for a node to be cut off amid a part.
farm() { # ENGINE OPTION ...
    local size=(--size 240x135 --samples 1)
    if [[ " $* " = *" --parts "* ]]; then size=("${still[@]}"); fi
    "$velm" farm "$work/scene/scene.json" --engine "$1" "${@:2}" -- "${size[@]}"
}

still=(--size 480x270 --samples 9)
"$velm" archive examples/occlusion.json "$work/scene" >/dev/null
"$velm" render "$work/scene/scene.json" "${still[@]}" -o "$work/whole.exr" --quiet
"$velm" render "$work/scene/scene.json" --size 240x135 --samples 1 --frames 1-4 -o "$work/frame_#.exr" --quiet
lap "the whole is rendered"
still_on_slurm
frames_on_slurm
cluster_down
with_parallel
with_openjd
