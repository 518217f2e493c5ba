# shellcheck shell=bash
# Shared by the tests of this directory, which set $work to their scratch directory.

# Runs a command. If it fails, prints its output and ends the test.
step() { # text, command...
    local text=$1
    shift
    if ! "$@" >"$work/log" 2>&1; then
        cat "$work/log"
        echo "failed: $text"
        exit 1
    fi
}
