# shellcheck shell=bash disable=SC2034
# What the scripts share. Sourced in the root of the repository.

packages_tool=(build-essential cmake ninja-build libcli11-dev nlohmann-json3-dev rapidjson-dev libspdlog-dev
    libpugixml-dev libpcap-dev libtins-dev zlib1g-dev)
packages_hosts=("${packages_tool[@]}" libasio-dev libssl-dev)
packages_test=("${packages_hosts[@]}" libgtest-dev pkg-config scdoc python3-cffi luajit)
packages_sipp=(sip-tester)
packages_baresip=(baresip-core tshark)
packages_browser=(chromium)
packages_bench=(build-essential cmake ninja-build libbenchmark-dev valgrind)
packages_peers=(pkg-config libosip2-dev libre-dev libsofia-sip-ua-dev gnuplot-nox python3 tshark)

# Installs the named packages that are missing. Prints the command to type if it is not allowed to install them.
need_packages() {
    local package missing=()
    for package; do
        if [[ $(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null) != installed ]]; then
            missing+=("$package")
        fi
    done
    ((${#missing[@]})) || return 0

    local as_root=() install='apt-get update && apt-get install -y --no-install-recommends'
    if ((EUID != 0)); then
        if ! command -v sudo >/dev/null; then
            echo "su -c '$install ${missing[*]}'"
            return 1
        elif ! sudo -n true 2>/dev/null; then
            echo "sudo sh -c '$install ${missing[*]}'"
            return 1
        fi
        as_root=(sudo -n)
    fi
    echo "installing ${missing[*]}"
    visibly "${as_root[@]}" apt-get update
    visibly "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends \
        "${missing[@]}"
}

# Runs a command and shows its output only if it fails.
quietly() {
    local output
    if ! output=$("$@" 2>&1); then
        printf '%s\n' "$output"
        echo "failed: $*"
        return 1
    fi
}

# Runs a command that takes a while. On a terminal its progress is shown; otherwise it is quiet.
visibly() {
    if [[ -t 1 ]]; then
        "$@"
    else
        quietly "$@"
    fi
}

# Configures and builds one preset, or only the named targets of it. Definitions (-D...) go to CMake.
build_preset() {
    local preset=$1 argument definitions=() targets=()
    shift
    for argument; do
        case $argument in
        -D*) definitions+=("$argument") ;;
        *) targets+=("$argument") ;;
        esac
    done
    if ((${#targets[@]})); then
        targets=(--target "${targets[@]}")
    fi
    echo "building $preset"
    quietly cmake --preset "$preset" "${definitions[@]}"
    visibly cmake --build --preset "$preset" --parallel "$(nproc)" "${targets[@]}"
}

# Builds one preset and runs its tests, except for those that need SIPp. Names only the tests that fail.
test_preset() {
    local output result=0
    build_preset "$1"
    echo "testing $1"
    output=$(ctest --preset "$1" --label-exclude e2e --parallel "$(nproc)" 2>&1) || result=$?
    if ((result)); then
        grep -vE '^ +Start +[0-9]+: | +Passed +[0-9.]+ sec' <<<"$output" || true
        return "$result"
    fi
    grep -E 'tests passed|Total Test time' <<<"$output"
}
