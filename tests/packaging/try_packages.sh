#!/usr/bin/env bash
# Tries the packages of the stand-alone host in dist/, as root in a Debian system that may be changed: ./run test --packages
# makes one. First the directory for other Linux systems, in a system of its own that has the C library and nothing else;
# then the Debian package, which is installed and removed again.
set -euo pipefail
cd "$(dirname "$0")/../.."

readonly bare=/srv/bare
package=$(echo dist/velm_*.deb) archive=$(echo dist/velm-[0-9]*.tar.gz)
version=$(sed -n 's/^project(velm VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)

fail() { printf 'try_packages: %s\n' "$*" >&2; exit 1; }

# The pictures of one scene, in a format that the program writes itself and in one for which it needs the image library;
# of a mesh, and of a scene with an image.
render_all() { # DIRECTORY EXAMPLES COMMAND ...
    local to=$1 examples=$2
    shift 2
    "$@" render "$examples/vase.lws" --frames 1 --size 64x36 --samples 1 --quiet -o "$to/vase.png"
    "$@" render "$examples/vase.lws" --frames 1 --size 64x36 --samples 1 --quiet -o "$to/vase.exr"
    "$@" render "$examples/vase.lwo" --size 64x36 --samples 1 --quiet -o "$to/object.tif"
    "$@" render "$examples/pixels.json" --size 64x36 --samples 1 --quiet -o "$to/pixels.jpg"
    "$@" compare "$to/vase.png" "$to/vase.exr"
}

in_bare() { chroot "$bare" "/velm-$version/velm" "$@"; }

try_directory() {
    mkdir -p "$bare/proc" "$bare/tmp"
    dpkg -L libc6 | grep '^/lib' | while read -r file; do [ ! -f "$file" ] || echo "${file#/}"; done |
        tar -c -C / -T - | tar -x -C "$bare"
    tar -xzf "$archive" -C "$bare"
    mount -t proc proc "$bare/proc"
    [ "$(in_bare --version)" = "velm $version" ] || fail "the directory has another version"
    render_all /tmp "/velm-$version/examples" in_bare
    in_bare check --level 1
    umount "$bare/proc"
}

try_debian_package() {
    apt-get update -q
    DEBIAN_FRONTEND=noninteractive apt-get install -q -y --no-install-recommends "./$package"
    cd /
    [ "$(velm --version)" = "velm $version" ] || fail "the installed program has another version"
    dpkg --verify velm
    mkdir /tmp/installed
    render_all /tmp/installed /usr/share/doc/velm/examples velm
    velm check --level 2
    local command picture
    for command in velm $(velm --help | sed -n '/^Subcommands:/,$s/^  \([a-z]*\) .*/velm-\1/p'); do
        [ -s "/usr/share/man/man1/$command.1.gz" ] || fail "there is no manual page of $command"
    done
    # shellcheck source=/dev/null
    source /usr/share/bash-completion/completions/velm
    complete -p velm
    for picture in vase.png vase.exr object.tif pixels.jpg; do
        velm compare --tolerance 0 "/tmp/installed/$picture" "$bare/tmp/$picture"
    done
    apt-get remove -q -y velm
    if [ -e /usr/lib/velm ] || [ -e /usr/bin/velm ]; then fail "removing the package leaves files"; fi
}

try_directory
try_debian_package
echo "The packages work"
