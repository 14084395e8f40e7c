#include "apps/orva_fire/progress.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace orva_fire {
namespace {

const int k_bar_width = 20;  // the whole line stays below 80 columns
const std::chrono::milliseconds k_pause(200);

std::string clock_text(double seconds) {
    const long whole = std::lround(seconds);
    char text[32];
    if (whole >= 3600) {
        std::snprintf(text, sizeof text, "%ld:%02ld:%02ld", whole / 3600, whole / 60 % 60, whole % 60);
    } else {
        std::snprintf(text, sizeof text, "%ld:%02ld", whole / 60, whole % 60);
    }
    return text;
}

}  // namespace

std::string progress_text(int64_t frames, double done, double total, double elapsed) {
    const double rate = elapsed > 0 ? static_cast<double>(frames) / elapsed : 0;
    char numbers[64];
    std::snprintf(numbers, sizeof numbers, "%lld frames, %.0f frames/s", static_cast<long long>(frames), rate);
    if (total <= 0) return numbers;

    const double share = std::clamp(done / total, 0.0, 1.0);
    const auto filled = static_cast<size_t>(std::lround(share * k_bar_width));
    char percent[16];
    std::snprintf(percent, sizeof percent, "%3.0f %%", std::floor(share * 100));
    std::string text =
        "[" + std::string(filled, '#') + std::string(k_bar_width - filled, '.') + "] " + percent + "  " + numbers;
    if (share > 0) text += ", " + clock_text(elapsed * (1 - share) / share) + " left";
    return text;
}

progress_line::progress_line(double total)
    : m_terminal(isatty(STDERR_FILENO) == 1), m_total(total), m_start(clock::now()), m_shown(m_start) {}

void progress_line::show(int64_t frames, double done) {
    if (!m_terminal) return;
    const clock::time_point now = clock::now();
    if (now - m_shown < k_pause) return;
    m_shown = now;
    m_visible = true;
    const double elapsed = std::chrono::duration<double>(now - m_start).count();
    std::fprintf(stderr, "\r\033[K%s", progress_text(frames, done, m_total, elapsed).c_str());
}

void progress_line::clear() {
    if (!m_visible) return;
    m_visible = false;
    std::fputs("\r\033[K", stderr);
}

}  // namespace orva_fire
