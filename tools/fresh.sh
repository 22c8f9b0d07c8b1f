#!/usr/bin/env bash
# Runs commands in a new Debian system that holds nothing else, and removes it again. Called by `./run test --fresh` and
# `./run test --packages`, as root, with the source tree as a tar archive on standard input.
#
#     tools/fresh.sh "root:./run demo" "root:./run test" "user:./run demo" "user:./run test"
#
# A step is the account to run a command under, and the command, which is run in the source tree. Consecutive steps of one
# account share a system; another account gets a new one. `user` is an ordinary account that may use sudo.
#
# The system is of the same suite as this machine, and uses its package sources, keys and proxies. It is made, used and
# removed in mount and process namespaces of its own, so that nothing is left mounted or running however this ends.
set -euo pipefail

readonly account=builder tree=/srv/velm
readonly path=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin

say() { printf '%s\n' "$*" >&2; }

# The package sources of this machine, as URI and suite.
sources() { apt-get indextargets --format "\$(REPO_URI) \$(RELEASE)" "Created-By: Packages" | sort -u; }

make_system() { # DIRECTORY
    local root=$1 suite mirror include=() uri
    suite=$(sed -n "s/^VERSION_CODENAME=//p" /etc/os-release)
    mirror=$(sources | awk -v suite="$suite" '$2 == suite { print $1; exit }')
    [ -n "$mirror" ] || { say "fresh: no package source of this machine offers $suite"; return 1; }
    if sources | grep -q '^https:'; then include=(--include=ca-certificates); fi
    # debootstrap does not read apt's settings.
    eval "$(apt-config shell http_proxy Acquire::http::Proxy https_proxy Acquire::https::Proxy)"
    [ "${http_proxy:-}" != DIRECT ] || http_proxy=
    [ "${https_proxy:-}" != DIRECT ] || https_proxy=
    http_proxy=${http_proxy:-} https_proxy=${https_proxy:-} \
        debootstrap --variant=minbase "${include[@]}" "$suite" "$root" "$mirror" >"$root.log" 2>&1 ||
        { tail -n 20 "$root.log" >&2; return 1; }

    # Package sources, keys and settings. The settings of other parts of apt may name programs that are not there.
    rm -f "$root/etc/apt/sources.list"
    local part
    for part in sources.list sources.list.d keyrings trusted.gpg trusted.gpg.d auth.conf auth.conf.d; do
        [ ! -e "/etc/apt/$part" ] || cp -a "/etc/apt/$part" "$root/etc/apt/"
    done
    cp -a /usr/share/keyrings/. "$root/usr/share/keyrings/"
    [ ${#include[@]} -eq 0 ] || cp -L /etc/ssl/certs/ca-certificates.crt "$root/etc/ssl/certs/"
    apt-config dump Acquire | grep -vi 'auto-\?detect' >"$root/etc/apt/apt.conf.d/00machine"
    cp -L /etc/resolv.conf /etc/hosts "$root/etc/"

    mount -t proc proc "$root/proc"
    mount --rbind /dev "$root/dev"
    for uri in $(sources | sed -n 's/^\(file\|copy\):\/*\([^ ]*\) .*/\/\2/p' | sort -u); do
        mkdir -p "$root$uri"
        mount --bind "$uri" "$root$uri"
    done
    mkdir "$root$tree"
    tar -x -C "$root$tree" -f "$root.tar"
}

in_system() { # DIRECTORY ACCOUNT COMMAND ...
    local root=$1 name=$2 home=/root
    [ "$name" = root ] || home=/home/$name
    chroot --userspec="$name:$name" --groups='' "$root" env -i PATH="$path" HOME="$home" LC_ALL=C.UTF-8 \
        ${http_proxy:+http_proxy="$http_proxy"} ${https_proxy:+https_proxy="$https_proxy"} \
        ${no_proxy:+no_proxy="$no_proxy"} "${@:3}"
}

add_account() { # DIRECTORY
    in_system "$1" root sh -c 'apt-get update -q && apt-get install -q -y --no-install-recommends sudo' >"$1.log" 2>&1 ||
        { tail -n 20 "$1.log" >&2; return 1; }
    in_system "$1" root useradd --create-home "$account"
    printf '%s ALL=(ALL) NOPASSWD: ALL\n' "$account" >"$1/etc/sudoers.d/$account"
    chmod 440 "$1/etc/sudoers.d/$account"
    in_system "$1" root chown -R "$account:" "$tree"
}

run_steps() { # DIRECTORY STEP ...
    local scratch=$1 step root='' who='' name began
    shift
    for step; do
        if [ "$who" != "${step%%:*}" ]; then
            who=${step%%:*}
            root=$scratch/$who
            say "Making a bare Debian system for: $who"
            mkdir "$root"
            ln "$scratch/tree.tar" "$root.tar"
            make_system "$root"
            [ "$who" = root ] || add_account "$root"
        fi
        name=$account
        [ "$who" != root ] || name=root
        say "${step#*:}, as $who"
        began=$SECONDS
        in_system "$root" "$name" sh -c "cd $tree && exec ${step#*:}" </dev/null
        say "${step#*:}, as $who: passed in $((SECONDS - began)) s"
    done
}

if [ "${1:-}" = --in-namespaces ]; then
    run_steps "${@:2}"
    exit
fi

[ "$(id -u)" -eq 0 ] || { say "fresh: has to be root, to make a system"; exit 1; }
scratch=$(mktemp -d "${TMPDIR:-/var/tmp}/velm-fresh.XXXXXX")
child=
leave() {
    [ -z "$child" ] || kill -KILL "$child" 2>/dev/null || true
    [ -z "$child" ] || wait "$child" 2>/dev/null || true
    rm -rf --one-file-system "$scratch"
}
trap leave EXIT
trap 'exit 130' INT TERM HUP
cat >"$scratch/tree.tar"
# In the background, so that a signal is acted on at once. The end of unshare ends whatever runs in its namespaces.
unshare --mount --propagation private --pid --fork --kill-child "${BASH_SOURCE[0]}" --in-namespaces "$scratch" "$@" &
child=$!
wait "$child"
