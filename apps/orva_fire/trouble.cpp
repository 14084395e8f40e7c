#include "apps/orva_fire/trouble.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace orva_fire {
namespace {

const int k_columns = 64;
const int k_rows = 36;
const int k_points = k_columns * k_rows;
const double k_between_measures = 0.5;

// A lens cap or a room without any light. A dark room in which one lamp shines is not dark in this sense: fire shines
// too.
const double k_dark = 24;
const double k_light = 32;

// A point at 250 has lost its colour. With three quarters of the picture like that, fire has nothing to stand out from.
const int k_clipped = 250;
const double k_washed_out = 0.75;
const double k_not_washed_out = 0.6;

// Infrared pictures have chroma 128 but for the coder's rounding; the greyest scene in colour has a few coloured
// points.
const double k_grey = 3;
const double k_coloured = 4;

// The library needs 50 pictures with moving fire colour; slower than this they take more than 12 seconds.
const double k_rate_window = 10;
const int k_slow = 40;
const int k_quick = 45;

// A source that is silent for this long is absent; short hiccups of a network are not worth a message.
const double k_absent = 10;

// The number that 99 of 100 stay below or at.
template <class Number>
double percentile_99(std::vector<Number>& numbers) {
    const auto nth = numbers.begin() + static_cast<ptrdiff_t>(numbers.size() * 99 / 100);
    std::nth_element(numbers.begin(), nth, numbers.end());
    return *nth;
}

}  // namespace

const char* trouble_name(trouble_reason reason) {
    static const char* const names[] = {"absent", "frozen", "dark", "washed_out", "no_colour", "too_slow"};
    return names[static_cast<size_t>(reason)];
}

const char* trouble_sentence(trouble_reason reason) {
    static const char* const sentences[] = {
        "no pictures come from the source",
        "the picture is frozen: only repeats of one picture come, and fire is found by its movement",
        "the picture is black: the lens may be covered, or there is no light at all",
        "the picture is washed out: most of it is white, and fire has nothing to stand out from",
        "the picture has no colour, as with infrared light at night, and fire is found by its colour",
        "fewer than 4 pictures a second come: confirming a fire takes more than 12 seconds"};
    return sentences[static_cast<size_t>(reason)];
}

picture_look picture_gauge::measure(const AVFrame& picture) {
    std::vector<uint8_t> luma(k_points), u(k_points), v(k_points);
    picture_colour target;
    target.format = AV_PIX_FMT_YUV444P;
    target.full_range = true;
    uint8_t* const planes[4] = {luma.data(), u.data(), v.data(), nullptr};
    const int strides[4] = {k_columns, k_columns, k_columns, 0};
    m_scaler.convert(picture, target, {k_columns, k_rows}, planes, strides);

    picture_look look;
    const auto clipped = std::count_if(luma.begin(), luma.end(), [](uint8_t y) { return y >= k_clipped; });
    look.clipped = static_cast<double>(clipped) / k_points;
    look.bright = percentile_99(luma);
    std::vector<double> distances(k_points);
    for (size_t i = 0; i < distances.size(); ++i) distances[i] = std::hypot(u[i] - 128.0, v[i] - 128.0);
    look.colour = percentile_99(distances);
    return look;
}

void slow_switch::observe(bool condition, double seconds) {
    if (condition == m_raised) {
        m_changed.reset();
        return;
    }
    if (!m_changed) m_changed = seconds;
    if (seconds - *m_changed < (m_raised ? m_relief : m_onset)) return;
    if (condition) m_since = *m_changed;
    m_raised = condition;
    m_changed.reset();
}

// Onset and relief of each reason in seconds, in the order of the names.
trouble_watcher::trouble_watcher()
    : m_switches{slow_switch(k_absent, 2), slow_switch(30, 2),  slow_switch(10, 5),
                 slow_switch(10, 5),       slow_switch(10, 10), slow_switch(5, 5)} {}

void trouble_watcher::look_at(const AVFrame& picture, double seconds) {
    if (m_measured && seconds - *m_measured < k_between_measures) return;
    m_measured = seconds;
    const picture_look look = m_gauge.measure(picture);
    // Two levels each: what is in trouble has to become clearly better.
    of(trouble_reason::dark).observe(look.bright < (raised(trouble_reason::dark) ? k_light : k_dark), seconds);
    of(trouble_reason::washed_out)
        .observe(look.clipped > (raised(trouble_reason::washed_out) ? k_not_washed_out : k_washed_out), seconds);
    of(trouble_reason::no_colour)
        .observe(look.colour < (raised(trouble_reason::no_colour) ? k_coloured : k_grey), seconds);
}

void trouble_watcher::count(double seconds) {
    m_times.push_back(seconds);
    while (m_times.front() <= seconds - k_rate_window) m_times.pop_front();
    if (seconds - *m_first < k_rate_window) return;
    const int limit = raised(trouble_reason::too_slow) ? k_quick : k_slow;
    of(trouble_reason::too_slow).observe(static_cast<int>(m_times.size()) < limit, seconds);
}

std::vector<trouble_event> trouble_watcher::changes(double seconds) {
    std::optional<trouble_reason> worst;
    for (int i = k_trouble_reasons - 1; i >= 0; --i) {
        const auto reason = static_cast<trouble_reason>(i);
        if (raised(reason)) worst = reason;
    }
    std::vector<trouble_event> events;
    if (worst == m_current) return events;
    if (m_current) events.push_back({false, *m_current, seconds, m_current_since});
    if (worst) {
        m_current_since = of(*worst).since();
        events.push_back({true, *worst, seconds, m_current_since});
    }
    m_current = worst;
    return events;
}

std::vector<trouble_event> trouble_watcher::observe(const AVFrame& picture, double seconds, bool repeated) {
    std::vector<trouble_event> events;
    if (m_last && seconds - *m_last >= k_absent) {
        events = no_picture(seconds);
        m_first.reset();  // the rate is that of the pictures that come, once they come again
        m_times.clear();
    }
    if (!m_first) m_first = seconds;
    of(trouble_reason::absent).observe(false, seconds);
    of(trouble_reason::frozen).observe(repeated, seconds);
    look_at(picture, seconds);
    count(seconds);
    m_last = seconds;
    for (const trouble_event& event : changes(seconds)) events.push_back(event);
    return events;
}

std::vector<trouble_event> trouble_watcher::no_picture(double seconds) {
    if (!m_last) m_last = seconds;
    slow_switch& absent = of(trouble_reason::absent);
    // True from the last picture on; pictures that follow one another closely never get near the onset.
    absent.observe(true, *m_last);
    absent.observe(true, seconds);
    return changes(seconds);
}

}  // namespace orva_fire
