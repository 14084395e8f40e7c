// The files that orva-fire reads, and the lines that it writes, from the fuzzer's bytes: the first says which, the rest
// is the text. A file is taken, and then everything in it is within its bounds, or it is refused with a sentence that
// is fit for a terminal; nothing else. A line of events can be read again and says what it was given.
#include <sys/mman.h>
#include <unistd.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <iostream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "ORVA_FireDetection.h"
#include "apps/orva_fire/error.h"
#include "apps/orva_fire/event_log.h"
#include "apps/orva_fire/labels.h"
#include "apps/orva_fire/options.h"
#include "apps/orva_fire/zones.h"
#include "tests/fuzz/byte_source.h"
#include "tests/fuzz/differences.h"

namespace {

using fuzz::byte_source;
using fuzz::differ;
using nlohmann::json;

// What all inputs of this process came to; scripts add the lines up.
struct totals {
    long taken = 0;
    long refused = 0;
    long lines = 0;
    ~totals() {
        std::fprintf(stderr, "fire_files: %ld files taken, %ld files refused, %ld lines read again\n", taken, refused,
                     lines);
    }
};

totals all;

void require(bool holds, const char* what) {
    if (!holds) differ(what);
}

// A reader's only ways out. A text that it complains with names the file and has an end.
template <typename Reader>
void read(Reader reader) {
    try {
        reader();
        ++all.taken;
    } catch (const orva_fire::usage_error& error) {
        ++all.refused;
        require(std::string(error.what()).find("some/file") != std::string::npos, "a complaint that names no file");
    }
}

bool in_picture(const orva_fire::box& where, orva_fire::picture_size picture) {
    return where.x >= 0 && where.y >= 0 && where.width >= 16 && where.height >= 16 &&
           where.width <= picture.width - where.x && where.height <= picture.height - where.y;
}

// --- zones ----------------------------------------------------------------------------------------------------------

void check_zone(const orva_fire::zone_spec& zone, orva_fire::picture_size picture) {
    require(!zone.name.empty() && zone.name.size() <= 100, "the length of a zone's name");
    for (const char c : zone.name) require(static_cast<unsigned char>(c) >= 32 && c != 127, "a zone's name");
    require(!zone.parts.empty(), "a zone without rectangles");
    require(!zone.grade || (*zone.grade >= 0 && *zone.grade <= 100), "a zone's grade");
    for (const orva_fire::box& where : place_zone(zone, picture)) {
        require(in_picture(where, picture), "a zone's place in the picture");
    }
}

void read_zones(const std::string& text, orva_fire::picture_size picture) {
    read([&] {
        const std::vector<orva_fire::zone_spec> zones = orva_fire::parse_zones(text, "some/file");
        require(!zones.empty(), "a file without zones");
        for (const orva_fire::zone_spec& zone : zones) check_zone(zone, picture);
    });
}

// Channels are counted as they are placed, or the text says how many they would be.
void count_zones(const std::string& text, orva_fire::picture_size picture, int grid) {
    try {
        const std::vector<orva_fire::zone_spec> zones = orva_fire::parse_zones(text, "some/file");
        const int channels =
            count_channels(zones, picture, {grid % 5, grid % 5 == 0 ? 0 : grid / 5 % 4 + 1}, grid >= 128);
        require(channels >= 1 && channels <= FD_MAX_CHANNELS, "the number of channels");
        ++all.taken;
    } catch (const orva_fire::usage_error&) {
        ++all.refused;
    }
}

// --- manifests ------------------------------------------------------------------------------------------------------

void check_fire(const orva_fire::labelled_fire& fire) {
    require(fire.from >= 0 && (!fire.to || *fire.to > fire.from), "the times of a fire");
    const orva_fire::picture_size picture{1920, 1080};
    const orva_fire::box where = place_label(fire, picture);
    require(where.x >= 0 && where.y >= 0 && where.width >= 1 && where.height >= 1 && where.x + where.width <= 1920 &&
                where.y + where.height <= 1080,
            "the place of a fire");
}

void read_manifest(const std::string& text) {
    read([&] {
        const std::vector<orva_fire::labelled_clip> clips = orva_fire::parse_labels(text, "some/file");
        require(!clips.empty(), "a manifest without recordings");
        for (const orva_fire::labelled_clip& clip : clips) {
            require(!clip.file.empty(), "a recording without name");
            for (const orva_fire::labelled_fire& fire : clip.fires) check_fire(fire);
        }
    });
}

// --- config files ---------------------------------------------------------------------------------------------------

// A file that is only there while this lives, under a name.
class file_in_memory {
public:
    explicit file_in_memory(const std::string& text) : m_descriptor(memfd_create("config", MFD_CLOEXEC)) {
        if (write(m_descriptor, text.data(), text.size()) != static_cast<ssize_t>(text.size())) std::abort();
    }
    ~file_in_memory() { close(m_descriptor); }
    file_in_memory(const file_in_memory&) = delete;
    file_in_memory& operator=(const file_in_memory&) = delete;
    std::string path() const { return "/proc/self/fd/" + std::to_string(m_descriptor); }

private:
    int m_descriptor;
};

// What goes to a stream of the process meanwhile, for this scope.
class caught_stream {
public:
    explicit caught_stream(std::ostream& stream) : m_stream(stream), m_own(stream.rdbuf(m_text.rdbuf())) {}
    ~caught_stream() { m_stream.rdbuf(m_own); }
    caught_stream(const caught_stream&) = delete;
    caught_stream& operator=(const caught_stream&) = delete;
    std::string text() const { return m_text.str(); }

private:
    std::ostream& m_stream;
    std::ostringstream m_text;
    std::streambuf* m_own;
};

bool within(double value, double least, double most) {
    return value >= least && value <= most;
}

void check_options(const orva_fire::detect_options& options) {
    require(!options.source.text.empty(), "a run without source");
    require(options.regions.size() <= FD_MAX_CHANNELS, "the number of regions");
    require(!options.grade || (*options.grade >= 0 && *options.grade <= 100), "the grade of a run");
    require(within(options.rate, 0, 1000) && within(options.source.rate, 0, 1000), "a rate");
    require(within(options.confirm.seconds, 0, 600) && within(options.confirm.cooldown, 0, 86400), "confirmation");
    require(within(options.max_age, 0, 86400), "the age of evidence");
    require(within(options.source.patience, 0.1, 3.2e7) && within(options.source.first_pause, 0.01, 30), "patience");
    require(within(options.on_event_timeout, 0.1, 3.2e7), "a program's time");
    require(within(options.segment.value_or(0), 0, 3.2e7) && within(options.keep_hours.value_or(0), 0, 3.2e7),
            "times of video files");
}

void read_config(const std::string& text) {
    const file_in_memory file(text);
    const std::string option = "--config=" + file.path();
    const char* arguments[] = {"detect", option.c_str()};
    const caught_stream output(std::cout), errors(std::cerr);
    const orva_fire::command command = orva_fire::parse_detect(2, arguments);
    if (command.detect) {
        check_options(*command.detect);
        ++all.taken;
        return;
    }
    ++all.refused;
    const bool helped = command.exit_code == 0;
    require(helped || command.exit_code == orva_fire::k_exit_usage, "the exit code of a refused file");
    require(helped || !errors.text().empty(), "a file that is refused without a word");
}

// --- lines of events ------------------------------------------------------------------------------------------------

// The text as JSON has it: bytes that are no UTF-8 replaced.
bool is_ascii(const std::string& text) {
    for (const char c : text) {
        if (static_cast<unsigned char>(c) >= 128) return false;
    }
    return true;
}

json read_again(const std::string& line) {
    require(line.find('\n') == std::string::npos, "a line with a line end in it");
    const json parsed = json::parse(line, nullptr, false);
    require(parsed.is_object(), "a line that is no JSON");
    ++all.lines;
    return parsed;
}

double read_seconds(byte_source& input) {
    const int whole = input.word();
    return whole * (input.one_in(4) ? 1e6 : 1.0) + input.byte() / 256.0;
}

orva_fire::box read_box(byte_source& input) {
    return {input.word(), input.word(), input.word(), input.word()};
}

void write_event(byte_source& input, const std::string& name) {
    orva_fire::fire_event event;
    event.kind = static_cast<orva_fire::event_kind>(input.below(3));
    event.ended = static_cast<orva_fire::event_end>(input.below(3));
    event.id = input.word();
    event.started = {input.word(), read_seconds(input)};
    event.at = {input.word(), event.started.seconds + read_seconds(input)};
    event.largest_at = event.at;
    event.largest = read_box(input);
    for (int i = input.below(4); i > 0; --i) event.boxes.push_back(read_box(input));
    orva_fire::event_context context;
    context.zone = name;
    context.camera = name.substr(0, name.size() / 2);
    context.snapshot = name.substr(name.size() / 2);
    context.picture = {input.word() + 1, input.word() + 1};
    context.test = input.one_in(2);
    if (input.one_in(2)) context.wall_milliseconds = static_cast<std::int64_t>(input.word()) << 28;
    const json line = read_again(orva_fire::event_line(event, context));
    require(line.at("id") == event.id && line.at("boxes").size() == event.boxes.size(), "what a line says");
    if (is_ascii(name)) require(line.at("zone") == name && line.at("camera") == context.camera, "a line's names");
}

void write_others(byte_source& input, const std::string& name) {
    orva_fire::event_context context;
    context.camera = name;
    orva_fire::trouble_event trouble;
    trouble.started = input.one_in(2);
    trouble.reason = static_cast<orva_fire::trouble_reason>(input.below(orva_fire::k_trouble_reasons));
    trouble.since = read_seconds(input);
    trouble.seconds = trouble.since + read_seconds(input);
    const json line = read_again(orva_fire::trouble_line(trouble, input.word(), context));
    if (is_ascii(name)) require(line.at("camera") == name, "the camera of a line");
    const orva_fire::moment at{input.word(), read_seconds(input)};
    const json frame = read_again(orva_fire::frame_line(at, {name, "b"}, {{read_box(input)}, {}}, true));
    require(frame.at("frame") == at.frame && frame.at("boxes").size() == 1, "the boxes of a picture's line");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    if (size < 2) return 0;
    const std::string text(reinterpret_cast<const char*>(bytes) + 2, size - 2);
    const int more = bytes[1];
    byte_source numbers(bytes + 1, size - 1);
    switch (bytes[0] % 8) {
        case 0:
        case 1:
            read_zones(text, {more * 16 + 16, more * 9 + 16});
            break;
        case 2:
            count_zones(text, {1920, 1080}, more);
            break;
        case 3:
        case 4:
            read_manifest(text);
            break;
        case 5:
            write_event(numbers, text);
            break;
        case 6:
            write_others(numbers, text);
            break;
        default:
            read_config(text);
            break;
    }
    return 0;
}
