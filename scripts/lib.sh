# Shared by the scripts of this folder: where things are, what must be installed, where builds go. To be sourced by bash.

# The folder that this file's folder lies in, whatever the caller's folder is.
ORVA_ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

# Debian 12 packages that the library and the programs are built with. The programs bring along what they need to run.
program_packages=(
    g++ make cmake pkg-config
    libavdevice-dev libavformat-dev libavcodec-dev libavfilter-dev libavutil-dev libswscale-dev
    libcli11-dev nlohmann-json3-dev libmosquitto-dev scdoc
)

# What the tests need besides.
test_packages=(libgtest-dev libbenchmark-dev clang libclang-rt-14-dev clang-format valgrind python3 python3-jsonschema binutils git doxygen systemd chromium parallel
    mosquitto mosquitto-clients openssl jq curl netcat-openbsd socat)

# What the GStreamer plug-in is built with, and the elements that its tests' pipelines use.
gstreamer_packages=(
    libgstreamer1.0-dev libgstreamer-plugins-base1.0-dev libgstrtspserver-1.0-dev gstreamer1.0-tools
    gstreamer1.0-plugins-base gstreamer1.0-plugins-good gstreamer1.0-plugins-ugly gstreamer1.0-libav
)

# What looks at the sources without running them.
static_packages=(clang-tidy cppcheck)

# What Debian packages are made and checked with.
packaging_packages=(dpkg-dev file lintian mmdebstrap)

say() { printf '%s: %s\n' "$(basename "$0")" "$*"; }

fail() {
    printf '%s: %s\n' "$(basename "$0")" "$*" >&2
    exit 1
}

# as_root COMMAND...: as it is for root, through sudo for everybody else.
as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    elif command -v sudo >/dev/null 2>&1; then
        sudo "$@"
    else
        fail "'$*' needs root; run this as root or install sudo"
    fi
}

is_installed() { [ "$(dpkg-query -W -f='${db:Status-Status}' "$1" 2>/dev/null)" = installed ]; }

# install_missing PACKAGE...: installs those that are not there, and says which.
install_missing() {
    local missing=() package
    for package in "$@"; do
        is_installed "$package" || missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    command -v apt-get >/dev/null 2>&1 ||
        fail "these packages are missing, and this is no Debian system that could install them: ${missing[*]}"
    say "installing ${missing[*]}"
    local command=(env DEBIAN_FRONTEND=noninteractive apt-get)
    as_root "${command[@]}" update -qq || fail "apt-get update failed"
    as_root "${command[@]}" install -y -qq --no-install-recommends "${missing[@]}" >/dev/null ||
        fail "apt-get install failed"
}

# build_folder NAME: every script builds in folders of its own, so that none disturbs another's settings.
build_folder() { printf '%s/build/%s\n' "$ORVA_ROOT" "$1"; }

# quietly LOG COMMAND...: the command's output goes to a file, and onto the screen only if the command fails.
quietly() {
    local log=$1
    shift
    mkdir -p "$(dirname "$log")"
    if ! "$@" >"$log" 2>&1; then
        tail -n 40 "$log" >&2
        fail "failed: $* (the whole output is in $log)"
    fi
}
