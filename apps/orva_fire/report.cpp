#include "apps/orva_fire/report.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "apps/orva_fire/html.h"
#include "apps/orva_fire/reasons.h"
#include "apps/orva_fire/report_svg.h"

namespace orva_fire {
namespace {

// Every piece below returns HTML. Whatever is text goes through html_text where it is put in.
std::string element(const char* tag, const std::string& text) {
    return std::string("<") + tag + ">" + html_text(text) + "</" + tag + ">";
}

// A cell of a table; on a phone its row becomes a card, and the label stands before it. html: ready made.
std::string cell(const char* label, const std::string& html) {
    return std::string("<td data-l=\"") + label + "\">" + html + "</td>";
}

std::string size_text(picture_size size) {
    return std::to_string(size.width) + " x " + std::to_string(size.height);
}

std::string box_text(const box& b) {
    return std::to_string(b.width) + " x " + std::to_string(b.height) + " at " + std::to_string(b.x) + ", " +
           std::to_string(b.y);
}

std::string count_text(int64_t count, const char* one, const char* many) {
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

std::string number_text(double value, int digits) {
    char text[32];
    std::snprintf(text, sizeof text, "%.*f", digits, value);
    return text;
}

std::string zone_name(const report_data& run, size_t zone) {
    return zone < run.zones.size() ? run.zones[zone].name : "?";
}

std::string video_address(const report_event& event, double seconds) {
    if (event.video.empty()) return "";
    return url_text(event.video) + "#t=" + number_text(std::max(0.0, seconds - event.video_start), 2);
}

// A moment of an event; it leads into the annotated video if there is one.
std::string video_link(const report_event& event, double seconds) {
    const std::string address = video_address(event, seconds), text = html_text(clock_text(seconds));
    return address.empty() ? text : "<a href=\"" + html_text(address) + "\">" + text + "</a>";
}

std::string picture(const std::string& jpeg, const std::string& caption) {
    if (jpeg.empty()) return "";
    return "<figure><img src=\"" + data_uri("image/jpeg", jpeg) + "\" alt=\"" + html_text(caption) + "\"><figcaption>" +
           html_text(caption) + "</figcaption></figure>";
}

int64_t reports_of(const report_data& run) {
    const auto real = std::count_if(run.events.begin(), run.events.end(), [](const auto& e) { return !e.test; });
    return static_cast<int64_t>(real) + run.events_left_out;
}

double trouble_seconds(const report_data& run) {
    double sum = 0;
    for (const report_span& span : run.troubles) sum += span.to - span.from;
    return sum;
}

std::string verdict_text(const report_data& run) {
    if (run.frames == 0) return "No picture could be read.";
    const int64_t reports = reports_of(run);
    if (reports == 0 && !run.events.empty()) return "This was a drill: its flame was reported, and no other fire.";
    if (reports == 0) return "No fire was reported.";
    double first = -1;
    for (const report_event& event : run.events) {
        if (!event.test && (first < 0 || event.from < first)) first = event.from;
    }
    return "Fire was reported " + (reports == 1 ? std::string("once") : count_text(reports, "time", "times")) +
           ", first at " + clock_text(first) + ".";
}

// --- the parts of one run, in the order of the page -----------------------------------------------------------------

std::string verdict_card(const report_data& run) {
    const bool bad = run.frames == 0;
    std::string html = std::string("<div class=\"card verdict") +
                       (reports_of(run) > 0 ? " fire"
                        : bad               ? " bad"
                                            : "") +
                       "\">" + element("p", verdict_text(run));
    if (trouble_seconds(run) > 0) {
        html += element("p", "For " + duration_text(trouble_seconds(run)) + " the camera could not see well enough.");
    }
    return html + "</div>\n";
}

std::string facts(const report_data& run) {
    const auto fact = [](const std::string& name, const std::string& value) {
        return "<div><small>" + html_text(name) + "</small>" + element("b", value) + "</div>";
    };
    return "<div class=\"facts\">" + fact("length", duration_text(run.seconds)) + fact("picture", size_text(run.size)) +
           fact("pictures a second", number_text(run.rate, 1)) + fact("pictures read", std::to_string(run.frames)) +
           fact("looked at", std::to_string(run.passed)) + fact("zones", std::to_string(run.zones.size())) + "</div>\n";
}

std::string notes(const report_data& run) {
    if (run.notes.empty()) return "";
    std::string html = "<div class=\"card\"><h3>Notes</h3>";
    for (const std::string& note : run.notes) html += element("p", note);
    return html + "</div>\n";
}

std::string axis(double seconds) {
    std::string html = "<div class=\"axis\" aria-hidden=\"true\">";
    for (int quarter = 0; quarter <= 4; ++quarter) html += element("span", clock_text(seconds * quarter / 4));
    return html + "</div>";
}

std::string lane(const std::string& name, const std::string& svg) {
    return "<div class=\"lane\">" + element("span", name) + svg + "</div>";
}

std::string zone_timeline(const report_data& run, size_t index) {
    const report_zone& zone = run.zones[index];
    std::vector<lane_bar> reports, troubles;
    for (const report_event& event : run.events) {
        if (event.zone != index) continue;
        const std::string text = (event.test ? "test " : "event ") + std::to_string(event.id) + ": " +
                                 clock_text(event.from) + " to " + clock_text(event.to);
        reports.push_back({{event.from, event.to, text}, video_address(event, event.from)});
    }
    for (const report_span& span : run.troubles) {
        troubles.push_back(
            {{span.from, span.to, span.text + ": " + clock_text(span.from) + " to " + clock_text(span.to)}, ""});
    }
    std::vector<double> nearness, motion;
    for (const report_sample& sample : zone.samples) {
        nearness.push_back(sample.nearness);
        // Motion covers little of most pictures: the root shows one per cent as a tenth of the height.
        motion.push_back(std::sqrt(std::clamp(sample.motion, 0.0, 1.0)));
    }
    return "<div class=\"zone\">" + element("h3", zone.name) +
           lane("reports", bar_lane(reports, run.seconds, "f-fire", "reports")) +
           lane("candidates: how near they came to a report (a full lane is one)",
                level_lane(nearness, run.step, run.seconds, "f-near", "candidates", 0.5)) +
           lane("motion", level_lane(motion, run.step, run.seconds, "f-motion", "motion", 0)) +
           lane("trouble", bar_lane(troubles, run.seconds, "f-bad", "trouble")) + axis(run.seconds) + "</div>\n";
}

std::string timeline(const report_data& run) {
    std::string html = "<h2>Timeline</h2>\n<div class=\"card\">";
    for (size_t i = 0; i < run.zones.size(); ++i) html += zone_timeline(run, i);
    return html +
           "<p class=\"soft\">Candidates above the dashed line were bright, had the colour of fire and could be "
           "compared "
           "with 50 earlier pictures; below it something was missing before that. The motion lane shows the square "
           "root "
           "of the share of pixels that changed.</p></div>\n";
}

std::string trouble_table(const report_data& run) {
    std::string rows;
    for (const report_span& span : run.troubles) {
        rows += "<tr>" + cell("from", clock_text(span.from)) + cell("to", clock_text(span.to)) +
                cell("reason", html_text(span.text)) + "</tr>\n";
    }
    if (rows.empty()) return "";
    return "<h2>Trouble</h2>\n<table><thead><tr><th>from</th><th>to</th><th>reason</th></tr></thead><tbody>\n" + rows +
           "</tbody></table>\n";
}

std::string event_row(const report_data& run, const report_event& event) {
    std::string end = video_link(event, event.to);
    if (event.input_ended) end += " <small>(the pictures ended)</small>";
    const std::string name = std::to_string(event.id) + (event.test ? " (test)" : "");
    return "<tr>" + cell("event", name) + cell("zone", html_text(zone_name(run, event.zone))) +
           cell("start", video_link(event, event.from)) + cell("end", end) +
           cell("length", duration_text(event.to - event.from)) +
           cell("largest box", box_text(event.largest) + ", at " + video_link(event, event.largest_at)) + "</tr>\n";
}

std::string event_pictures(const report_event& event) {
    const std::string name = "event " + std::to_string(event.id);
    const std::string shots = picture(event.start_picture, name + ", start at " + clock_text(event.from)) +
                              picture(event.largest_picture, name + ", largest at " + clock_text(event.largest_at));
    return shots.empty() ? "" : "<div class=\"shots\">" + shots + "</div>\n";
}

std::string events(const report_data& run) {
    std::string html = "<h2>Events</h2>\n";
    if (run.events.empty()) return html + "<p>None.</p>\n";
    html +=
        "<table><thead><tr><th>event</th><th>zone</th><th>start</th><th>end</th><th>length</th><th>largest box</th>"
        "</tr></thead><tbody>\n";
    for (const report_event& event : run.events) html += event_row(run, event);
    html += "</tbody></table>\n";
    if (run.events_left_out > 0) {
        html += element("p", count_text(run.events_left_out, "further event is", "further events are") +
                                 " not listed here; the events file has them all.");
    }
    for (const report_event& event : run.events) html += event_pictures(event);
    return html;
}

std::string miss_row(const report_data& run, const report_miss& miss) {
    std::string why = html_text(miss.reason);
    if (!miss.remedy.empty()) why += "; <b>" + html_text(miss.remedy) + "</b>";
    return "<tr>" + cell("when", clock_text(miss.from) + " to " + clock_text(miss.to)) +
           cell("zone", html_text(zone_name(run, miss.zone))) +
           cell("nearest at", clock_text(miss.at) + "<br>" + box_text(miss.place)) + cell("why not", why) +
           (miss.picture.empty() ? "<td></td>"
                                 : "<td><img src=\"" + data_uri("image/jpeg", miss.picture) +
                                       "\" alt=\"what the detector saw\" width=\"176\"></td>") +
           "</tr>\n";
}

std::string misses(const report_data& run) {
    std::string html = "<h2>Nearest misses</h2>\n";
    if (run.misses.empty()) return html + "<p>Nothing else came near a report.</p>\n";
    html +=
        "<p class=\"soft\">What moved and had the colour of fire but was not reported, the nearest first.</p>\n"
        "<table><thead><tr><th>when</th><th>zone</th><th>nearest at</th><th>why not</th><th>seen</th></tr></thead>"
        "<tbody>\n";
    for (const report_miss& miss : run.misses) html += miss_row(run, miss);
    return html + "</tbody></table>\n";
}

// What the limits of the detector's picture mean in the source's.
std::string scaling_row(const report_zone& zone) {
    const double times = zone.analysis.width > 0 ? 1.0 * zone.cut.width / zone.analysis.width : 1;
    const std::string least =
        std::to_string(std::lround(std::ceil(3 * times))) + " x " + std::to_string(std::lround(std::ceil(5 * times)));
    return "<tr>" + cell("zone", html_text(zone.name)) + cell("place", box_text(zone.place)) +
           cell("looked at in", count_text(zone.channels, "piece of ", "pieces of ") + size_text(zone.cut)) +
           cell("as the detector sees it", size_text(zone.analysis) + ", " + number_text(times, 1) + " times smaller") +
           cell("smallest fire", least + " pixels") + cell("grade", std::to_string(zone.grade)) + "</tr>\n";
}

std::string scaling(const report_data& run) {
    std::string html =
        "<h2>How the picture was scaled</h2>\n<table><thead><tr><th>zone</th><th>place</th><th>looked at in</th>"
        "<th>as the detector sees it</th><th>smallest fire</th><th>grade</th></tr></thead><tbody>\n";
    for (const report_zone& zone : run.zones) html += scaling_row(zone);
    return html +
           "</tbody></table>\n<p class=\"soft\">Pictures are scaled to 352 x 288 pixels at most. What is smaller "
           "than the smallest fire there cannot be reported; a zone or tiles bring it nearer.</p>\n";
}

std::string settings(const report_data& run) {
    std::string html = "<h2>Settings</h2>\n<table><tbody>\n";
    for (const auto& setting : run.settings) {
        html += "<tr><th scope=\"row\">" + html_text(setting.first) + "</th><td>" + html_text(setting.second) +
                "</td></tr>\n";
    }
    html += "<tr><th scope=\"row\">pictures left out</th><td>" + std::to_string(run.repeated) + " repeated, " +
            std::to_string(run.thinned) + " beyond the rate</td></tr>\n";
    return html + "</tbody></table>\n";
}

std::string made_by(const report_data& run) {
    std::string text = "Made by orva-fire " + run.version;
    if (!run.made_at.empty()) text += " on " + run.made_at;
    return "<p class=\"soft\">" + html_text(text) + ".</p>\n";
}

std::string run_parts(const report_data& run) {
    return verdict_card(run) + facts(run) + notes(run) + timeline(run) + events(run) + misses(run) +
           trouble_table(run) + scaling(run) + settings(run) + made_by(run);
}

std::string overview(const std::vector<report_data>& runs) {
    std::string html = "<table><thead><tr><th>source</th><th>length</th><th>outcome</th></tr></thead><tbody>\n";
    for (size_t i = 0; i < runs.size(); ++i) {
        html += "<tr>" +
                cell("source", "<a href=\"#run" + std::to_string(i + 1) + "\">" + html_text(runs[i].source) + "</a>") +
                cell("length", duration_text(runs[i].seconds)) + cell("outcome", html_text(verdict_text(runs[i]))) +
                "</tr>\n";
    }
    return html + "</tbody></table>\n";
}

}  // namespace

std::string report_page(const std::vector<report_data>& runs) {
    if (runs.size() == 1) {
        const std::string title = "Fire report: " + runs[0].source;
        return page_start(title, "data:") + element("h1", title) + "\n" + run_parts(runs[0]) + page_end();
    }
    const std::string title = "Fire report: " + count_text(static_cast<int64_t>(runs.size()), "source", "sources");
    std::string page = page_start(title, "data:") + element("h1", title) + "\n" + overview(runs);
    for (size_t i = 0; i < runs.size(); ++i) {
        page += "<section id=\"run" + std::to_string(i + 1) + "\">\n<h1>" + html_text(runs[i].source) + "</h1>\n" +
                run_parts(runs[i]) + "</section>\n";
    }
    return page + page_end();
}

}  // namespace orva_fire
