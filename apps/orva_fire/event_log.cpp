#include "apps/orva_fire/event_log.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <cstring>
#include <fstream>
#include <nlohmann/json.hpp>

#include "apps/orva_fire/error.h"
#include "apps/orva_fire/wall_clock.h"

namespace orva_fire {
namespace {

using json = nlohmann::ordered_json;

const int k_schema_version = 1;

const char* name_of(event_kind kind) {
    switch (kind) {
        case event_kind::start:
            return "start";
        case event_kind::update:
            return "update";
        default:
            return "end";
    }
}

const char* reason_of(event_end end) {
    switch (end) {
        case event_end::input_ended:
            return "input ended";
        case event_end::source_lost:
            return "source lost";
        default:
            return "gone";
    }
}

// Names of files may hold bytes that are no UTF-8; those are replaced.
std::string text_of(const json& line) {
    return line.dump(-1, ' ', false, json::error_handler_t::replace);
}

double to_milliseconds(double seconds) {
    return std::round(seconds * 1000) / 1000;
}

json box_values(const box& b) {
    return {{"x", b.x}, {"y", b.y}, {"width", b.width}, {"height", b.height}};
}

json box_entry(const box& b, picture_size picture) {
    json entry = box_values(b);
    entry["per_mille"] = box_values(to_per_mille(b, picture));
    return entry;
}

json moment_entry(const moment& at) {
    return {{"frame", at.frame}, {"seconds", to_milliseconds(at.seconds)}};
}

// Whether whoever wrote the file before was ended in the middle of a line.
bool ends_inside_a_line(const std::string& path) {
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    if (!file || file.tellg() <= 0) return false;
    file.seekg(-1, std::ios::end);
    return file.get() != '\n';
}

}  // namespace

std::string event_line(const fire_event& event, const event_context& context) {
    json line = {{"schema", k_schema_version}, {"event", name_of(event.kind)}, {"id", event.id}};
    if (context.test) line["test"] = true;
    line["camera"] = context.camera;
    line["zone"] = context.zone;
    line["grade"] = context.grade;
    line.update(moment_entry(event.at));
    if (context.wall_milliseconds) line["time"] = rfc3339(*context.wall_milliseconds);
    line["boxes"] = json::array();
    for (const box& b : event.boxes) line["boxes"].push_back(box_entry(b, context.picture));
    if (event.kind == event_kind::end) {
        line["reason"] = reason_of(event.ended);
        line["started"] = moment_entry(event.started);
        line["duration"] = to_milliseconds(event.at.seconds - event.started.seconds);
        line["largest"] = moment_entry(event.largest_at);
        line["largest"]["box"] = box_entry(event.largest, context.picture);
    }
    if (!context.snapshot.empty()) line["snapshot"] = context.snapshot;
    return text_of(line);
}

std::string trouble_line(const trouble_event& event, int64_t frame, const event_context& context) {
    json line = {{"schema", k_schema_version}, {"event", event.started ? "trouble" : "trouble over"}};
    if (context.test) line["test"] = true;
    line["camera"] = context.camera;
    line.update(moment_entry({frame, event.seconds}));
    if (context.wall_milliseconds) line["time"] = rfc3339(*context.wall_milliseconds);
    line["reason"] = trouble_name(event.reason);
    line["explanation"] = trouble_sentence(event.reason);
    line["since"] = to_milliseconds(event.since);
    if (!event.started) line["duration"] = to_milliseconds(event.seconds - event.since);
    return text_of(line);
}

std::string frame_line(const moment& at, const std::vector<std::string>& zones,
                       const std::vector<std::vector<box>>& boxes, bool passed) {
    json line = moment_entry(at);
    line["passed"] = passed;
    line["boxes"] = json::array();
    for (size_t i = 0; i < zones.size(); ++i) {
        for (const box& b : boxes[i]) {
            json entry = {{"zone", zones[i]}};
            entry.update(box_values(b));
            line["boxes"].push_back(entry);
        }
    }
    return text_of(line);
}

event_log::event_log(const std::string& path, bool append) : m_name("'" + path + "'"), m_owned(true) {
    const bool torn = append && ends_inside_a_line(path);
    m_descriptor = open(path.c_str(), O_WRONLY | O_CREAT | (append ? O_APPEND : O_TRUNC) | O_CLOEXEC, 0666);
    if (m_descriptor < 0) throw io_error("cannot write '" + path + "': " + std::strerror(errno));
    if (torn) write("");
}

event_log::event_log(int descriptor, const std::string& name) : m_name(name), m_descriptor(descriptor) {}

event_log::~event_log() {
    if (m_owned) close(m_descriptor);
}

void event_log::write(const std::string& line) {
    const std::string text = line + "\n";
    const off_t start = m_owned ? lseek(m_descriptor, 0, SEEK_END) : -1;
    size_t done = 0;
    while (done < text.size()) {
        const ssize_t written = ::write(m_descriptor, text.data() + done, text.size() - done);
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) fail(start);
        done += static_cast<size_t>(written);
    }
}

// A line of which only the beginning found room is taken back: readers find whole lines or none.
void event_log::fail(off_t start) const {
    const std::string reason = std::strerror(errno);
    if (start >= 0 && ftruncate(m_descriptor, start) != 0) throw io_error("cannot repair " + m_name + ": " + reason);
    throw io_error("cannot write " + m_name + ": " + reason);
}

}  // namespace orva_fire
