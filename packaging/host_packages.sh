# shellcheck shell=bash
# Packs the stand-alone host: as Debian package, dist/velm_VERSION_ARCHITECTURE.deb, and as a directory for other Linux
# systems, dist/velm-VERSION-linux-PROCESSOR.tar.gz with its bill of materials, velm-VERSION.spdx.json. Part of ./run, whose
# functions it uses.

# The address of a Debian package's maintainer, by Debian's own variables.
maintainer() { printf '%s <%s>' "${DEBFULLNAME:-The Velm Nodes authors}" "${DEBEMAIL:-velm@example.org}"; }

# Installs the program, its image library and the module, without symbols. They find each other by being in one directory.
install_programs() { # DIRECTORY
    install -d -m 755 "$1"
    install -m 755 build/velm "$1/velm"
    install -m 644 build/libvelm-images.so build/velm.p "$1/"
    strip --strip-all --remove-section=.comment "$1/velm"
    strip --strip-unneeded --remove-section=.comment "$1/libvelm-images.so" "$1/velm.p"
}

install_documents() { # DIRECTORY
    local file
    for file in docs/{commands,scene,check,farm}.md docs/scene.schema.json; do
        install -D -m 644 "$file" "$1/$(basename "$file")"
    done
    git ls-files 'examples/*.json' 'examples/*.lwo' 'examples/*.lws' 'examples/*.png' |
        while read -r file; do install -D -m 644 "$file" "$1/$file"; done
}

# Everyone can read all files, whose time is that of the commit.
settle() { # DIRECTORY
    chmod -R u=rwX,go=rX "$1"
    find "$1" -exec touch --no-dereference -d "@$SOURCE_DATE_EPOCH" {} +
}

# Prints the packages whose libraries these files need, as a list for Depends.
needed_packages() { # FILE ...
    local scratch
    scratch=$(mktemp -d)
    mkdir "$scratch/debian"
    printf 'Source: velm\n\nPackage: velm\nArchitecture: any\n' >"$scratch/debian/control"
    (cd "$scratch" && dpkg-shlibdeps -O "${@/#/-e}") | sed -n 's/^shlibs:Depends=//p'
    rm -r "$scratch"
}

control_file() { # ROOT
    cat <<TEXT
Package: velm
Version: $(version)
Architecture: $(dpkg --print-architecture)
Maintainer: $(maintainer)
Installed-Size: $(du -k -s --apparent-size --exclude=DEBIAN "$1" | cut -f 1)
Depends: $(needed_packages "$PWD/$1"/usr/lib/velm/{velm,libvelm-images.so,velm.p})
Recommends: xdg-utils
Section: graphics
Priority: optional
Description: renderer for shading nodes of LightWave 3D
 Velm loads a plug-in module of shading nodes for LightWave 3D, and renders
 scenes, objects and meshes with them. It opens LightWave's scenes and objects,
 OBJ, glTF, FBX, PLY and STL files, and scenes of its own in JSON.
 .
 The package contains the module Velm Nodes as well.
TEXT
}

changelog_file() {
    printf 'velm (%s) unstable; urgency=medium\n\n  * What is new is in CHANGES.txt.\n\n' "$(version)"
    printf ' -- %s  %s\n' "$(maintainer)" "$(LC_ALL=C date -u -R -d "@$SOURCE_DATE_EPOCH")"
}

pack_debian() {
    local root=build/package/deb share file
    share=$root/usr/share
    rm -rf "$root"
    install_programs "$root/usr/lib/velm"
    install -D -m 755 packaging/debian/render-file.sh "$root/usr/lib/velm/render-file"
    mkdir -p "$root/usr/bin" "$root/DEBIAN"
    ln -s ../lib/velm/velm "$root/usr/bin/velm"
    install -D -m 644 packaging/debian/completion.sh "$share/bash-completion/completions/velm"
    install -D -m 644 packaging/debian/velm.desktop "$share/applications/velm.desktop"
    install -D -m 644 packaging/debian/velm.svg "$share/icons/hicolor/scalable/apps/velm.svg"
    python3 packaging/man_pages.py build/velm "$share/man/man1"
    install_documents "$share/doc/velm"
    install -m 644 packaging/debian/copyright packaging/artists/CHANGES.txt "$share/doc/velm/"
    changelog_file >"$share/doc/velm/changelog"
    gzip -9 -n "$share/doc/velm/changelog" "$share/man/man1"/*.1
    settle "$root"
    (cd "$root" && find usr -type f -print0 | LC_ALL=C sort -z | xargs -0 md5sum) >"$root/DEBIAN/md5sums"
    control_file "$root" >"$root/DEBIAN/control"
    settle "$root"
    # With one thread, the compressed bytes do not depend on the number of processors.
    file=dist/velm_$(version)_$(dpkg --print-architecture).deb
    dpkg-deb --root-owner-group --threads-max=1 -Zxz --build "$root" "$file" >&2
}

# What someone reads who has unpacked the directory.
directory_page() { # C_LIBRARY
    cat <<TEXT
Velm $(version) for Linux

Start the program where it is, from any directory: ./velm render examples/vase.lws --frames 1
It needs nothing but the C library, glibc, in version $1 or newer: "ldd --version" prints yours. All other libraries are in
lib/. To remove it, remove the directory.

commands.md describes the commands, scene.md the scene files, and CHANGES.txt what is new. Some of the examples need meshes
and images that are not here; velm names what is missing.

The program and the module velm.p are under the licence in LICENSE.txt. The libraries come from Debian, unchanged;
licences/ has the copyright file of each of their packages. Some of them are under the GNU General Public License, which
concerns whoever passes this directory on: sources are at https://snapshot.debian.org. The file velm-$(version).spdx.json,
beside the archive, lists all versions.
TEXT
}

# The programs search for libraries in lib/ beside them. The tag is the older one, DT_RPATH, since it also counts for the
# libraries of libraries.
pack_directory() {
    local name stage=build/package/directory needed
    name=velm-$(version)
    rm -rf "$stage"
    install_programs "$stage/$name"
    install_documents "$stage/$name"
    install -m 644 LICENSE "$stage/$name/LICENSE.txt"
    install -m 644 packaging/artists/CHANGES.txt "$stage/$name/"
    patchelf --force-rpath --set-rpath "\$ORIGIN/lib" "$stage/$name/velm" "$stage/$name/libvelm-images.so"
    needed=$(python3 packaging/bundle.py velm "$(version)" "$stage/$name" "dist/$name.spdx.json" \
        libcli11-dev nlohmann-json3-dev libxxhash-dev)
    directory_page "$needed" >"$stage/$name/README.txt"
    settle "$stage/$name"
    tar -c -C "$stage" --sort=name --owner=0 --group=0 --numeric-owner --format=gnu "$name" |
        gzip -n >"dist/$name-linux-$(uname -m).tar.gz"
}

# The packages are tried in a new Debian system, together with the tracked files.
try_packages() {
    local packages=(dist/velm_*.deb dist/velm-[0-9]*.tar.gz)
    if [ ! -e "${packages[0]}" ] || [ ! -e "${packages[1]}" ]; then
        say "run: there are no packages of the host in dist/: ./run package host makes them"
        return 1
    fi
    install_missing git debootstrap lintian
    lintian --fail-on error,warning --allow-root "${packages[0]}"
    { git ls-files -z; printf '%s\0' "${packages[@]}"; } | tar -c --null -T - |
        as_root tools/fresh.sh "root:tests/packaging/try_packages.sh"
}
