#include "apps/orva_fire/joined_results.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <set>

#include "apps/orva_fire/error.h"
#include "apps/orva_fire/task_folder.h"

namespace orva_fire {
namespace {

namespace fs = std::filesystem;
using json = nlohmann::ordered_json;

const char k_events_name[] = "events.jsonl";

bool is_better(const joined_result& a, const joined_result& b) {
    if (a.record.failed() != b.record.failed()) return b.record.failed();
    return a.record.finished > b.record.finished;  // both in UTC and of equal length
}

class gathering {
public:
    void search(const std::string& folder);
    void compare(const std::vector<recording>& expected);
    joined_results take();

private:
    void look_at(const std::string& base, const fs::path& folder);
    void add(const std::string& name, const fs::path& folder);
    void miss(const std::string& name, const char* reason) { m_missing.emplace(name, reason); }

    std::map<std::string, joined_result> m_results;
    std::map<std::string, std::string> m_missing, m_unfinished;
    std::vector<std::string> m_notes;
};

void gathering::add(const std::string& name, const fs::path& folder) {
    const std::optional<done_record> record = read_done(folder.string());
    if (!record) return miss(name, "the record of its task cannot be read");
    joined_result result;
    result.name = name;
    result.folder = folder.string();
    result.record = *record;
    result.problem = record->error;
    std::error_code ignored;
    result.has_report = fs::exists(folder / "report.html", ignored);
    result.has_video = fs::exists(folder / "annotated.mp4", ignored);
    const auto known = m_results.emplace(name, result);
    if (known.second) return;
    m_notes.push_back("There are several results for '" + name + "'; the last good one is shown.");
    if (is_better(result, known.first->second)) known.first->second = result;
}

void gathering::look_at(const std::string& base, const fs::path& folder) {
    const std::string name = folder.lexically_relative(base).generic_string();
    const std::string unfinished = unfinished_name(folder.filename().string());
    std::error_code ignored;
    if (!unfinished.empty()) {
        const std::string place = fs::path(name).replace_filename(unfinished).generic_string();
        m_unfinished.emplace(place, "a task for it was begun and has not finished");
    } else if (folder.filename().string()[0] != '.' && fs::exists(folder / k_done_name, ignored)) {
        add(name, folder);
    }
}

void gathering::search(const std::string& folder) {
    std::error_code error;
    if (fs::exists(fs::path(folder) / k_done_name, error)) {
        throw usage_error("'" + folder + "' holds the results of one recording; name the folder above it");
    }
    fs::recursive_directory_iterator at(folder, error);
    for (; !error && at != fs::recursive_directory_iterator(); at.increment(error)) {
        std::error_code ignored;
        if (at->is_directory(ignored)) look_at(folder, at->path());
        // What is in the hidden folders of tasks that were killed is no result.
        if (at->path().filename().string()[0] == '.') at.disable_recursion_pending();
    }
    if (error) throw io_error("cannot read the folder '" + folder + "': " + error.message());
}

void gathering::compare(const std::vector<recording>& expected) {
    for (const recording& each : expected) {
        const auto found = m_results.find(each.name);
        const auto begun = m_unfinished.find(each.name);
        if (found != m_results.end()) {
            if (found->second.problem.empty() && state_of(each.path) != found->second.record.source) {
                miss(each.name, "it has changed since it was looked at");
            }
        } else if (begun == m_unfinished.end()) {
            miss(each.name, "no task has finished for it");
        }
    }
}

joined_results gathering::take() {
    joined_results joined;
    // A task that runs again on a recording that is done takes nothing away from its results.
    for (const auto& each : m_unfinished) {
        if (m_results.count(each.first) == 0) m_missing.insert(each);
    }
    std::set<std::string> settings;
    for (auto& each : m_results) {
        settings.insert(each.second.record.settings + each.second.record.version);
        joined.results.push_back(std::move(each.second));
    }
    for (const auto& each : m_missing) joined.missing.push_back({each.first, each.second});
    joined.notes = m_notes;
    if (settings.size() > 1) {
        joined.notes.push_back("These results were made with " + std::to_string(settings.size()) +
                               " different settings or versions of the program.");
    }
    return joined;
}

// Reads lines of events one after the other.
class event_reader {
public:
    event_reader(joined_result& result, const std::string& way) : m_result(result), m_way(way) {}
    std::string line(const std::string& text);  // as it is handed on; throws json::exception for what is no event
    void finish();

private:
    void note(const json& line);

    joined_result& m_result;
    const std::string& m_way;
    std::optional<double> m_blind_since;
};

std::string event_reader::line(const std::string& text) {
    const json read = json::parse(text);
    note(read);
    json joined;
    for (const auto& [key, value] : read.items()) {
        joined[key] = value;
        if (key == "camera") joined["source"] = m_result.name;
    }
    if (joined.contains("snapshot")) joined["snapshot"] = m_way + "/" + read.at("snapshot").get<std::string>();
    return joined.dump(-1, ' ', false, json::error_handler_t::replace);
}

void event_reader::note(const json& line) {
    const std::string kind = line.at("event").get<std::string>();
    const double seconds = line.at("seconds").get<double>();
    if (kind == "end") {
        joined_event event;
        event.id = line.at("id").get<int>();
        event.zone = line.at("zone").get<std::string>();
        event.from = line.at("started").at("seconds").get<double>();
        event.to = seconds;
        event.input_ended = line.at("reason") == "input ended";
        event.test = line.value("test", false);
        event.snapshot = line.value("snapshot", "");
        m_result.events.push_back(event);
    } else if (kind == "trouble") {
        if (!m_blind_since) m_blind_since = line.at("since").get<double>();
    } else if (kind == "trouble over") {
        m_result.trouble += seconds - m_blind_since.value_or(seconds);
        m_blind_since.reset();
    }
}

void event_reader::finish() {
    if (m_blind_since) m_result.trouble += std::max(0.0, m_result.record.seconds - *m_blind_since);
}

}  // namespace

joined_results gather_results(const std::vector<std::string>& folders, const std::vector<recording>& expected) {
    gathering found;
    for (const std::string& folder : folders) found.search(folder);
    found.compare(expected);
    return found.take();
}

void join_events(joined_result& result, const std::string& way, const std::function<void(const std::string&)>& take) {
    std::ifstream file(result.folder + "/" + k_events_name, std::ios::binary);
    if (!file) return;  // deliberate: --no-events writes none
    event_reader reader(result, way);
    int number = 0;
    for (std::string text; std::getline(file, text);) {
        ++number;
        try {
            take(reader.line(text));
        } catch (const json::exception&) {
            const std::string where = "line " + std::to_string(number) + " of its " + k_events_name + " is no event";
            if (result.problem.empty()) result.problem = where;
        }
    }
    if (file.bad() && result.problem.empty()) result.problem = std::string("its ") + k_events_name + " cannot be read";
    reader.finish();
}

}  // namespace orva_fire
