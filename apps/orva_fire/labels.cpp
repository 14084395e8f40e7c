#include "apps/orva_fire/labels.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <locale>
#include <map>
#include <sstream>

#include "apps/orva_fire/error.h"

namespace orva_fire {
namespace {

namespace fs = std::filesystem;

const char* const k_columns[] = {"file", "from", "to", "box", "set", "group", "note"};
const char* const k_needed[] = {"file", "from", "to"};
const double k_longest_time = 1e7;  // seconds; four months are no recording

// One line of the file, and where that is, for messages.
struct table_row {
    int line = 0;
    std::vector<std::string> values;
};

class reader {
public:
    reader(const std::string& text, const std::string& path) : m_text(text), m_path(path) {}

    std::vector<labelled_clip> read();

private:
    [[noreturn]] void complain(int line, const std::string& what) const {
        throw usage_error("'" + m_path + "', line " + std::to_string(line) + ": " + what);
    }

    bool next_row(table_row& row);
    std::string next_value(int line);
    void skip_passed_over();
    void read_header(const table_row& row);

    std::string value(const table_row& row, const char* column) const;
    double number(const table_row& row, const char* column, const std::string& text, double most) const;
    labelled_fire::edges edges(const table_row& row, const std::string& text) const;
    bool is_tuning(const table_row& row) const;
    std::optional<labelled_fire> fire(const table_row& row) const;
    void add(const table_row& row);

