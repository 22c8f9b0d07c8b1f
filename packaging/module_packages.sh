# shellcheck shell=bash
# Packs the module for artists: dist/velm-nodes-VERSION-PLATFORM.zip. Part of ./run, whose functions it uses.

# shellcheck source=packaging/platforms.sh
source packaging/platforms.sh

version() { sed -n 's/^project(velm VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt; }

# Prints the chapters of a page whose titles are given, in the page's order, without markup. A chapter goes from one title
# to the next, of whatever level.
chapters() { # PAGE TITLE ...
    local page=$1 title
    shift
    for title; do
        grep -qx "##* $title" "$page" || { say "run: $page has no chapter '$title'"; return 1; }
    done
    awk -v titles="$(printf '%s\n' "$@")" '
        BEGIN { split(titles, list, "\n"); for (i in list) wanted[list[i]] }
        /^#+ / { title = $0; sub(/^#+ /, "", title); shown = title in wanted }
        shown' "$page" | sed -E 's/\[([^]]*)\]\([^)]*\)/\1/g; s/`//g; s/\*([^*]+)\*/\1/g; s/^#+ (.*)/\U\1/'
}

# What an artist reads first; a screen long.
install_page() { # PLATFORM
    local own=Linux
    [[ $1 != windows-* ]] || own=Windows
    [ "$1" != macintosh ] || own=Macintosh
    printf 'Velm Nodes %s for %s\n\n' "$(version)" "$1"
    chapters docs/install.md "Installing the module" "$own" "When the nodes do not appear" Removing
    printf 'HANDBOOK.txt describes every node, and CHANGES.txt what is new. examples/ has objects and a scene to load.\n'
}

# The rest of the install page, and every node as `velm show` describes it.
handbook() {
    local node
    printf 'Velm Nodes %s: handbook\n\n' "$(version)"
    chapters docs/install.md "What to expect" "Network folders and render farms" "What has been tested where"
    build/velm nodes | tail -n +2 | sed 's/   *.*//' | while read -r node; do
        printf '\n%s\n\n' "------------------------------------------------------------------------------"
        build/velm show "$node" | sed '/^  from  /d'
    done
}

# Packs what has been built for the platform. The same commit gives the same bytes: files have the commit's time,
# entries are sorted, and nothing that depends on the machine is included.
pack() { # PLATFORM
    local name stage file
    name=velm-nodes-$(version)-$1
    stage=build-$1/package
    rm -rf "$stage" "dist/$name.zip"
    mkdir -p "$stage/$name"
    git ls-files 'examples/*.lwo' 'examples/*.lws' |
        while read -r file; do install -D -m 644 "$file" "$stage/$name/$file"; done
    for file in occlusion metal glass pixels vase; do
        install -D -m 644 "docs/$file.jpg" "$stage/$name/pictures/$file.jpg"
    done
    install -m 755 "build-$1/velm.p" "$stage/$name/velm.p"
    install -m 644 LICENSE "$stage/$name/LICENSE.txt"
    install -m 644 packaging/artists/CHANGES.txt "$stage/$name/CHANGES.txt"
    install_page "$1" >"$stage/$name/INSTALL.txt"
    handbook >"$stage/$name/HANDBOOK.txt"
    chmod 644 "$stage/$name"/*.txt
    # Notepad shows other line ends since Windows 10 only.
    [[ $1 != windows-* ]] || sed -i 's/$/\r/' "$stage/$name"/*.txt
    find "$stage/$name" -exec touch -d "@$SOURCE_DATE_EPOCH" {} +
    (cd "$stage" && find "$name" -type f | LC_ALL=C sort | TZ=UTC zip -q -9 -X -D "$OLDPWD/dist/$name.zip" -@)
}

pack_modules() {
    local platform
    for platform in "${platforms[@]}"; do
        can_build "$platform" || continue
        build_for "$platform" velm_module
        pack "$platform"
    done
    if can_build macintosh; then
        build_for_macintosh
        pack macintosh
    fi
}

# Packs the modules, the host or both in dist/, which has only packages of one commit.
package() { # [modules|host]
    install_missing
    install_missing "${building_packages[@]}" git zip patchelf
    : "${SOURCE_DATE_EPOCH:=$(git log -1 --format=%ct)}"
    export SOURCE_DATE_EPOCH
    [ -z "$(git status --porcelain --untracked-files=no)" ] || say "The packages will contain uncommitted changes"
    rm -rf dist
    mkdir -p dist
    build release velm velm_module # the handbook of the modules is the program's
    [ "$1" = host ] || pack_modules
    [ "$1" = modules ] || { pack_debian; pack_directory; }
    (cd dist && sha256sum -- velm* >SHA256SUMS)
    say "Packed, in dist/:"
    cat dist/SHA256SUMS
}
