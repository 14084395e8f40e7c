#include "apps/orva_fire/done_record.h"

#include <cmath>
#include <fstream>
#include <iterator>
#include <memory>
#include <new>
#include <nlohmann/json.hpp>

#include "apps/orva_fire/picture_file.h"

extern "C" {
#include <libavutil/mem.h>
#include <libavutil/sha.h>
}

namespace orva_fire {

const char k_done_name[] = "done.json";

namespace {

using json = nlohmann::ordered_json;

const int k_record_version = 1;

double to_milliseconds(double seconds) {
    return std::round(seconds * 1000) / 1000;
}

std::string text_of(const done_record& record) {
    const json line = {{"schema", k_record_version},
                       {"source", record.name},
                       {"size", record.source.size},
                       {"modified", record.source.modified},
                       {"settings", record.settings},
                       {"version", record.version},
                       {"error", record.error},
                       {"frames", record.frames},
                       {"seconds", to_milliseconds(record.seconds)},
                       {"events", record.events},
                       {"first", to_milliseconds(record.first)},
                       {"took", to_milliseconds(record.took)},
                       {"finished", record.finished}};
    return line.dump(2, ' ', false, json::error_handler_t::replace) + "\n";
}

done_record record_of(const json& line) {
    done_record record;
    record.name = line.at("source").get<std::string>();
    record.source.size = line.at("size").get<int64_t>();
    record.source.modified = line.at("modified").get<int64_t>();
    record.settings = line.at("settings").get<std::string>();
    record.version = line.at("version").get<std::string>();
    record.error = line.at("error").get<std::string>();
    record.frames = line.at("frames").get<int64_t>();
    record.seconds = line.at("seconds").get<double>();
    record.events = line.at("events").get<int>();
    record.first = line.at("first").get<double>();
    record.took = line.at("took").get<double>();
    record.finished = line.at("finished").get<std::string>();
    return record;
}

}  // namespace

bool is_done(const done_record& record, const file_state& source, const std::string& settings) {
    return !record.failed() && record.source.size >= 0 && record.source == source && record.settings == settings &&
           record.version == ORVA_FIRE_VERSION;
}

void write_done(const std::string& folder, const done_record& record) {
    save_bytes(folder + "/" + k_done_name, text_of(record));
}

std::optional<done_record> read_done(const std::string& folder) {
    std::ifstream file(folder + "/" + k_done_name, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    const json line = json::parse(text, nullptr, false);
    try {
        if (line.is_discarded() || line.at("schema") != k_record_version) return std::nullopt;
        return record_of(line);
    } catch (const json::exception&) {
        return std::nullopt;
    }
}

std::string digest_of(const std::string& text) {
    struct freer {
        void operator()(AVSHA* sha) const { av_free(sha); }
    };
    const std::unique_ptr<AVSHA, freer> sha(av_sha_alloc());
    if (!sha || av_sha_init(sha.get(), 256) < 0) throw std::bad_alloc();
    uint8_t sum[32];
    av_sha_update(sha.get(), reinterpret_cast<const uint8_t*>(text.data()), text.size());
    av_sha_final(sha.get(), sum);
    std::string digits;
    for (const uint8_t byte : sum) {
        digits += "0123456789abcdef"[byte >> 4];
        digits += "0123456789abcdef"[byte & 15];
    }
    return digits;
}

}  // namespace orva_fire
