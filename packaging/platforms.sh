# shellcheck shell=bash
# Builds the module for every platform that this machine can build for, and checks it. Part of ./run, whose functions
# it uses.

platforms=(linux-x86_64 linux-i386 windows-x86_64 windows-i686) # as the presets name them

# Packages that building for any platform needs.
building_packages=(build-essential cmake ninja-build)

# The Debian packages with the compiler for a platform.
compiler_packages() { # PLATFORM
    case $1 in
        linux-x86_64) ;;
        linux-i386) printf '%s\n' g++-multilib ;;
        windows-x86_64) printf '%s\n' g++-mingw-w64-x86-64-win32 ;;
        windows-i686) printf '%s\n' g++-mingw-w64-i686-win32 ;;
        macintosh) printf '%s\n' clang-14 lld-14 llvm-14 libc++-14-dev musl-dev ;;
    esac
}

# Succeeds if this machine can build for the platform, after installing the compiler if necessary. Else says why not.
can_build() { # PLATFORM
    if [[ $1 = linux-* || $1 = macintosh ]] && [ "$(uname -m)" != x86_64 ]; then
        say "Left out: $1, which can only be built on an x86_64 machine"
        return 1
    fi
    local compilers
    mapfile -t compilers < <(compiler_packages "$1")
    if [ ${#compilers[@]} -gt 0 ] && ! install_missing "${compilers[@]}"; then
        say "Left out: $1, whose compiler cannot be installed: ${compilers[*]}"
        return 1
    fi
}

build_for() { # PLATFORM [TARGET ...]
    refuse_foreign_build "$(build_directory "$1")"
    # Forgets the module that try_macintosh named in an earlier run, since that file may no longer exist.
    cmake --preset "$1" -UVELM_MACINTOSH_BUNDLE >/dev/null
    cmake --build --preset "$1" ${2:+--target "${@:2}"} >&2
}

# Builds the module for both kinds of Macintosh, and joins the two files into one, build-macintosh/velm.p.
build_for_macintosh() {
    build_for macintosh-x86_64 velm_module
    build_for macintosh-arm64 velm_module
    mkdir -p build-macintosh
    llvm-lipo-14 -create -output build-macintosh/velm.p build-macintosh-x86_64/velm.p build-macintosh-arm64/velm.p
}

# Succeeds if the platform's programs can run here, after preparing Wine if necessary.
can_run() { # PLATFORM
    [[ $1 = windows-* ]] || return 0
    if ! install_missing wine64 || ! tests/platforms/wine "${1#windows-}" --prepare; then
        say "Built but not checked: $1, for which there is no Wine here"
        return 1
    fi
}

# Runs the tests of a preset whose names begin with TESTS, and prints NAME and the results.
try() { # NAME PRESET TESTS
    printf '\n%s\n' "$1"
    ctest --preset "$2" --tests-regex "^$3" --verbose |
        grep -E '^[0-9]+: ([0-9]+-bit|[Vv]elm| +(is|expected) )|tests passed|Failed|Exception'
}

# Runs the module for Macintosh with an Intel processor on 64-bit Linux; see tests/platforms/macintosh_carrier.cpp.
try_macintosh() {
    build_for_macintosh
    cmake --preset linux-x86_64 -DVELM_MACINTOSH_BUNDLE="$PWD/build-macintosh-x86_64/velm.p" >/dev/null
    cmake --build --preset linux-x86_64 >&2
    try macintosh linux-x86_64 Conformance.Macintosh
}

# Builds and checks the modules on their platforms, then examines the files of all of them.
try_all() {
    install_missing "${building_packages[@]}"
    local platform built=()
    for platform in "${platforms[@]}"; do
        can_build "$platform" || continue
        build_for "$platform"
        built+=("$PWD/build-$platform/velm.p")
        can_run "$platform" || continue
        try "$platform" "$platform" Conformance.Agrees
    done
    if can_build macintosh; then
        try_macintosh
        built+=("$PWD/build-macintosh/velm.p")
    fi
    build release test_platforms velm_module
    VELM_MODULES=$(IFS=:; printf '%s' "${built[*]}") build/tests/platforms/test_platforms --gtest_brief=1
}
