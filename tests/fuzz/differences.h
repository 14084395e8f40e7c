// How a target ends when library and twin differ: with a text and an abort, which the fuzzer keeps the input of.
#ifndef ORVA_TESTS_FUZZ_DIFFERENCES_H
#define ORVA_TESTS_FUZZ_DIFFERENCES_H

#include <cstdio>
#include <cstdlib>
#include <string>

namespace fuzz {

[[noreturn]] inline void differ(const std::string& what) {
    std::fprintf(stderr, "library and twin differ: %s\n", what.c_str());
    std::abort();
}

inline void expect_equal(const std::string& what, long got, long wanted) {
    if (got != wanted) differ(what + " is " + std::to_string(got) + ", twin " + std::to_string(wanted));
}

inline void expect_equal(const std::string& what, const std::string& got, const std::string& wanted) {
    if (got != wanted) differ(what + " is\n" + got + "\ntwin\n" + wanted);
}

}  // namespace fuzz

#endif
