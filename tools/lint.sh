# shellcheck shell=bash
# Checking and formatting the sources. Part of ./run, whose `say` and `install_missing` it uses.

lint_packages=(git clang clang-format clang-tidy shellcheck flake8 codespell)

# The tracked files that match and exist, into `files`.
tracked() { # PATTERN ...
    mapfile -t files < <(git ls-files --deduplicate -- "$@" | while read -r file; do
        [ ! -f "$file" ] || printf '%s\n' "$file"
    done)
    [ ${#files[@]} -gt 0 ] || { say "run: git knows no files like: $*"; return 1; }
}

format() {
    install_missing git clang-format python3
    local files
    tracked '*.c' '*.cpp' '*.h'
    clang-format -i "${files[@]}"
    python3 tools/dialect.py --fix "${files[@]}"
    clang-format -i "${files[@]}"
}

# Runs a linter, and notes its name in `failed` if it finds anything.
linter() { # NAME COMMAND ...
    say "Linting: $1"
    "${@:2}" >&2 || failed+=("$1")
}

lint() { # [--quick|--deep]
    install_missing
    install_missing "${lint_packages[@]}"
    local files failed=()
    tracked '*.c' '*.cpp' '*.h'
    linter clang-format clang-format --dry-run -Werror "${files[@]}"
    linter dialect python3 tools/dialect.py "${files[@]}"
    tracked run .ci/run tests/platforms/wine '*.sh' '*.sbatch'
    linter shellcheck shellcheck --external-sources "${files[@]}"
    tracked '*.py'
    linter flake8 flake8 "${files[@]}"
    tracked '*.c' '*.cpp' '*.h' '*.md' '*.txt' '*.py' '*.sh' '*.cmake' 'docs/*.json' 'examples/*.json' run .ci/run
    linter codespell codespell "${files[@]}"
    if [ "${1:-}" != --quick ]; then
        cmake --preset lint >/dev/null
        linter clang-tidy nice python3 tools/tidy.py build-lint "$@"
    fi
    [ ${#failed[@]} -eq 0 ] || { say "Findings of: ${failed[*]}"; return 1; }
    say "No findings"
}