    const std::string& m_text;
    const std::string m_path;
    size_t m_at = 0;
    int m_line = 1;
    std::map<std::string, size_t> m_columns;
    std::vector<labelled_clip> m_clips;
    std::map<std::string, size_t> m_known;
};

void reader::skip_passed_over() {
    while (m_at < m_text.size()) {
        const size_t end = m_text.find('\n', m_at);
        const bool blank = m_text.find_first_not_of(" \t\r", m_at) == end;
        if (!blank && m_text[m_at] != '#') return;
        m_at = end == std::string::npos ? m_text.size() : end + 1;
        ++m_line;
    }
}

// Leaves m_at at the comma, the line end or the end behind the value.
std::string reader::next_value(int line) {
    std::string value;
    if (m_at >= m_text.size() || m_text[m_at] != '"') {
        const size_t end = std::min(m_text.find_first_of(",\n", m_at), m_text.size());
        value = m_text.substr(m_at, end - m_at);
        m_at = end;
        if (value.find('"') != std::string::npos) complain(line, "a quote in a value that does not begin with one");
        while (!value.empty() && (value.back() == '\r' || value.back() == ' ')) value.pop_back();
        return value.substr(std::min(value.find_first_not_of(' '), value.size()));
    }
    for (++m_at; m_at < m_text.size(); ++m_at) {
        if (m_text[m_at] == '\n') ++m_line;
        if (m_text[m_at] == '"' && (++m_at >= m_text.size() || m_text[m_at] != '"')) {
            if (m_text.compare(m_at, 2, "\r\n") == 0) ++m_at;
            if (m_at < m_text.size() && m_text[m_at] != ',' && m_text[m_at] != '\n') {
                complain(line, "something behind a closing quote");
            }
            return value;
        }
        value += m_text[m_at];
    }
    complain(line, "a quote that is not closed");
}

bool reader::next_row(table_row& row) {
    skip_passed_over();
    if (m_at >= m_text.size()) return false;
    row = {m_line, {}};
    while (true) {
        row.values.push_back(next_value(row.line));
        if (m_at >= m_text.size() || m_text[m_at++] == '\n') break;
    }
    ++m_line;
    return true;
}

void reader::read_header(const table_row& row) {
    for (const std::string& name : row.values) {
        const auto same = [&](const char* column) { return name == column; };
        if (std::none_of(std::begin(k_columns), std::end(k_columns), same)) {
            complain(row.line, "unknown column '" + name + "'; known are file, from, to, box, set, group and note");
        }
        if (!m_columns.emplace(name, m_columns.size()).second) complain(row.line, "column '" + name + "' stands twice");
    }
    for (const char* column : k_needed) {
        if (m_columns.count(column) == 0) complain(row.line, std::string("column '") + column + "' is missing");
    }
}

std::string reader::value(const table_row& row, const char* column) const {
    const auto found = m_columns.find(column);
    return found == m_columns.end() ? "" : row.values[found->second];
}

// Reads "12.5" with a point, whatever the process's locale says.
double reader::number(const table_row& row, const char* column, const std::string& text, double most) const {
    std::istringstream in(text);
    in.imbue(std::locale::classic());
    double read = 0;
    const bool plain = !text.empty() && text.find_first_not_of("0123456789.") == std::string::npos;
    if (!plain || !(in >> read) || in.peek() != std::istringstream::traits_type::eof() || read > most) {
        complain(row.line, std::string("column '") + column + "': '" + text + "' is no number from 0 to " +
                               std::to_string(static_cast<int>(most)));
    }
    return read;
}

labelled_fire::edges reader::edges(const table_row& row, const std::string& text) const {
    std::istringstream in(text);
    std::vector<double> numbers;
    std::string part;
    while (in >> part) numbers.push_back(number(row, "box", part, 1));
    if (numbers.size() != 4) complain(row.line, "column 'box': expected left, top, right and lower edge from 0 to 1");
    const labelled_fire::edges read{numbers[0], numbers[1], numbers[2], numbers[3]};
    if (read.left >= read.right || read.top >= read.bottom) {
        complain(row.line, "column 'box': '" + text + "' has its right edge left of the left one, or is upside down");
    }
    return read;
}

bool reader::is_tuning(const table_row& row) const {
    const std::string set = value(row, "set");
    if (set != "" && set != "test" && set != "tune") {
        complain(row.line, "column 'set': '" + set + "' is neither 'tune' nor 'test'");
    }
    return set == "tune";
}

std::optional<labelled_fire> reader::fire(const table_row& row) const {
    const std::string from = value(row, "from"), to = value(row, "to"), where = value(row, "box");
    if (from.empty()) {
        if (!to.empty()) complain(row.line, "column 'from' is empty though 'to' is not");
        if (!where.empty()) complain(row.line, "column 'box' is given for a recording without fire");
        return std::nullopt;
    }
    labelled_fire read;
    read.from = number(row, "from", from, k_longest_time);
    if (!to.empty()) read.to = number(row, "to", to, k_longest_time);
    if (read.to && *read.to <= read.from)
        complain(row.line, "the fire ends at " + to + ", before it begins at " + from);
    if (!where.empty()) read.where = edges(row, where);
    return read;
}

void reader::add(const table_row& row) {
    if (row.values.size() != m_columns.size()) {
        complain(row.line,
                 std::to_string(row.values.size()) + " values for " + std::to_string(m_columns.size()) + " columns");
    }
    labelled_clip clip;
    clip.file = value(row, "file");
    if (clip.file.empty()) complain(row.line, "column 'file' is empty");
    clip.path = (fs::path(m_path).parent_path() / clip.file).string();
    clip.tuning = is_tuning(row);
    clip.group = value(row, "group");
    const std::optional<labelled_fire> read = fire(row);

    const auto known = m_known.emplace(clip.file, m_clips.size());
    if (known.second) m_clips.push_back(clip);
    labelled_clip& target = m_clips[known.first->second];
    if (!known.second && (!read || target.fires.empty())) {
        complain(row.line, "'" + clip.file + "' has a line without fire and another line");
    }
    if (target.tuning != clip.tuning) complain(row.line, "'" + clip.file + "' stands in both sets");
    if (read) target.fires.push_back(*read);
}

std::vector<labelled_clip> reader::read() {
    if (m_text.compare(0, 3, "\xef\xbb\xbf") == 0) m_at = 3;  // the mark that spreadsheets put before UTF-8
    table_row row;
    if (!next_row(row)) complain(1, "the file is empty; its first line names the columns");
    read_header(row);
    while (next_row(row)) add(row);
    if (m_clips.empty()) complain(m_line, "no recording is named");
    return m_clips;
}

}  // namespace

std::vector<labelled_clip> parse_labels(const std::string& text, const std::string& path) {
    return reader(text, path).read();
}

std::vector<labelled_clip> read_labels(const std::string& path) {
    if (fs::is_directory(path)) throw io_error("'" + path + "' is a folder, not a manifest");
    std::ifstream file(path, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (!file) throw io_error("cannot read the manifest '" + path + "'");
    return parse_labels(text, path);
}

box place_label(const labelled_fire& fire, picture_size picture) {
    const labelled_fire::edges edges = fire.where.value_or(labelled_fire::edges());
    const int left = static_cast<int>(std::floor(edges.left * picture.width));
    const int top = static_cast<int>(std::floor(edges.top * picture.height));
    return {left, top, static_cast<int>(std::ceil(edges.right * picture.width)) - left,
            static_cast<int>(std::ceil(edges.bottom * picture.height)) - top};
}

}  // namespace orva_fire
