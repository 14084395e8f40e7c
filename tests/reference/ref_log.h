// The plain twin of the library, written from its rules and sharing no code with it; it is never made faster.
// This file: the text that the library would print to standard output, and counts of what the twin met on its way.
#ifndef ORVA_TESTS_REFERENCE_REF_LOG_H
#define ORVA_TESTS_REFERENCE_REF_LOG_H

#include <array>
#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace ref {

// Turns of the road that a frame or a call can take. One is counted each time the twin takes it, so that a comparison
// can show which turns its scenes never reached.
enum class branch {
    // A frame at the door.
    frame_taken,
    frame_with_boxes,
    refused_format,
    refused_width,
    refused_height,
    refused_null_plane,
    refused_region,
    // The region and its size.
    region_rescaled,
    region_aligned,
    region_as_given,
    size_first,
    size_same,
    size_changed_idle,
    size_changed_reporting,
    stage_resized,
    // Components and candidates.
    no_components,
    components_found,
    components_merged,
    candidate_covered,
    candidate_eleventh,
    // Verification of a candidate, by its outcome; `surround_cut_*` say where the surround met the region's edge.
    verify_too_narrow,
    verify_too_low,
    verify_too_small,
    verify_too_dark,
    verify_too_few_fire,
    verify_too_thin_fire,
    verify_not_brighter,
    verify_fire,
    surround_cut_left,
    surround_cut_top,
    surround_cut_right,
    surround_cut_bottom,
    // History.
    history_gathering,
    history_idle,
    history_full_aged,
    history_full_kept,
    // Stability of a candidate, by its outcome.
    stable_no_candidates,
    stable_too_few_frames,
    stable_too_steady,
    stable_too_wild,
    stable_reported,
    stable_result_full,
    // Holding: idle means that nothing is being reported. Frozen are entries 0 to 5, kept 6 to 14, limit is 15.
    hold_idle_empty,
    hold_idle_new,
    hold_frozen_empty,
    hold_frozen_boxes,
    hold_kept_empty,
    hold_kept_replaced,
    hold_limit_ended,
    hold_limit_replaced,
    count_of_branches
};

const char* name_of(branch b);

// False for the turns that no sequence of the six exported calls can take; the reason stands beside each in the source.
bool reachable_through_interface(branch b);

// Text and counts of one twin. Not shared between threads: each twin has its own.
class log_book {
public:
    void hit(branch b) { ++m_hits[static_cast<std::size_t>(b)]; }
    long hits(branch b) const { return m_hits[static_cast<std::size_t>(b)]; }

    // The four shapes of a log line, and the lines without a prefix. Each is counted under a key: for the shapes
    // "<shape> <file> <function> <line>" with shape entered, error, warning or info; for the others the key given.
    void entered(const char* file, const char* function, int line);
    void error(const char* file, const char* function, int line);
    void warn_no_mutex(const char* file, const char* function, int line);
    void info_no_mutex(const char* file, const char* function, int line);
    void plain(const char* key, const std::string& text);

    const std::string& text() const { return m_text; }
    std::string take_text();  // gives the text and starts an empty one; the counts stay

    long lines(const std::string& key) const;  // how often the line with this key was printed
    const std::map<std::string, long>& line_counts() const { return m_lines; }

private:
    void shape(const char* key_word, const char* format, const char* file, const char* function, int line);

    std::string m_text;
    std::map<std::string, long> m_lines;
    std::array<long, static_cast<std::size_t>(branch::count_of_branches)> m_hits{};
};

// The keys of every line that the six exported calls can print in a build without accelerator and with memory to spare.
std::vector<std::string> reachable_line_keys();

}  // namespace ref

#endif
