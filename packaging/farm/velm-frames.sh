#!/bin/bash
# Renders the frames of a scene with GNU parallel, one list of frames after another on each machine.
#
#     bash velm-frames.sh SCENE PICTURE FRAMES ...
#     bash velm-frames.sh walk.json renders/walk_####.exr 1-10 11-20 21-24
#
# VELM names the program, if it is not "velm"; VELM_HOSTS the machines to use by ssh, as in "render1,render2" or
# "4/render1,:" (the option --sshlogin of parallel). They must have the files at the same paths. The job log is beside
# the pictures. Run it again to render what failed or was left out: frames that are complete are not rendered again.
set -euo pipefail

# The job.
velm=${VELM:-velm} scene=${1:?a scene is missing} picture=${2:?a picture is missing} frames=("${@:3}") options=()
# End of the job.

parallel --quote --jobs 1 --sshlogin "${VELM_HOSTS:-:}" --workdir . --joblog "$(dirname "$picture")/velm-frames.joblog" \
    --retries 3 --line-buffer --tag \
    "$velm" render "$scene" --frames={} -o "$picture" --skip-existing --progress percent "${options[@]}" \
    ::: "${frames[@]}"
