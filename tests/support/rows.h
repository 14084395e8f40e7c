// Tables of named rows. A row's name is a sentence; a failure prints it, and with underscores for everything but
// letters and digits it is the test's name, which runs the row alone.
#ifndef ORVA_TESTS_SUPPORT_ROWS_H
#define ORVA_TESTS_SUPPORT_ROWS_H

#include <gtest/gtest.h>

#include <cctype>
#include <ostream>
#include <string>

namespace support {

// Rows derive from this and are written {{"a row reads as a sentence"}, ...}.
struct named_row {
    const char* name;
};

inline std::ostream& operator<<(std::ostream& out, const named_row& row) {
    return out << '"' << row.name << '"';
}

struct row_name {
    template <class Row>
    std::string operator()(const testing::TestParamInfo<Row>& info) const {
        std::string name = info.param.name;
        for (char& c : name) {
            if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
        }
        return name;
    }
};

}  // namespace support

#endif
