#!/bin/sh
# Builds the library in every way that needs a folder of a vendor's, with folders made here: plain make with each choice
# of accelerator, and CMake with an SDK. Headers of another chip generation must not compile. In a build without the
# accelerator nothing of the vendor's may be compiled, and outside two folders nothing of it may be written.
# usage: check_builds.sh SOURCE STANDIN_LIBRARY COMPILER
set -eu
source=$1
standin=$2
compiler=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() {
    echo "$*" >&2
    exit 1
}

cp -r "$source/tests/fakes/sdk" "$work/include"
mkdir "$work/lib"
cp "$standin" "$work/lib/libive.so"
cp "$standin" "$work/lib/libmpi.so"

six="ORVA_FireDetection_Init ORVA_FireDetection_SetFrame ORVA_FireDetection_SetSensitiveGrade"
six="$six ORVA_FireDetection_Start ORVA_FireDetection_Stop ORVA_FireDetection_UnInit"

# One folder for all: a choice that was built before must not be left over from between.
echo "== plain make"
one=$work/one
# usage: vendor_names NM_OPTIONS LIBRARY; how many vendor functions it leaves open
vendor_names() {
    # shellcheck disable=SC2086  # no option or one
    nm $1 "$2" 2>/dev/null | awk '$1 == "U" { print $2 }' | grep '^HI_MPI_' | sort -u | wc -l
}
for choice in OFF STANDIN SDK OFF; do
    make -s -f "$source/sources.mk" -j2 CXX="$compiler" ORVA_IVE=$choice ORVA_SDK_INCLUDE="$work/include" \
        CXXFLAGS="-O1 -Werror" OUT="$one" >/dev/null
    exported=$(nm -D --defined-only "$one/liborva_fd.so" | awk '{print $3}' | sort | tr '\n' ' ')
    [ "$exported" = "$six " ] || fail "$choice exports: $exported"
    readelf -d "$one/liborva_fd.so" | grep -q 'SONAME.*\[liborva_fd.so.1\]' || fail "$choice: no SONAME"
    wanted=11
    if [ $choice = OFF ]; then wanted=0; fi
    for library in a so; do
        vendor=$(vendor_names "$([ $library = a ] || echo -D)" "$one/liborva_fd.$library")
        [ "$vendor" = $wanted ] || fail "$choice: liborva_fd.$library refers to $vendor vendor functions, not to $wanted"
    done
    if [ $choice = SDK ]; then cp "$one/liborva_fd.a" "$work/accelerated.a"; fi
done

echo "== plain make with other settings"
# usage: compiles YES_OR_NO WHAT VARIABLE=VALUE...; whether make finds an object to compile with these settings
compiles() {
    expected=$1
    what=$2
    shift 2
    make -f "$source/sources.mk" CXX="$compiler" ORVA_IVE=SDK ORVA_SDK_INCLUDE="$work/include" CXXFLAGS=-O0 \
        OUT="$work/set" "$@" "$work/set/objects/backend/hisi_ive_accel.o" >"$work/set.log" || fail "make with $what failed"
    found=no
    if grep -q -- ' -c ' "$work/set.log"; then found=yes; fi
    [ $found = "$expected" ] || fail "make with $what: compiled $found, not $expected"
}
mkdir "$work/bin" "$work/include2"
cp "$work/include/"* "$work/include2"
printf '#!/bin/sh\nexec "%s" "$@"\n' "$compiler" >"$work/bin/other-c++"
chmod +x "$work/bin/other-c++"
compiles yes "an empty folder"
compiles no "the same settings"
compiles yes "other flags" CXXFLAGS=-O1
compiles yes "the first flags again"
compiles yes "flags of a processor" CPU_FLAGS=-g0
compiles yes "a definition in quotes" CPU_FLAGS="-DNAME='\"a b\"'"
compiles no "the same in quotes" CPU_FLAGS="-DNAME='\"a b\"'"
compiles yes "another vendor folder" ORVA_SDK_INCLUDE="$work/include2"
compiles yes "another compiler" ORVA_SDK_INCLUDE="$work/include2" CXX=c++ CROSS_COMPILE="$work/bin/other-"
compiles no "the same compiler" ORVA_SDK_INCLUDE="$work/include2" CXX=c++ CROSS_COMPILE="$work/bin/other-"
for choice in NONE SDK; do
    if make -s -f "$source/sources.mk" ORVA_IVE=$choice OUT="$work/none" 2>/dev/null; then fail "make took $choice"; fi
done

echo "== headers of other generations"
# usage: must_not_compile WHAT SED_EXPRESSION EXPECTED_MESSAGE
must_not_compile() {
    rm -rf "$work/other"
    mkdir "$work/other"
    sed "$2" "$source/backend/hisi_sdk_declarations.h" >"$work/other/mpi_ive.h"
    : >"$work/other/mpi_sys.h"
    if make -s -f "$source/sources.mk" CXX="$compiler" ORVA_IVE=SDK ORVA_SDK_INCLUDE="$work/other" OUT="$work/wrong" \
        "$work/wrong/objects/backend/hisi_ive_accel.o" >"$work/other.log" 2>&1; then
        fail "$1 was taken"
    fi
    grep -q "$3" "$work/other.log" || fail "$1 was refused, but not for that"
}
must_not_compile "a labelling control without its mode" 's/ *IVE_CCL_MODE_E enMode;//' 'IVE_CCL_CTRL_S.*enMode'
must_not_compile "a labelling control with its fields swapped" \
    's/HI_U16 u16InitAreaThr;/HI_U16 kept;/; s/HI_U16 u16Step;.*/HI_U16 u16Step; HI_U16 u16InitAreaThr;/' 'older chip'
