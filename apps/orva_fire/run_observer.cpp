#include "apps/orva_fire/run_observer.h"

#include <algorithm>
#include <utility>

#include "apps/orva_fire/picture_file.h"
#include "apps/orva_fire/report.h"

namespace orva_fire {
namespace {

const int k_default_grade = 70;  // as the library's own

box around(const std::vector<box>& tiles) {
    box all = tiles.front();
    for (const box& b : tiles) {
        const int right = std::max(all.x + all.width, b.x + b.width),
                  bottom = std::max(all.y + all.height, b.y + b.height);
        all.x = std::min(all.x, b.x);
        all.y = std::min(all.y, b.y);
        all.width = right - all.x;
        all.height = bottom - all.y;
    }
    return all;
}

std::vector<report_zone> report_zones(const std::vector<observed_zone>& zones) {
    std::vector<report_zone> made;
    for (const observed_zone& zone : zones) {
        const std::vector<box>& tiles = zone.watcher->tiles();
        report_zone shown;
        shown.name = zone.name;
        shown.place = around(tiles);
        shown.channels = static_cast<int>(tiles.size());
        shown.cut = {tiles.front().width, tiles.front().height};
        shown.analysis = analysis_size(shown.cut);
        shown.grade = zone.grade.value_or(k_default_grade);
        made.push_back(shown);
    }
    return made;
}

}  // namespace

run_observer::run_observer(const observer_settings& settings, const std::vector<observed_zone>& zones,
                           picture_size source, const library_output& log)
    : m_settings(settings), m_source(source), m_builder(report_zones(zones)) {
    if (settings.explain) m_explain = std::make_unique<explain_writer>(settings.folder + "/explain", settings.source);
    for (size_t i = 0; i < zones.size(); ++i) {
        m_names.push_back(zones[i].name);
        m_zones.push_back(std::make_unique<zone_evidence>(*zones[i].watcher, zones[i].grade, log,
                                                          [this, i](const auto& view) { look(i, view); }));
    }
}

void run_observer::set_moment(const moment& at) {
    for (const auto& zone : m_zones) zone->set_moment(at);
}

void run_observer::look(size_t zone, const zone_evidence::view& view) {
    m_builder.observe(zone, view.seen, view.area, view.picture);
    if (!m_explain) return;
    if (!m_settings.explain->holds(view.seen.at.frame)) {
        view.stages.pass(view.picture);
        return;
    }
    const explained_place place{m_names[zone], zone, view.tile, view.area};
    m_explain->write(place, view.picture, view.seen, view.stages.make(view.picture));
}

void run_observer::add(const fire_event& event, const AVFrame& picture, const video_place& video) {
    m_builder.add(event, picture, video);
}

void run_observer::finish(report_data about) {
    if (m_explain) m_explain->finish();
    about.source = m_settings.source;
    about.size = m_source;
    if (!m_settings.report) return;
    report_data report = m_builder.finish(std::move(about));
    for (report_event& event : report.events) event.test = m_settings.test;
    save_bytes(m_settings.folder + "/report.html", report_page({report}));
}

}  // namespace orva_fire
