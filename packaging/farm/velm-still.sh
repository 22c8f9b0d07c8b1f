#!/bin/bash
# Renders one picture in parts with GNU parallel, one part after another on each machine, and merges them.
#
#     bash velm-still.sh SCENE PICTURE.exr PARTS
#     bash velm-still.sh hall.json renders/hall.exr 64
#
# VELM names the program, if it is not "velm"; VELM_HOSTS the machines to use by ssh, as in "render1,render2" or
# "4/render1,:" (the option --sshlogin of parallel). They must have the files at the same paths. The parts and the job
# log are in a directory beside the picture. Run it again to render what failed: complete parts are not rendered again.
set -euo pipefail

# The job.
velm=${VELM:-velm} scene=${1:?a scene is missing} picture=${2:?a picture is missing} parts=${3:?} options=()
# End of the job.

directory=${picture%.exr}_parts
mkdir -p "$directory"
parallel --quote --jobs 1 --sshlogin "${VELM_HOSTS:-:}" --workdir . --joblog "$directory/velm-still.joblog" \
    --retries 3 --line-buffer --tag \
    "$velm" render "$scene" --part "{}/$parts" -o "$directory/part_{}.exr" --skip-existing --progress percent \
    "${options[@]}" ::: $(seq "$parts")
files=()
for ((part = 1; part <= parts; ++part)); do files+=("$directory/part_$part.exr"); done
exec "$velm" merge "${files[@]}" -o "$picture" --expect "$parts"
