# shellcheck shell=bash
# What the tests of this directory share. Sourced by one that has set $work, its scratch directory.

# Runs a command, and ends the test with what that printed when it fails.
step() { # text, command...
    local text=$1
    shift
    if ! "$@" >"$work/log" 2>&1; then
        cat "$work/log"
        echo "failed: $text"
        exit 1
    fi
}
