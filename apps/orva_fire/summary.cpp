#include "apps/orva_fire/summary.h"

#include <cstdarg>
#include <cstdio>

namespace orva_fire {
namespace {

__attribute__((format(printf, 2, 3))) void append(std::string& text, const char* format, ...) {
    char line[256];
    va_list values;
    va_start(values, format);
    std::vsnprintf(line, sizeof line, format, values);
    va_end(values);
    text += line;
}

double rate(int64_t frames, const stopwatch& watch) {
    return watch.seconds() > 0 ? static_cast<double>(frames) / watch.seconds() : 0;
}

}  // namespace

std::string summary_text(const run_summary& run) {
    std::string text;
    append(text, "%lld frames, %.2f s of video, in %.2f s (%.0f frames/s)\n", static_cast<long long>(run.frames),
           run.video_seconds, run.whole.seconds(), rate(run.frames, run.whole));
    append(text, "  detector  %lld frames passed, %lld repeated and %lld beyond the rate left out\n",
           static_cast<long long>(run.passed()), static_cast<long long>(run.repeated),
           static_cast<long long>(run.thinned));
    append(text, "  speed     decode %.0f, convert %.0f, detect %.0f, draw and write %.0f frames/s\n",
           rate(run.frames, run.decode), rate(run.passed(), run.convert), rate(run.passed(), run.detect),
           rate(run.frames, run.output));
    if (run.dropped > 0) {
        append(text, "  too slow  %lld pictures of the camera were thrown away\n", static_cast<long long>(run.dropped));
    }
    if (run.first_report) {
        append(text, "  events    %d, the first at %.2f s (frame %lld)\n", run.reports, run.first_report->seconds,
               static_cast<long long>(run.first_report->frame));
    } else {
        append(text, "  events    none\n");
    }
    return text;
}

}  // namespace orva_fire
