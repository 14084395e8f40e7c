#!/usr/bin/env bash
# check_hardening.sh SOURCES COMPILER: packaging/hardening-check passes a program and a library with the flags of
# cmake/shipping.cmake, and names what is missing in others that lack one of them.
set -euo pipefail
sources=$1
compiler=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
    echo "check_hardening: $*" >&2
    exit 1
}

cat > "$work/host.c" << 'END'
#include <stdio.h>
#include <string.h>
int main(int count, char** words) {
    char text[40];
    memset(text, 0, sizeof text);
    snprintf(text, (size_t)count * 8, "%s", words[0]);
    printf(text[0] == '/' ? "%s\n" : "./%s\n", text);
    return 0;
}
END
hardened=(-O2 -s -fPIE -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2 -fstack-protector-strong -pie
    -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack -Wl,--disable-new-dtags)

# build NAME FLAG...: a program with all flags and these after them.
build() {
    local name=$1
    shift
    "$compiler" "${hardened[@]}" "$@" "$work/host.c" -o "$work/$name"
}

# refused NAME WHY: by the check, and for that reason alone.
refused() {
    local said
    if said=$("$sources/packaging/hardening-check" "$work/$1" 2>&1); then fail "$1 passes"; fi
    [ "$said" = "hardening-check: $work/$1: $2" ] || fail "$1: expected '$2', it says: $said"
}

build whole
build library.so -fPIC -shared
"$sources/packaging/hardening-check" "$work/whole" "$work/library.so" || fail "what is hardened is refused"

build lazy -Wl,-z,lazy
refused lazy "symbols are bound lazily"
build writable -Wl,-z,norelro
refused writable "no read-only relocations"
build executable -Wl,-z,execstack
refused executable "the stack is executable"
build unprotected -fno-stack-protector
refused unprotected "no stack protector"
build unchecked -U_FORTIFY_SOURCE
refused unchecked "no checked calls of the C library"
build fixed -fno-pie -no-pie
refused fixed "no position-independent program"
build searching -Wl,-rpath,/nowhere
refused searching "holds a run path"
"$compiler" "${hardened[@]/#-s/-g}" "$work/host.c" -o "$work/named"
refused named "not stripped"
echo "8 programs that lack one thing each are refused"
