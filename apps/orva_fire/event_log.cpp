#include "apps/orva_fire/event_log.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <cstring>
#include <nlohmann/json.hpp>

#include "apps/orva_fire/error.h"

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

}  // namespace

std::string event_line(const fire_event& event, const std::string& zone, picture_size picture,
                       const std::string& snapshot) {
    json line = {{"schema", k_schema_version}, {"event", name_of(event.kind)}, {"id", event.id}, {"zone", zone}};
    line.update(moment_entry(event.at));
    line["boxes"] = json::array();
    for (const box& b : event.boxes) line["boxes"].push_back(box_entry(b, picture));
    if (event.kind == event_kind::end) {
        line["reason"] = event.input_ended ? "input ended" : "gone";
        line["started"] = moment_entry(event.started);
        line["duration"] = to_milliseconds(event.at.seconds - event.started.seconds);
        line["largest"] = moment_entry(event.largest_at);
        line["largest"]["box"] = box_entry(event.largest, picture);
    }
    if (!snapshot.empty()) line["snapshot"] = snapshot;
    return line.dump();
}

event_log::event_log(const std::string& path) : m_name(path), m_owned(true) {
    m_descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (m_descriptor < 0) throw io_error("cannot write '" + path + "': " + std::strerror(errno));
}

event_log::event_log(int descriptor, const std::string& name) : m_name(name), m_descriptor(descriptor) {}

event_log::~event_log() {
    if (m_owned) close(m_descriptor);
}

void event_log::write(const std::string& line) {
    const std::string text = line + "\n";
    size_t done = 0;
    while (done < text.size()) {
        const ssize_t written = ::write(m_descriptor, text.data() + done, text.size() - done);
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) throw io_error("cannot write '" + m_name + "': " + std::strerror(errno));
        done += static_cast<size_t>(written);
    }
}

}  // namespace orva_fire
