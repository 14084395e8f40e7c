#!/usr/bin/env bash
# check_installed_tree.sh BUILD SOURCE: installs the library into one folder, moves the tree to another, and builds hosts in
# C and in C++ on it, with CMake and with pkg-config, each on the shared and on the static library.
set -euo pipefail
build=$1
source=$2
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
    echo "check_installed_tree: $*" >&2
    exit 1
}

# expect_answer PROGRAM...: runs a host on the moved tree; the program itself holds the path of the library, or needs none.
expect_answer() { [ "$("$@")" = "a frame was answered" ] || fail "$* was not answered"; }

install_and_move() {
    local component
    for component in runtime development; do
        DESTDIR= cmake --install "$build" --prefix "$work/first" --component $component > /dev/null
    done
    mkdir "$work/second place"
    mv "$work/first" "$work/second place/tree"
    tree="$work/second place/tree"
    library=$(dirname "$(find "$tree" -name liborva_fd.a)")
}

# The real name, the SONAME and the link name, in a chain; no run path; no absolute path in any text.
check_names() {
    local version major soname
    version=$(PKG_CONFIG_PATH="$library/pkgconfig" pkg-config --modversion orva_fd)
    major=${version%%.*}
    [ -f "$library/liborva_fd.so.$version" ] && [ ! -L "$library/liborva_fd.so.$version" ] || fail "no real file"
    [ "$(readlink "$library/liborva_fd.so.$major")" = "liborva_fd.so.$version" ] || fail "the SONAME's link is wrong"
    [ "$(readlink "$library/liborva_fd.so")" = "liborva_fd.so.$major" ] || fail "the link name is wrong"
    soname=$(readelf -d "$library/liborva_fd.so" | sed -n 's/.*(SONAME).*\[\(.*\)\]/\1/p')
    [ "$soname" = "liborva_fd.so.$major" ] || fail "the SONAME is '$soname'"
    readelf -d "$library/liborva_fd.so" | grep -qE 'R(UN)?PATH' && fail "the library holds a run path"
    grep -rIlF -e "$work" -e "$build" -e "$source" "$tree" && fail "the files above hold a path of the machine that built them"
    return 0
}

# accepts VERSION: whether the CMake package serves a project that asks for this version.
accepts() {
    printf 'set(PACKAGE_FIND_VERSION %s)\nset(PACKAGE_FIND_VERSION_MAJOR %s)\ninclude("%s")\n%s\n' "$1" "${1%%.*}" \
        "$library/cmake/orva_fd/orva_fd-config-version.cmake" \
        'if(NOT PACKAGE_VERSION_COMPATIBLE OR PACKAGE_VERSION_UNSUITABLE)
            message(FATAL_ERROR "refused")
        endif()' > "$work/accepts.cmake"
    cmake -DCMAKE_SIZEOF_VOID_P= -P "$work/accepts.cmake" 2> "$work/log"
}

# The same major number and no newer minor one, as with the SONAME.
check_versions() {
    accepts 1.0 || fail "version 1.0 is refused"
    accepts 1.999 && fail "a version that is newer than this one is accepted"
    accepts 2.0 && fail "the next major version is accepted"
    accepts 0.9 && fail "the last major version is accepted"
    return 0
}

build_with_cmake() {
    local consumer=$1
    cmake -S "$here/$consumer" -B "$work/$consumer" -DCMAKE_PREFIX_PATH="$tree" > "$work/log" || { cat "$work/log"; exit 1; }
    cmake --build "$work/$consumer" > "$work/log" || { cat "$work/log"; exit 1; }
    expect_answer "$work/$consumer/host_on_orva_fd"
    expect_answer "$work/$consumer/host_on_orva_fd_static"
}

# build_with_pkg_config COMPILER HOST: pkg-config quotes blanks for the shell, hence eval.
build_with_pkg_config() {
    local compiler=$1 host=$2
    export PKG_CONFIG_PATH="$library/pkgconfig"
    eval "$compiler '$here/$host' -o '$work/shared' $(pkg-config --cflags --libs orva_fd)"
    eval "$compiler -static '$here/$host' -o '$work/static' $(pkg-config --static --cflags --libs orva_fd)"
    expect_answer env LD_LIBRARY_PATH="$library" "$work/shared"
    expect_answer "$work/static"
}

install_and_move
check_names
check_versions
build_with_cmake consumer_c
build_with_cmake consumer_cpp
build_with_pkg_config "${CC:-cc}" consumer_c/host.c
build_with_pkg_config "${CXX:-c++} -std=c++11" consumer_cpp/host.cpp
echo "hosts in C and C++ were built on the moved tree with CMake and pkg-config"
