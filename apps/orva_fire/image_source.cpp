#include "apps/orva_fire/image_source.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <regex>
#include <set>

#include "apps/orva_fire/error.h"
#include "apps/orva_fire/video_source.h"

namespace orva_fire {
namespace {

namespace fs = std::filesystem;

bool is_digit(char c) {
    return std::isdigit(static_cast<unsigned char>(c)) != 0;
}

// The digits at a place of a text, without leading zeros; moves the place behind them.
std::string number_at(const std::string& text, size_t& at) {
    const size_t start = at;
    while (at < text.size() && is_digit(text[at])) ++at;
    const size_t first = std::min(text.find_first_not_of('0', start), at);
    return text.substr(first, at - first);
}

bool comes_before(const std::string& a, const std::string& b) {
    size_t i = 0, j = 0;
    while (i < a.size() && j < b.size()) {
        if (is_digit(a[i]) && is_digit(b[j])) {
            const std::string left = number_at(a, i), right = number_at(b, j);
            if (left.size() != right.size()) return left.size() < right.size();
            if (left != right) return left < right;
        } else if (a[i] != b[j]) {
            return a[i] < b[j];
        } else {
            ++i;
            ++j;
        }
    }
    return a.size() - i < b.size() - j || (i == a.size() && j == b.size() && a < b);
}

std::string quoted_for_regex(const std::string& text) {
    return std::regex_replace(text, std::regex(R"([.\\+*?|()\[\]{}^$])"), R"(\$&)");
}

}  // namespace

bool is_image_name(const std::string& name) {
    static const std::set<std::string> k_endings = {".jpg", ".jpeg", ".png",  ".bmp", ".ppm",
                                                    ".pgm", ".tif",  ".tiff", ".webp"};
    std::string ending = fs::path(name).extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(), [](unsigned char c) { return std::tolower(c); });
    return k_endings.count(ending) > 0;
}

void sort_naturally(std::vector<std::string>& names) {
    std::sort(names.begin(), names.end(), comes_before);
}

std::vector<std::string> images_of_pattern(const std::string& pattern) {
    const fs::path path(pattern);
    const std::string name = path.filename().string();
    std::smatch parts;
    if (!std::regex_match(name, parts, std::regex("([^%]*)%(0\\d+)?d([^%]*)"))) return {};
    const std::regex wanted(quoted_for_regex(parts[1]) + "\\d+" + quoted_for_regex(parts[3]));
    std::vector<std::string> files;
    std::error_code error;
    const fs::path folder = path.has_parent_path() ? path.parent_path() : fs::path(".");
    for (const auto& entry : fs::directory_iterator(folder, error)) {
        if (std::regex_match(entry.path().filename().string(), wanted)) files.push_back(entry.path().string());
    }
    sort_naturally(files);
    return files;
}

image_source::image_source(std::vector<std::string> files, const std::string& name, double rate)
    : m_files(std::move(files)), m_name(name), m_rate(rate) {}

bool image_source::read(const std::string& file, frame_ptr& picture) {
    try {
        video_source source(file_address(file), m_size);
        source_picture first;
        if (!source.next(first)) return false;
        picture = std::move(first.frame);
        return true;
    } catch (const io_error&) {
        return false;
    }
}

bool image_source::next(source_picture& picture) {
    while (m_next < m_files.size()) {
        const std::string& file = m_files[m_next];
        // The place in the sequence is the time, so that a picture that cannot be read leaves a gap and no jump.
        const double seconds = static_cast<double>(m_next++) / m_rate;
        picture = source_picture();
        if (read(file, picture.frame)) {
            m_size = {picture.frame->width, picture.frame->height};
            picture.seconds = seconds;
            picture.index = m_index++;
            return true;
        }
        if (m_damaged++ == 0) m_first_damage = file;
    }
    return false;
}

std::string image_source::problem() const {
    if (m_damaged == 0) return {};
    return "'" + m_name + "': " + std::to_string(m_damaged) + (m_damaged == 1 ? " picture" : " pictures") +
           " could not be read, first '" + m_first_damage + "'";
}

}  // namespace orva_fire
