#include "apps/orva_fire/report_svg.h"

#include <algorithm>
#include <cstdio>

#include "apps/orva_fire/html.h"

namespace orva_fire {
namespace {

const double k_width = 1000;
const double k_height = 100;
const double k_least_bar = 2.5;  // so that a short report is not lost on a long line

std::string number(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.1f", value);
    return text;
}

double column(double at, double seconds) {
    return seconds > 0 ? std::clamp(at / seconds, 0.0, 1.0) * k_width : 0;
}

std::string svg_start(const std::string& name) {
    return "<svg viewBox=\"0 0 1000 100\" preserveAspectRatio=\"none\" role=\"img\" aria-label=\"" + html_text(name) +
           "\">";
}

}  // namespace

std::string bar_lane(const std::vector<lane_bar>& bars, double seconds, const std::string& style,
                     const std::string& name) {
    std::string svg = svg_start(name);
    for (const lane_bar& bar : bars) {
        const double width = std::max(column(bar.span.to, seconds) - column(bar.span.from, seconds), k_least_bar);
        const double left = std::min(column(bar.span.from, seconds), k_width - width);
        std::string drawn = "<rect class=\"" + html_text(style) + "\" x=\"" + number(left) + "\" y=\"0\" width=\"" +
                            number(width) + "\" height=\"100\"><title>" + html_text(bar.span.text) + "</title></rect>";
        if (!bar.address.empty()) drawn = "<a href=\"" + html_text(bar.address) + "\">" + drawn + "</a>";
        svg += drawn;
    }
    return svg + "</svg>";
}

std::string level_lane(const std::vector<double>& heights, double step, double seconds, const std::string& style,
                       const std::string& name, double mark) {
    std::string svg = svg_start(name) + "<path class=\"" + html_text(style) + "\" d=\"M0 100";
    double last = 0;
    for (size_t i = 0; i < heights.size(); ++i) {
        const double height = std::clamp(heights[i], 0.0, 1.0) * k_height;
        // Only where the height changes: still stretches take no room in the file.
        if (i == 0 || number(height) != number(last)) {
            svg += "H" + number(column(static_cast<double>(i) * step, seconds)) + "V" + number(k_height - height);
        }
        last = height;
    }
    svg += "H" + number(column(static_cast<double>(heights.size()) * step, seconds)) + "V100Z\"/>";
    if (mark > 0) {
        const std::string y = number(k_height * (1 - mark));
        svg += "<line class=\"s-mark\" x1=\"0\" x2=\"1000\" y1=\"" + y + "\" y2=\"" + y + "\"/>";
    }
    return svg + "</svg>";
}

}  // namespace orva_fire
