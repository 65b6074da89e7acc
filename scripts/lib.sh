# What demo, test and bench share: the packages they need and the build. Sourced by bash, with `set -eu` on.

repository=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build_dir=${BUILD_DIR:-$repository/build}
models=(ZAVO-ENC-U300-DA ZAVO-ENC-E100-DA ZAVO-DEC-D200-DA)

# What must be there, each as "command or file pattern : Debian package". Only what is missing is
# installed: another package may have brought it.
demo_needs=(
    "g++:g++"
    "cmake:cmake"
    "ninja:ninja-build"
    "pkg-config:pkg-config"
    "/usr/include/cjson/cJSON.h:libcjson-dev"
    "/usr/include/gtest/gtest.h:libgtest-dev"
    "/usr/sbin/lighttpd:lighttpd"
    "busybox:busybox-static"
    "bwrap:bubblewrap"
    "curl:curl"
    "/usr/bin/python3:python3"
)
test_needs=(
    "${demo_needs[@]}"
    "/usr/lib/python3/dist-packages/pytest:python3-pytest"
    "/usr/lib/python3/dist-packages/xdist:python3-pytest-xdist"
    # The server alone: the package apache2 would also set up a service.
    "/usr/sbin/apache2:apache2-bin"
    "chromium:chromium"
    "chromedriver:chromium-driver"
    "strace:strace"
    "git:git"
    "make:make"
    "clang++:clang"
    "/usr/lib/llvm-*/lib/clang/*/lib/linux/libclang_rt.fuzzer-*.a:libclang-rt-14-dev"
    "clang-format:clang-format"
    "clang-tidy:clang-tidy"
    "lintian:lintian"
)
# The appliance's own architecture: its compiler, its libraries, and a processor to run it on.
armhf_needs=(
    "arm-linux-gnueabihf-g++:g++-arm-linux-gnueabihf"
    "qemu-arm-static:qemu-user-static"
    "/usr/lib/arm-linux-gnueabihf/libcjson.so:libcjson-dev:armhf"
    "/usr/lib/arm-linux-gnueabihf/libgtest.a:libgtest-dev:armhf"
    "/usr/lib/arm-linux-gnueabihf/libstdc++.so.6:libstdc++6:armhf"
)

say() {
    printf '%s\n' "$*" >&2
}

die() {
    say "$@"
    exit 1
}

as_root() {
    if [ "$(id -u)" = 0 ]; then
        "$@"
    elif command -v sudo >/dev/null; then
        sudo "$@"
    else
        die "This needs root, and there is no sudo: $*"
    fi
}

is_there() {
    case $1 in
        /*) compgen -G "$1" >/dev/null ;;
        *) command -v "$1" >/dev/null ;;
    esac
}

# Installs lighttpd without a running or enabled system-wide server: only the program is wanted. The
# masked unit keeps systemd from starting it, run level 1 keeps the old start scripts from it.
install_quietly() {
    local mask=/etc/systemd/system/lighttpd.service masked=
    if [[ " $* " == *" lighttpd "* ]]; then
        if [ ! -e "$mask" ] && [ ! -L "$mask" ]; then
            as_root mkdir -p "$(dirname "$mask")"
            as_root ln -s /dev/null "$mask"
            masked=yes
        fi
    fi
    local status=0
    as_root env DEBIAN_FRONTEND=noninteractive RUNLEVEL=1 \
        apt-get install -y -q --no-install-recommends "$@" >&2 || status=$?
    if [ -n "$masked" ]; then
        as_root rm -f "$mask"
        if [ -e /lib/systemd/system/lighttpd.service ] || [ -e /etc/init.d/lighttpd ]; then
            as_root deb-systemd-helper disable lighttpd.service >/dev/null 2>&1 || true
            as_root update-rc.d lighttpd disable >/dev/null 2>&1 || true
        fi
        if [ -d /run/systemd/system ]; then
            as_root systemctl daemon-reload || true
        fi
    fi
    return $status
}

# ensure_packages NEED...: installs what is missing of a list as above.
ensure_packages() {
    local need missing=()
    for need in "$@"; do
        is_there "${need%%:*}" || missing+=("${need#*:}")
    done
    [ ${#missing[@]} -gt 0 ] || return 0
    command -v apt-get >/dev/null || die "Please install: ${missing[*]}"
    say "Installing ${missing[*]}"
    # One list that cannot be fetched need not be the one that matters.
    as_root apt-get update -q >&2 || say "apt-get update failed in part; going on"
    install_quietly "${missing[@]}" || die "Installing packages failed"
}

# ensure_armhf: the same for what builds and runs programs of the appliance.
ensure_armhf() {
    if ! dpkg --print-foreign-architectures | grep -qx armhf; then
        as_root dpkg --add-architecture armhf
    fi
    ensure_packages "${armhf_needs[@]}"
}

# preset_build PRESET FOLDER TARGET...: configures and builds the targets, or everything without any;
# shows what was printed only when it fails. A folder that was configured by hand, with another
# generator, is configured anew, and what was set there is forgotten.
preset_build() {
    local preset=$1 folder=$2 log status=0
    shift 2
    log=$(mktemp)
    {
        cmake -S "$repository" --preset "$preset" -B "$folder" ||
            cmake -S "$repository" --preset "$preset" -B "$folder" --fresh
    } >"$log" 2>&1 &&
        cmake --build "$folder" -j "${JOBS:-2}" ${1:+--target "$@"} >"$log" 2>&1 || status=$?
    [ "$status" = 0 ] || cat "$log" >&2
    rm -f "$log"
    return "$status"
}

# build_gateways: the gateway of every model and the simulated unit, in $build_dir.
build_gateways() {
    preset_build release "$build_dir" "${models[@]/#/gateway-}" unit_tool fast_clock ||
        die "The build failed"
}
