#include "tests/reference/ref_log.h"

#include <cstdio>

namespace ref {

namespace {

struct branch_entry {
    const char* name;
    bool reachable;
};

// In the order of the enumeration.
const branch_entry k_branches[] = {
    {"frame taken", true},
    {"frame with boxes", true},
    {"frame refused for its format", true},
    {"frame refused for its width", true},
    {"frame refused for its height", true},
    {"frame refused for a null plane", true},
    {"frame refused because the region cannot be placed", true},
    {"region rescaled", true},
    {"region aligned", true},
    {"region used as given", true},
    {"first size recorded", true},
    {"size as before", true},
    {"size changed while nothing was reported", true},
    {"size changed while boxes were reported", true},
    {"working images resized", true},
    {"frame without components", true},
    {"frame with components", true},
    {"two components merged", true},
    {"candidate covered by another", true},
    {"eleventh verified candidate", true},
    {"candidate narrower than 3", true},
    {"candidate lower than 5", true},
    {"candidate of fewer than 20 pixels", true},
    {"candidate with too few bright pixels", true},
    // A candidate's own pixels, 20 at least, are all set in the mask that is counted.
    {"candidate with fewer than 20 fire pixels", false},
    {"candidate with too small a share of fire pixels", true},
    {"candidate not brighter than its surround", true},
    {"candidate verified as fire", true},
    {"surround cut at the left", true},
    {"surround cut at the top", true},
    {"surround cut at the right", true},
    {"surround cut at the bottom", true},
    {"history gathering", true},
    {"history not full and nothing to add", true},
    {"history full, oldest list replaced", true},
    {"history full and left alone", true},
    {"full history asked without candidates", true},
    {"candidate seen in too few frames", true},
    {"candidate too steady", true},
    {"candidate too wild", true},
    {"candidate reported", true},
    // Ten candidates come in at most, so the result is never full before the last of them.
    {"candidate met a full result", false},
    {"hold: idle, nothing new", true},
    {"hold: idle, new boxes", true},
    {"hold: frozen, nothing new", true},
    {"hold: frozen, new boxes ignored", true},
    {"hold: kept, nothing new", true},
    {"hold: kept boxes replaced", true},
    {"hold: limit reached, report ended", true},
    {"hold: limit reached, boxes replaced", true},
};
static_assert(sizeof(k_branches) / sizeof(k_branches[0]) == static_cast<std::size_t>(branch::count_of_branches),
              "one entry for each branch");

std::string key_of(const char* word, const char* file, const char* function, int line) {
    return std::string(word) + " " + file + " " + function + " " + std::to_string(line);
}

}  // namespace

const char* name_of(branch b) {
    return k_branches[static_cast<std::size_t>(b)].name;
}

bool reachable_through_interface(branch b) {
    return k_branches[static_cast<std::size_t>(b)].reachable;
}

void log_book::shape(const char* key_word, const char* format, const char* file, const char* function, int line) {
    char buffer[256];
    std::snprintf(buffer, sizeof buffer, format, file, function, line);
    m_text += buffer;
    ++m_lines[key_of(key_word, file, function, line)];
}

void log_book::entered(const char* file, const char* function, int line) {
    shape("entered", "[Fire Detection: %s: %s] %d entered \n", file, function, line);
}

void log_book::error(const char* file, const char* function, int line) {
    shape("error", "ERR. [Fire Detection: %s::%s : %d] \n", file, function, line);
}

void log_book::warn_no_mutex(const char* file, const char* function, int line) {
    shape("warning", "WARN.[Fire Detection: %s::%s : %d] \n", file, function, line);
    m_text += "mutex not create\n";
}

void log_book::info_no_mutex(const char* file, const char* function, int line) {
    shape("info", "INFO.[Fire Detection: %s::%s: %d] \n", file, function, line);
    m_text += "CreateMutex failed \n";
}

void log_book::plain(const char* key, const std::string& text) {
    m_text += text;
    ++m_lines[key];
}

std::string log_book::take_text() {
    std::string taken;
    taken.swap(m_text);
    return taken;
}

long log_book::lines(const std::string& key) const {
    const auto found = m_lines.find(key);
    return found == m_lines.end() ? 0 : found->second;
}

std::vector<std::string> reachable_line_keys() {
    return {
        "entered FireDetection_Api ORVA_FireDetection_Init 10",
        "entered FireDetection_Api ORVA_FireDetection_UnInit 24",
        "entered FireDetection_Api ORVA_FireDetection_Start 36",
        "entered FireDetection_Api ORVA_FireDetection_Start 41",
        "entered FireDetection_Api ORVA_FireDetection_Start 48",
        "entered FireDetection_Api ORVA_FireDetection_Start 59",
        "entered FireDetection_Api ORVA_FireDetection_Start 64",
        "entered FireDetection_Api ORVA_FireDetection_Start 72",
        "entered FireDetection_Api ORVA_FireDetection_Stop 83",
        "entered FireDetection_Api ORVA_FireDetection_Stop 89",
        "entered FireDetection_Api ORVA_FireDetection_SetFrame 105",
        "entered FireDetection_Api ORVA_FireDetection_SetFrame 111",
        "entered FireDetection_Api ORVA_FireDetection_SetFrame 117",
        "entered FireDetection_Api ORVA_FireDetection_SetSensitiveGrade 127",
        "entered FireDetection_Api ORVA_FireDetection_SetSensitiveGrade 134",
        "entered FireDetection_Api ORVA_FireDetection_SetSensitiveGrade 140",
        "entered FireDetectionManager Start 70",
        "entered FireDetectionManager Stop 115",
        "entered FireDetectionManager FireDetectionMain 124",
        "entered FireDetectionManager FireDetectionMain 140",
        "entered FireDetectionManager SetSensitiveGrade 151",
        "entered FireDetectionManager SetSensitiveGrade 167",
        "entered Handledispather CreateHandle 86",
        "entered Mutex Close 59",
        "warning Mutex Wait 79",
        "warning Mutex Release 115",
        "error frame_process set_sensitive 67",
        "error frame_process set_frame 78",
        "error foreground_analysis set_sensitive 36",
        "ratio of bright and fire pixels",
        "ratio of centre and surround",
        "ratio of deviation and mean area",
    };
}

}  // namespace ref
