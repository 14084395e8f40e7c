#include "apps/orva_fire/explain.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <regex>

#include "apps/orva_fire/error.h"
#include "apps/orva_fire/html.h"
#include "apps/orva_fire/picture_file.h"
#include "apps/orva_fire/reasons.h"

namespace orva_fire {
namespace {

namespace fs = std::filesystem;
using json = nlohmann::ordered_json;

const int k_most_sections = 200;
const int k_difference_times = 4;  // differences of interest begin at 20; four times that can be seen

// A stage's file and what is to be seen in it.
struct stage_text {
    const char* file;
    const char* text;
};
const stage_text k_stages[] = {
    {"1-seen.png", "what the detector sees"},
    {"2-difference.png", "difference from the picture before, four times as bright"},
    {"3-threshold.png", "difference above the threshold"},
    {"4-motion.png", "motion: the same, grown by one pixel"},
    {"5-colour.png", "the colour of fire, moving or not"},
    {"6-mask.png", "both, grown by one pixel"},
    {"7-components.png", "connected parts, a colour each"},
    {"8-boxes.png", "merged boxes: grey refused, yellow candidate, red reported"},
};

double rounded(double value) {
    return std::round(value * 1000) / 1000;
}

json box_json(const box& b) {
    return {{"x", b.x}, {"y", b.y}, {"width", b.width}, {"height", b.height}};
}

json boxes_json(const std::vector<box>& boxes) {
    json list = json::array();
    for (const box& b : boxes) list.push_back(box_json(b));
    return list;
}

bool was_compared(const box_evidence& b) {
    return b.ended >= verdict::too_rare;
}

json candidate_json(const explained_place& place, const picture_evidence& seen, const box_evidence& b) {
    json entry = box_json(to_source(b.place, seen.size, place.area));
    entry["seen"] = box_json(b.place);
    entry["rule"] = verdict_name(b.ended);
    entry["reason"] = reason(b);
    if (!remedy(b).empty()) entry["remedy"] = remedy(b);
    entry["area"] = b.area;
    if (b.pixels > 0) {
        entry["bright_share"] = rounded(1.0 * b.bright / b.pixels);
        entry["fire_pixels"] = b.fire;
        entry["fire_share"] = rounded(1.0 * b.fire / b.pixels);
    }
    if (b.centre > 0) {
        entry["brightness"] = {{"centre", b.centre}, {"around", b.around}, {"ratio", rounded(brightness_ratio(b))}};
    }
    if (was_compared(b)) {
        entry["matched"] = {
            {"frames", b.matched}, {"of", b.stored}, {"needed", b.needed}, {"seconds", rounded(b.span)}};
        entry["flicker"] = {
            {"share", rounded(flicker_share(b))}, {"mean_area", b.mean_area}, {"deviation", b.deviation}};
    }
    return entry;
}

std::string answer_text(const picture_evidence& seen) {
    if (seen.answered.empty()) return "Nothing is reported.";
    const std::string boxes =
        seen.answered.size() == 1 ? "One box is" : std::to_string(seen.answered.size()) + " boxes are";
    return boxes + (seen.fresh ? " reported, seen in this picture." : " reported, held from an earlier picture.");
}

ink ink_of(verdict ended) {
    if (ended == verdict::reported) return {255, 48, 32};
    return ended >= verdict::beyond_ten ? ink{255, 205, 40} : ink{170, 170, 170};
}

std::string folder_name(const explained_place& place, int64_t frame) {
    char name[96];
    std::snprintf(name, sizeof name, "picture-%06lld-zone-%zu-%zu", static_cast<long long>(frame), place.zone_index + 1,
                  place.channel + 1);
    return name;
}

std::string candidate_list(const explained_place& place, const picture_evidence& seen) {
    if (seen.boxes.empty()) return "<p>Nothing that moved had the colour of fire.</p>\n";
    std::string html = "<table><thead><tr><th>box</th><th>what became of it</th></tr></thead><tbody>\n";
    for (const box_evidence& b : seen.boxes) {
        const box at = to_source(b.place, seen.size, place.area);
        std::string why = html_text(reason(b));
        if (!remedy(b).empty()) why += "; <b>" + html_text(remedy(b)) + "</b>";
        html += "<tr><td>" + std::to_string(at.width) + " x " + std::to_string(at.height) + " at " +
                std::to_string(at.x) + ", " + std::to_string(at.y) + "</td><td>" + why + "</td></tr>\n";
    }
    return html + "</tbody></table>\n";
}

std::string section(const explained_place& place, const picture_evidence& seen, const std::string& folder) {
    std::string html = "<section>\n<h2>Picture " + std::to_string(seen.at.frame) + ", " + clock_text(seen.at.seconds) +
                       ", " + html_text(place.zone) + "</h2>\n<div class=\"shots pixels\">";
    for (const stage_text& stage : k_stages) {
        html += "<figure><img loading=\"lazy\" src=\"" + url_text(folder + "/" + stage.file) + "\" alt=\"" +
                stage.text + "\"><figcaption>" + stage.text + "</figcaption></figure>";
    }
    return html + "</div>\n<p>" + html_text(answer_text(seen)) + " " + std::to_string(seen.stored) +
           " of 50 frames are stored; a candidate must be found again in " + std::to_string(seen.needed) +
           " of them. <a href=\"" + url_text(folder + "/numbers.json") + "\">All numbers</a></p>\n" +
           candidate_list(place, seen) + "</section>\n";
}

void save(const std::string& folder, size_t stage, const grey_picture& picture) {
    write_png(folder + "/" + k_stages[stage].file, picture);
}

void save(const std::string& folder, size_t stage, const colour_picture& picture) {
    write_png(folder + "/" + k_stages[stage].file, picture);
}

grey_picture brighter(const grey_picture& picture) {
    grey_picture result = picture;
    for (uint8_t& byte : result.bytes) byte = static_cast<uint8_t>(std::min(255, byte * k_difference_times));
    return result;
}

}  // namespace

std::string explanation_json(const explained_place& place, const picture_evidence& seen, int threshold) {
    json all = {{"schema", 1}, {"frame", seen.at.frame}, {"seconds", rounded(seen.at.seconds)}, {"zone", place.zone}};
    all["channel"] = place.channel + 1;
    all["area"] = box_json(place.area);
    all["seen_size"] = {{"width", seen.size.width}, {"height", seen.size.height}};
    all["threshold"] = threshold;
    all["changed_pixels"] = seen.changed;
    all["mask_pixels"] = seen.mask;
    all["stored_frames"] = seen.stored;
    all["needed_frames"] = seen.needed;
    all["components"] = boxes_json(seen.components);
    all["boxes"] = json::array();
    for (const box_evidence& b : seen.boxes) all["boxes"].push_back(candidate_json(place, seen, b));
    json answered = json::array();
    for (const box& b : seen.answered) answered.push_back(box_json(to_source(b, seen.size, place.area)));
    all["reported"] = {{"boxes", answered}, {"fresh", seen.fresh}, {"text", answer_text(seen)}};
    return all.dump(2, ' ', false, json::error_handler_t::replace) + "\n";
}

colour_picture marked_boxes(nv21_picture& picture, const picture_evidence& seen) {
    colour_picture marked = coloured(picture);
    // The more a box came to matter, the later it is drawn.
    for (const int pass : {0, 1, 2}) {
        for (const box_evidence& b : seen.boxes) {
            const int rank = b.ended == verdict::reported ? 2 : b.ended >= verdict::beyond_ten ? 1 : 0;
            if (rank == pass) outline(marked, b.place, ink_of(b.ended));
        }
    }
    return marked;
}

colour_picture coloured_components(const grey_picture& mask) {
    static const ink k_inks[] = {{255, 99, 71},   {70, 170, 255}, {120, 220, 90},  {255, 205, 40},
                                 {200, 120, 255}, {80, 225, 210}, {255, 140, 200}, {210, 210, 210}};
    colour_picture result{mask.size, std::vector<uint8_t>(mask.bytes.size() * 3)};
    // A flood fill over neighbours by edge, as the labelling in software joins them.
    std::vector<uint8_t> seen(mask.bytes.size());
    std::vector<size_t> open;
    const auto width = static_cast<size_t>(mask.size.width);
    size_t parts = 0;
    for (size_t start = 0; start < mask.bytes.size(); ++start) {
        if ((mask.bytes[start] & 1) == 0 || seen[start]) continue;
        const ink colour = k_inks[parts++ % 8];
        open.assign(1, start);
        seen[start] = 1;
        const auto visit = [&](bool inside, size_t at) {
            if (!inside || seen[at] || (mask.bytes[at] & 1) == 0) return;
            seen[at] = 1;
            open.push_back(at);
        };
        while (!open.empty()) {
            const size_t at = open.back();
            open.pop_back();
            result.bytes[at * 3] = colour.red;
            result.bytes[at * 3 + 1] = colour.green;
            result.bytes[at * 3 + 2] = colour.blue;
            visit(at % width > 0, at - 1);
            visit(at % width + 1 < width, at + 1);
            visit(at >= width, at - width);
            visit(at + width < mask.bytes.size(), at + width);
        }
    }
    return result;
}

explain_writer::explain_writer(const std::string& folder, const std::string& title) : m_folder(folder), m_title(title) {
    std::error_code error;
    fs::create_directories(folder, error);
    if (error || !fs::is_directory(folder))
        throw io_error("cannot make the folder '" + folder + "': " + error.message());
    const std::regex ours("picture-[0-9]{6,}-zone-[0-9]+-[0-9]+");
    for (const auto& entry : fs::directory_iterator(folder)) {
        if (std::regex_match(entry.path().filename().string(), ours)) fs::remove_all(entry.path(), error);
    }
}

void explain_writer::write(const explained_place& place, nv21_picture& picture, const picture_evidence& seen,
                           const stage_pictures& stages) {
    const std::string name = folder_name(place, seen.at.frame), folder = m_folder + "/" + name;
    std::error_code error;
    fs::create_directories(folder, error);
    if (error) throw io_error("cannot make the folder '" + folder + "': " + error.message());
    save(folder, 0, coloured(picture));
    save(folder, 1, brighter(stages.difference));
    save(folder, 2, stages.motion);
    save(folder, 3, stages.moving);
    save(folder, 4, stages.colour);
    save(folder, 5, stages.mask);
    save(folder, 6, coloured_components(stages.mask));
    save(folder, 7, marked_boxes(picture, seen));
    save_bytes(folder + "/numbers.json", explanation_json(place, seen, stages.threshold));
    if (m_written++ < k_most_sections) m_sections += section(place, seen, name);
}

void explain_writer::finish() {
    const std::string title = "Explained: " + m_title;
    std::string page = page_start(title, "'self' data:") + "<h1>" + html_text(title) + "</h1>\n";
    if (m_written == 0) page += "<p>None of the chosen pictures was looked at.</p>\n";
    if (m_written > k_most_sections) {
        page += "<p>The first " + std::to_string(k_most_sections) + " of " + std::to_string(m_written) +
                " pictures; the folders hold the others.</p>\n";
    }
    save_bytes(m_folder + "/index.html", page + m_sections + page_end());
}

}  // namespace orva_fire
