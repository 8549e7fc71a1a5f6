# SPDX-License-Identifier: MIT
# What ./demo, ./test, ./check-all and bench/run have in common. To be sourced in the root of the tree.
mkdir -p build/log

step() { printf '\n== %s\n' "$*"; }

# Runs a command into build/log/NAME.log, which is shown only when the command fails.
quietly() {
    local log=build/log/$1.log
    shift
    "$@" >"$log" 2>&1 </dev/null || {
        local status=$?
        tail -n 100 "$log" >&2
        echo "failed ($*); the whole log is $log" >&2
        return $status
    }
}

install_packages() { tools/install-packages "$@"; }

configure() {
    local preset=$1
    shift
    quietly "configure-$preset" cmake --preset "$preset" "$@"
}

# build PRESET [TARGET]...; prints what the compiler says, nothing when it is content.
build() {
    local preset=$1
    shift
    cmake --build --preset "$preset" ${1:+--target "$@"} -- --quiet
}

# Runs tests with the placement of memory fixed where that is allowed: some kernels spread it more widely than
# the sanitizers of these compilers can follow.
run_tests() {
    local fixed=()
    if setarch "$(uname -m)" -R true 2>/dev/null; then fixed=(setarch "$(uname -m)" -R); fi
    "${fixed[@]}" ctest --preset "$@"
}
