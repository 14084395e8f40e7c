#include "apps/orva_fire/recordings.h"

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>

#include "apps/orva_fire/done_record.h"
#include "apps/orva_fire/error.h"
#include "apps/orva_fire/ffmpeg.h"
#include "apps/orva_fire/input_address.h"
#include "apps/orva_fire/open_source.h"

namespace orva_fire {
namespace {

namespace fs = std::filesystem;

const int64_t k_bytes_a_second = 125000;                            // a megabit
const int64_t k_longest = int64_t{366} * 24 * 3600 * AV_TIME_BASE;  // sums of what files claim must not overflow

struct input_closer {
    void operator()(AVFormatContext* input) const { avformat_close_input(&input); }
};

// Without a slash at its end, which would count as one more name. Links are left as they are: names must not depend on
// where a machine keeps its disks.
fs::path plain_path(const std::string& text) {
    const fs::path path = fs::absolute(text).lexically_normal();
    return path.has_filename() ? path : path.parent_path();
}

bool is_folder(const std::string& path) {
    std::error_code error;
    return fs::is_directory(path, error);
}

class search_run {
public:
    explicit search_run(const recording_search& search);
    std::vector<recording> run();

private:
    void add_source(const std::string& source);
    void add_list();
    void add_lines(std::istream& lines);
    void add_folder(const std::string& folder);
    bool is_passed_over(const fs::path& folder) const;
    void add(const std::string& path);

    const recording_search& m_search;
    fs::path m_base;
    std::vector<recording> m_found;
};

search_run::search_run(const recording_search& search) : m_search(search) {
    const bool one_folder = search.sources.size() == 1 && search.list.empty() && is_folder(search.sources[0]);
    m_base = plain_path(!search.base.empty() ? search.base : one_folder ? search.sources[0] : ".");
}

void search_run::add(const std::string& path) {
    const fs::path whole = plain_path(path);
    const fs::path below = whole.lexically_relative(m_base);
    const std::string name = below.generic_string();
    if (name.empty() || name == "." || *below.begin() == "..") {
        throw usage_error("'" + path + "' does not lie below '" + m_base.string() +
                          "'; say with --base where the names of results begin");
    }
    m_found.push_back({path, name});
}

bool search_run::is_passed_over(const fs::path& folder) const {
    std::error_code error;
    const bool results = !m_search.results.empty() && fs::equivalent(folder, m_search.results, error) && !error;
    return results || fs::exists(folder / k_done_name, error);
}

void search_run::add_folder(const std::string& folder) {
    std::error_code error;
    fs::recursive_directory_iterator at(folder, error);
    for (; !error && at != fs::recursive_directory_iterator(); at.increment(error)) {
        const fs::path& path = at->path();
        const std::string name = path.filename().string();
        std::error_code ignored;
        const bool below = at->is_directory(ignored);
        if (name[0] == '.' || (below && is_passed_over(path))) {
            if (below) at.disable_recursion_pending();
        } else if (at->is_regular_file(ignored) && is_video_name(name)) {
            add(path.string());
        }
    }
    // A machine that overlooked a part would divide the rest in its own way.
    if (error) throw io_error("cannot read the folder '" + folder + "': " + error.message());
}

bool is_camera_or_pipe(const std::string& source) {
    std::error_code error;
    const fs::file_type type = fs::status(source, error).type();
    if (source == "-" || source.rfind("/dev/video", 0) == 0) return true;
    if (type == fs::file_type::not_found) return is_address(source);
    return type != fs::file_type::regular && type != fs::file_type::directory;
}

void search_run::add_source(const std::string& source) {
    if (is_camera_or_pipe(source)) {
        throw usage_error("'" + source + "' is no recording; orva-fire detect looks at cameras and pipes");
    }
    if (is_folder(source)) {
        add_folder(source);
    } else {
        add(source);
    }
}

void search_run::add_lines(std::istream& lines) {
    for (std::string line; std::getline(lines, line);) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (!line.empty()) add_source(line);
    }
}

void search_run::add_list() {
    if (m_search.list.empty()) return;
    if (m_search.list == "-") return add_lines(std::cin);
    std::ifstream file(m_search.list);
    if (!file || is_folder(m_search.list)) throw io_error("--list: cannot read '" + m_search.list + "'");
    add_lines(file);
}

std::vector<recording> search_run::run() {
    for (const std::string& source : m_search.sources) add_source(source);
    add_list();
    const auto by_name = [](const recording& a, const recording& b) { return a.name < b.name; };
    const auto same = [](const recording& a, const recording& b) { return a.name == b.name; };
    std::stable_sort(m_found.begin(), m_found.end(), by_name);
    m_found.erase(std::unique(m_found.begin(), m_found.end(), same), m_found.end());
    return m_found;
}

int64_t stated_length(const AVFormatContext& input) {
    if (input.duration != AV_NOPTS_VALUE && input.duration > 0) return input.duration;
    int64_t longest = 0;
    for (unsigned i = 0; i < input.nb_streams; ++i) {
        const AVStream& stream = *input.streams[i];
        if (stream.duration == AV_NOPTS_VALUE) continue;
        longest = std::max(longest, av_rescale_q(stream.duration, stream.time_base, {1, AV_TIME_BASE}));
    }
    return longest;
}

}  // namespace

std::vector<recording> find_recordings(const recording_search& search) {
    return search_run(search).run();
}

int64_t recording_length(const std::string& path) {
    const file_state state = state_of(path);
    if (state.size <= 0) return 0;
    silence_messages();
    AVFormatContext* opened = nullptr;
    if (avformat_open_input(&opened, file_url(path).c_str(), nullptr, nullptr) < 0) return 0;
    const std::unique_ptr<AVFormatContext, input_closer> input(opened);
    const int64_t stated = stated_length(*input);
    return std::min(k_longest, stated > 0 ? stated : av_rescale(state.size, AV_TIME_BASE, k_bytes_a_second));
}

file_state state_of(const std::string& path) {
    struct stat about = {};
    if (stat(path.c_str(), &about) != 0 || !S_ISREG(about.st_mode)) return {};
    return {static_cast<int64_t>(about.st_size),
            static_cast<int64_t>(about.st_mtim.tv_sec) * 1000000000 + static_cast<int64_t>(about.st_mtim.tv_nsec)};
}

}  // namespace orva_fire
