#!/bin/sh
# Renders the file that was opened in a file manager, and shows the picture, which is beside the file. Run in a terminal.
cd "$(dirname "$1")" || exit 1
name=$(basename "$1")
picture=${name%.*}.png
if /usr/lib/velm/velm render "./$name"; then
    if [ -e "$picture" ] && command -v xdg-open >/dev/null; then xdg-open "$picture"; fi
fi
printf 'Press Enter to close the window. '
read -r _
