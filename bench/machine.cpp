#include "bench/machine.h"

#include <elf.h>
#include <gnu/libc-version.h>
#include <link.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <ctime>
#include <fstream>
#include <iterator>
#include <vector>

#include "bench/measure.h"

namespace bench {

namespace {

template <typename record>
bool read_record(const std::vector<char>& bytes, std::size_t at, record* result) {
    if (at > bytes.size() || bytes.size() - at < sizeof(record)) return false;
    std::memcpy(result, bytes.data() + at, sizeof(record));
    return true;
}

std::string text_at(const std::vector<char>& bytes, std::size_t at) {
    std::string text;
    for (; at < bytes.size() && bytes[at] != '\0'; ++at) text += bytes[at];
    return text;
}

// Texts that lie one after the other, joined.
std::string texts_in(const std::vector<char>& bytes, std::size_t at, std::size_t size) {
    std::string all;
    const std::size_t end = std::min(bytes.size(), at + size);
    while (at < end) {
        const std::string one = text_at(bytes, at);
        if (!one.empty()) all += (all.empty() ? "" : " and ") + one;
        at += one.size() + 1;
    }
    return all;
}

}  // namespace

std::string processor_name() {
    std::ifstream file("/proc/cpuinfo");
    std::string line;
    std::string fallback = "unknown processor";
    while (std::getline(file, line)) {
        const std::size_t colon = line.find(": ");
        if (colon == std::string::npos) continue;
        if (line.compare(0, 10, "model name") == 0) return line.substr(colon + 2);
        if (line.compare(0, 8, "CPU part") == 0) fallback = "ARM part " + line.substr(colon + 2);
        if (line.compare(0, 8, "Hardware") == 0) fallback = line.substr(colon + 2);
    }
    return fallback;
}

int processor_count() {
    return static_cast<int>(sysconf(_SC_NPROCESSORS_ONLN));
}

std::string operating_system() {
    utsname name;
    uname(&name);
    return std::string(name.sysname) + " " + name.machine + " with glibc " + gnu_get_libc_version();
}

std::string today() {
    const std::time_t now = std::time(nullptr);
    char text[16];
    std::strftime(text, sizeof(text), "%Y-%m-%d", std::gmtime(&now));
    return text;
}

std::string build_compiler() {
#ifdef __clang__
    return "clang " __clang_version__;
#else
    return "gcc " __VERSION__;
#endif
}

std::string build_flags() {
    return ORVA_BENCH_FLAGS;
}

bool build_may_be_timed(std::string* reason) {
#if !defined(__OPTIMIZE__)
    *reason = "this build is not optimised";
    return false;
#elif defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    *reason = "this build has a sanitizer in it";
    return false;
#else
    (void)reason;
    return true;
#endif
}

double cycles_per_ns() {
    const int steps = 100000;
    double best = 0;
    for (int attempt = 0; attempt < 100; ++attempt) {
        std::uint64_t value = static_cast<std::uint64_t>(attempt);
        const std::int64_t before = now_ns();
        for (int i = 0; i < steps; ++i) {
            // Ten additions that the compiler can neither join nor drop.
#define ORVA_ADD \
    value += 3;  \
    __asm__ volatile("" : "+r"(value));
            ORVA_ADD ORVA_ADD ORVA_ADD ORVA_ADD ORVA_ADD ORVA_ADD ORVA_ADD ORVA_ADD ORVA_ADD ORVA_ADD
#undef ORVA_ADD
        }
        const std::int64_t elapsed = std::max<std::int64_t>(1, now_ns() - before);
        best = std::max(best, 10.0 * steps / static_cast<double>(elapsed));
    }
    return best;
}

library_file inspect_library(const std::string& path) {
    library_file result = {0, 0, std::string()};
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    result.file_bytes = bytes.size();
    ElfW(Ehdr) header;
    if (!read_record(bytes, 0, &header) || std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0) return result;
    std::vector<ElfW(Shdr)> sections(header.e_shnum);
    for (std::size_t i = 0; i < sections.size(); ++i) {
        if (!read_record(bytes, header.e_shoff + i * header.e_shentsize, &sections[i])) return result;
    }
    if (header.e_shstrndx >= sections.size()) return result;
    for (const ElfW(Shdr) & section : sections) {
        if ((section.sh_flags & SHF_EXECINSTR) != 0) result.code_bytes += section.sh_size;
        if (text_at(bytes, sections[header.e_shstrndx].sh_offset + section.sh_name) == ".comment")
            result.compiler = texts_in(bytes, section.sh_offset, section.sh_size);
    }
    return result;
}

}  // namespace bench