must_not_compile "an image with 64-bit addresses" 's/HI_U32 u32PhyAddr\[3\]/HI_U64 u32PhyAddr[3]/' 'size of an image'
must_not_compile "an image with 32-bit strides" 's/HI_U16 u16Stride\[3\]/HI_U32 u16Stride[3]/' 'strides and size of an image'
must_not_compile "packed regions" 's/} IVE_REGION_S;/} __attribute__((packed)) IVE_REGION_S;/' 'a region of the labelling'
must_not_compile "a packed labelling control" 's/} IVE_CCL_CTRL_S;/} __attribute__((packed)) IVE_CCL_CTRL_S;/' 'older chip'
must_not_compile "another number for truth" 's/HI_TRUE = 1/HI_TRUE = 2/' 'values of flags'
must_not_compile "another number for success" 's/HI_SUCCESS 0/HI_SUCCESS 1/' 'values of success and failure'
must_not_compile "another number for labelling with 8 neighbours" 's/IVE_CCL_MODE_8C = 1/IVE_CCL_MODE_8C = 2/' 'modes'

echo "== static archives"
# The vendor's archives in what matters to a linker: the engine's calls the memory functions.
mkdir "$work/archives"
for part in ive mpi; do
    "$compiler" -x c -std=c99 -Wall -Wextra -Wpedantic -Werror -I"$source" -c "$source/tests/fakes/archive_$part.c" \
        -o "$work/archives/$part.o"
    ar rcs "$work/archives/lib$part.a" "$work/archives/$part.o"
done
echo 'int main() { return ORVA_FireDetection_Init(); }' >"$work/host.cpp"
# usage: links ARCHIVE...
links() {
    "$compiler" -include "$source/include/ORVA_FireDetection.h" "$work/host.cpp" "$@" -pthread -o "$work/host" \
        >"$work/link.log" 2>&1
}
links "$work/accelerated.a" "$work/archives/libive.a" "$work/archives/libmpi.a" || {
    cat "$work/link.log"
    fail "the static archives do not link in their order"
}
if links "$work/archives/libive.a" "$work/archives/libmpi.a" "$work/accelerated.a"; then
    fail "the vendor's archives may come first"
fi
if links "$work/accelerated.a" "$work/archives/libmpi.a"; then fail "the engine's archive may be left out"; fi
if links "$work/accelerated.a" "$work/archives/libive.a"; then fail "the memory's archive may be left out"; fi

echo "== CMake with an SDK"
configure() {
    cmake -S "$source" -B "$work/cmake" -DCMAKE_CXX_COMPILER="$compiler" -DORVA_WERROR=ON "$@" >"$work/cmake.log" 2>&1
}
must_not_configure() {
    if configure "$@"; then fail "CMake took $*"; fi
}
must_not_configure -DORVA_IVE=SDK -DORVA_SDK_INCLUDE="$work" -DORVA_SDK_LIB="$work/lib"
must_not_configure -DORVA_IVE=SDK -DORVA_SDK_INCLUDE="$work/include" -DORVA_SDK_LIB="$work"
must_not_configure -DORVA_IVE=NONE
configure -DORVA_IVE=SDK -DORVA_SDK_INCLUDE="$work/include" -DORVA_SDK_LIB="$work/lib" || {
    cat "$work/cmake.log"
    fail "CMake refused the SDK"
}
cmake --build "$work/cmake" --target orva_fd orva_fd_static -j2 >"$work/build.log" 2>&1 || {
    cat "$work/build.log"
    fail "the build with an SDK failed"
}

echo "== vendor words"
# Strings are log text and may name vendor functions; identifiers may not. ORVA_IVE... is ours.
sources=$(cd "$source" && find . -path ./backend -prune -o -path ./tests -prune -o -name '.*' -name '.?*' -prune -o \
    '(' -name '*.[ch]' -o -name '*.cpp' ')' -print)
for file in $sources; do
    if sed 's/"[^"]*"//g; s,//.*,,' "$source/$file" | grep -nE '\b(HI|IVE)_[A-Z]'; then fail "vendor words in $file"; fi
done
for file in $(cd "$source" && make -s -f sources.mk print-sources ORVA_IVE=OFF); do
    if "$compiler" -std=c++11 -E -P -I"$source" -I"$source/include" "$source/$file" | sed 's/"[^"]*"//g' |
        grep -E '\b(HI|IVE)_[A-Z]'; then
        fail "$file compiles vendor words without an accelerator"
    fi
done
echo "== words that GCC 4.9 does not know"
"$source/scripts/check-cxx11"
mkdir "$work/words"
while read -r line; do
    echo "$line" >"$work/words/sample.cpp"
    if "$source/scripts/check-cxx11" "$work/words" >/dev/null; then fail "not refused: $line"; fi
done <<'LINES'
static_assert(std::is_trivially_copyable<T>::value, "");
void* p = std::align(16, n, q, space);
#include <optional>
auto p = std::make_unique<int>(1);
std::string_view text;
if constexpr (sizeof(T) == 4) return;
[[nodiscard]] int f();
int million = 1'000'000;
int mask = 0b1010;
namespace a::b {}
#if __has_include(<thread>)
out << std::hexfloat << x;
std::wstring_convert<T> c;
LINES
cat >"$work/words/sample.cpp" <<'LINES'
// std::make_unique in a comment, and "if constexpr" in a text, are nobody's business.
const char text[] = "std::string_view";
std::size_t size = sizeof(text);
LINES
"$source/scripts/check-cxx11" "$work/words" >/dev/null || fail "comments and texts are refused"
echo "all builds are as they should be"
