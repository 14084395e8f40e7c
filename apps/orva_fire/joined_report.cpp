#include "apps/orva_fire/joined_report.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <functional>

#include "apps/orva_fire/html.h"
#include "apps/orva_fire/reasons.h"
#include "apps/orva_fire/report_svg.h"

namespace orva_fire {
namespace {

namespace fs = std::filesystem;

const size_t k_most_events = 500;  // on the page; the file has them all

// Every piece below returns HTML. Whatever is text goes through html_text where it is put in.
std::string element(const char* tag, const std::string& text) {
    return std::string("<") + tag + ">" + html_text(text) + "</" + tag + ">";
}

std::string cell(const char* label, const std::string& html) {
    return std::string("<td data-l=\"") + label + "\">" + html + "</td>";
}

std::string link(const std::string& address, const std::string& text) {
    return "<a href=\"" + html_text(address) + "\">" + html_text(text) + "</a>";
}

std::string count_text(size_t count, const char* one, const char* many) {
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

size_t count_of(const joined_results& joined, const std::function<bool(const joined_result&)>& counts) {
    return static_cast<size_t>(std::count_if(joined.results.begin(), joined.results.end(), counts));
}

bool has_fire(const joined_result& result) {
    return result.record.events > 0;
}

bool has_failed(const joined_result& result) {
    return !result.problem.empty();
}

double seconds_looked_at(const joined_results& joined) {
    double seconds = 0;
    for (const joined_result& result : joined.results) seconds += result.record.seconds;
    return seconds;
}

size_t events_of(const joined_results& joined) {
    size_t events = 0;
    for (const joined_result& result : joined.results) events += static_cast<size_t>(result.record.events);
    return events;
}

std::string address_in(const joined_result& result, const joined_page_setting& setting, const std::string& file) {
    return url_text(way_between(setting.folder, result.folder) + "/" + file);
}

// A moment of the annotated video, if there is one.
std::string moment_link(const joined_result& result, const joined_page_setting& setting, double seconds) {
    if (!result.has_video) return html_text(clock_text(seconds));
    char at[32];
    std::snprintf(at, sizeof at, "#t=%.2f", seconds);
    return link(address_in(result, setting, "annotated.mp4") + at, clock_text(seconds));
}

std::string name_link(const joined_result& result, const joined_page_setting& setting) {
    return link(address_in(result, setting, result.has_report ? "report.html" : ""), result.name);
}

std::string verdict_card(const joined_results& joined) {
    const size_t fires = count_of(joined, has_fire), failed = count_of(joined, has_failed);
    const bool bad = failed + joined.missing.size() > 0 || joined.results.empty();
    std::string html = std::string("<div class=\"card verdict") + (fires > 0 ? " fire" : bad ? " bad" : "") + "\">";
    html += element("p", fires == 0 ? "No fire was reported."
                                    : "Fire was reported in " + count_text(fires, "recording", "recordings") + ".");
    if (bad) {
        html += element("p", count_text(failed, "recording", "recordings") + " could not be read to the end, " +
                                 count_text(joined.missing.size(), "is", "are") + " missing.");
    }
    return html + "</div>\n";
}

std::string facts(const joined_results& joined) {
    const auto fact = [](const char* name, const std::string& value) {
        return "<div>" + element("small", name) + element("b", value) + "</div>";
    };
    return "<div class=\"facts\">" + fact("recordings", std::to_string(joined.results.size())) +
           fact("length", duration_text(seconds_looked_at(joined))) +
           fact("with fire", std::to_string(count_of(joined, has_fire))) +
           fact("events", std::to_string(events_of(joined))) +
           fact("failed", std::to_string(count_of(joined, has_failed))) +
           fact("missing", std::to_string(joined.missing.size())) + "</div>\n";
}

std::string notes(const joined_results& joined) {
    if (joined.notes.empty()) return "";
    std::string html = "<div class=\"card\"><h3>Notes</h3>";
    for (const std::string& note : joined.notes) html += element("p", note);
    return html + "</div>\n";
}

std::string unreliable(const joined_results& joined, const joined_page_setting& setting) {
    std::string rows;
    for (const joined_result& result : joined.results) {
        if (!has_failed(result)) continue;
        rows += "<tr>" + cell("recording", name_link(result, setting)) + cell("state", "failed") +
                cell("reason", html_text(result.problem)) + "</tr>\n";
    }
    for (const missing_result& missing : joined.missing) {
        rows += "<tr>" + cell("recording", html_text(missing.name)) + cell("state", "missing") +
                cell("reason", html_text(missing.reason)) + "</tr>\n";
    }
    if (rows.empty()) return "";
    return "<h2>Failed and missing</h2>\n<table><thead><tr><th>recording</th><th>state</th><th>reason</th></tr>"
           "</thead><tbody>\n" +
           rows + "</tbody></table>\n";
}

std::string event_row(const joined_result& result, const joined_event& event, const joined_page_setting& setting) {
    std::string end = moment_link(result, setting, event.to);
    if (event.input_ended) end += " <small>(the pictures ended)</small>";
    std::string picture;
    if (!event.snapshot.empty()) {
        picture = "<img loading=\"lazy\" width=\"240\" alt=\"the event at its largest\" src=\"" +
                  html_text(address_in(result, setting, event.snapshot)) + "\">";
    }
    return "<tr>" + cell("recording", name_link(result, setting)) +
           cell("event", std::to_string(event.id) + (event.test ? " (test)" : "")) +
           cell("zone", html_text(event.zone)) + cell("start", moment_link(result, setting, event.from)) +
           cell("end", end) + cell("length", duration_text(event.to - event.from)) + cell("picture", picture) +
           "</tr>\n";
}

std::string events(const joined_results& joined, const joined_page_setting& setting) {
    std::string rows;
    size_t shown = 0, all = 0;
    for (const joined_result& result : joined.results) {
        all += result.events.size();
        for (const joined_event& event : result.events) {
            if (shown++ < k_most_events) rows += event_row(result, event, setting);
        }
    }
    if (rows.empty()) return "<h2>Events</h2>\n<p>None.</p>\n";
    std::string html =
        "<h2>Events</h2>\n<table><thead><tr><th>recording</th><th>event</th><th>zone</th><th>start</th><th>end</th>"
        "<th>length</th><th>picture</th></tr></thead><tbody>\n" +
        rows + "</tbody></table>\n";
    if (all > k_most_events) {
        html += element("p", count_text(all - k_most_events, "further event is", "further events are") +
                                 " not listed here; events.jsonl has them all.");
    }
    return html;
}

std::string outcome_text(const joined_result& result) {
    std::string text = has_failed(result) ? "failed" : has_fire(result) ? "fire" : "no fire";
    if (has_failed(result) && has_fire(result)) text += ", fire before that";
    if (result.trouble > 0) text += "; could not see for " + duration_text(result.trouble);
    return text;
}

std::string recording_row(const joined_result& result, const joined_page_setting& setting) {
    std::vector<lane_bar> bars;
    for (const joined_event& event : result.events) {
        const std::string text =
            "event " + std::to_string(event.id) + ": " + clock_text(event.from) + " to " + clock_text(event.to);
        bars.push_back({{event.from, event.to, text}, ""});
    }
    const std::string lane =
        bars.empty() ? ""
                     : "<div class=\"lane\">" + bar_lane(bars, result.record.seconds, "f-fire", "reports") + "</div>";
    return "<tr>" + cell("recording", name_link(result, setting)) +
           cell("length", duration_text(result.record.seconds)) + cell("outcome", html_text(outcome_text(result))) +
           cell("events", std::to_string(result.record.events)) +
           cell("first at", has_fire(result) ? moment_link(result, setting, result.record.first) : "") +
           cell("reports", lane) + "</tr>\n";
}

std::string recordings(const joined_results& joined, const joined_page_setting& setting) {
    std::string html =
        "<h2>Recordings</h2>\n<table><thead><tr><th>recording</th><th>length</th><th>outcome</th><th>events</th>"
        "<th>first at</th><th>reports</th></tr></thead><tbody>\n";
    for (const joined_result& result : joined.results) html += recording_row(result, setting);
    return html + "</tbody></table>\n";
}

std::string made_by(const joined_page_setting& setting) {
    std::string text = "Joined by orva-fire " + setting.version;
    if (!setting.made_at.empty()) text += " on " + setting.made_at;
    return "<p class=\"soft\">" + html_text(text) + ".</p>\n";
}

}  // namespace

std::string way_between(const std::string& from, const std::string& to) {
    std::error_code error;
    const fs::path start = fs::weakly_canonical(fs::absolute(from), error);
    const fs::path end = fs::weakly_canonical(fs::absolute(to), error);
    return end.lexically_relative(start).generic_string();
}

std::string joined_summary(const joined_results& joined) {
    return count_text(joined.results.size(), "recording", "recordings") + ", " +
           std::to_string(count_of(joined, has_fire)) + " with fire reported, " +
           std::to_string(count_of(joined, has_failed)) + " failed, " + std::to_string(joined.missing.size()) +
           " missing";
}

std::string joined_page(const joined_results& joined, const joined_page_setting& setting) {
    const std::string title = "Fire report: " + count_text(joined.results.size(), "recording", "recordings");
    // Pictures lie beside the results, the page holds none.
    return page_start(title, "'self' data:") + element("h1", title) + "\n" + verdict_card(joined) + facts(joined) +
           notes(joined) + events(joined, setting) + unreliable(joined, setting) + recordings(joined, setting) +
           made_by(setting) + page_end();
}

}  // namespace orva_fire
