#include "tests/apps/report_example.h"

#include <cmath>

#include "apps/orva_fire/picture_file.h"
#include "tests/apps/pictures.h"

namespace apps_test {
namespace {

using namespace orva_fire;

std::string small_picture(const colour& c) {
    return jpeg_bytes(*flat_picture(AV_PIX_FMT_YUV420P, 176, 99, c, AVCOL_RANGE_MPEG, AVCOL_SPC_BT709), {176, 99});
}

report_zone zone(const std::string& name, const box& place, double phase) {
    report_zone made;
    made.name = name;
    made.place = place;
    made.channels = 2;
    made.cut = {640, 360};
    made.analysis = {352, 198};
    for (int i = 0; i < 240; ++i) {
        const double wave = 0.5 + 0.5 * std::sin(i * 0.05 + phase);
        made.samples.push_back({0.02 * wave, wave > 0.5 ? wave : 0});
    }
    return made;
}

report_event event(int id, size_t zone, double from, double to) {
    report_event made;
    made.id = id;
    made.zone = zone;
    made.from = from;
    made.to = to;
    made.largest_at = (from + to) / 2;
    made.largest = {400, 200, 60, 90};
    made.video = "annotated.mp4";
    return made;
}

report_miss miss(size_t zone, double at, const std::string& reason, const std::string& remedy) {
    report_miss made;
    made.zone = zone;
    made.from = at - 1;
    made.to = at + 1;
    made.at = at;
    made.place = {300, 100, 24, 40};
    made.nearness = 0.9;
    made.reason = reason;
    made.remedy = remedy;
    made.picture = small_picture(k_orange);
    return made;
}

}  // namespace

report_data example_report(const std::string& name) {
    report_data run;
    run.source = name;
    run.made_at = "2024-05-01T12:00:00Z";
    run.version = "1.0.0";
    run.size = {1280, 720};
    run.rate = 25;
    run.seconds = 60;
    run.frames = 1500;
    run.passed = 1400;
    run.repeated = 60;
    run.thinned = 40;
    run.step = 0.25;
    run.zones = {zone(name, {0, 0, 1280, 720}, 0), zone("stove", {320, 180, 640, 360}, 2)};
    run.events = {event(1, 0, 5.64, 14.96), event(2, 1, 30, 60), event(3, 1, 20, 22)};
    run.events[0].start_picture = run.events[0].largest_picture = small_picture(k_flame);
    run.events[1].input_ended = true;
    run.events[2].test = true;
    run.events_left_out = 4;
    run.troubles = {{40, 48, "dark: " + name}};
    run.misses = {
        miss(0, 18, "found again in 33 of 50 frames over 2.0 s, needs 35", "would have been reported at grade 80"),
        miss(1, 26, "too steady: its area changes by 9 %, needs 17 %", ""), miss(1, 28, name, name)};
    run.notes = {"5 pictures a second: " + name};
    run.settings = {{"grade", "70"}, {"zones", name}, {name, "on"}};
    return run;
}

std::string hostile_name() {
    std::string name =
        "<script>console.log('run')</script>\"><img src=x onerror=console.log('loaded')>' onload='console.log(1)' & "
        "&lt;b&gt; </style></title></svg>";
    name += std::string("\0\x01\x1b[31m\n\r\t\x7f", 10);
    name +=
        "\xC3\xA9t\xC3\xA9 \xE6\xBC\xA2\xE5\xAD\x97 \xF0\x9F\x94\xA5 \xD7\x90\xD7\x91 \xE2\x80\xAE reversed \xFF\xFE";
    return name + " " + std::string(300, 'W') + ".mp4";
}

}  // namespace apps_test
