#include "bench/plot.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace bench {

namespace {

const double k_panel_width = 380;
const double k_panel_height = 330;
const double k_left = 62;
const double k_top = 40;
const double k_right = 14;
const double k_bottom = 52;
const double k_caption_height = 26;
const char* const k_colours[] = {"#c0392b", "#2c6fbb", "#27803b", "#8e5bb0", "#b7791f", "#555555"};
const std::size_t k_colour_count = sizeof(k_colours) / sizeof(k_colours[0]);

std::string format(const char* text, double a, double b = 0, double c = 0, double d = 0) {
    char buffer[256];
    std::snprintf(buffer, sizeof(buffer), text, a, b, c, d);
    return buffer;
}

// 2000 as "2k".
std::string short_number(double value) {
    if (value >= 1e6) return format("%.0fM", value / 1e6);
    if (value >= 1e3) return format("%.0fk", value / 1e3);
    return format("%g", value);
}

// A logarithmic axis from one power of ten to another, laid onto pixels.
struct axis {
    double low;  // exponents
    double high;
    double from;
    double to;

    double place(double value) const { return from + (std::log10(value) - low) / (high - low) * (to - from); }
};

axis fitted(const std::vector<curve>& curves, bool across, double from, double to) {
    double least = 1e300;
    double most = 0;
    for (const curve& c : curves) {
        for (const std::pair<double, double>& point : c.points) {
            const double value = across ? point.first : point.second;
            least = std::min(least, value);
            most = std::max(most, value);
        }
    }
    const double legend = across ? 0 : 0.3;  // room above the curves
    const double margin = 0.04 + 0.05 * (std::log10(most) - std::log10(least));
    return {std::log10(least) - margin, std::log10(most) + margin + legend, from, to};
}

std::string text(double x, double y, const char* anchor, const std::string& words, const std::string& more = "") {
    return format("<text x=\"%.1f\" y=\"%.1f\" text-anchor=\"", x, y) + anchor + "\"" + more + ">" + words +
           "</text>\n";
}

std::string line(double x1, double y1, double x2, double y2, const char* colour) {
    return format("<line x1=\"%.1f\" y1=\"%.1f\" x2=\"%.1f\" y2=\"%.1f\" stroke=\"", x1, y1, x2, y2) + colour +
           "\"/>\n";
}

// 1, 2 and 5 times powers of ten on an axis; powers of ten alone if it spans more than three of them.
std::vector<double> ticks_of(const axis& a) {
    std::vector<double> ticks;
    for (double power = std::floor(a.low); power <= a.high; ++power) {
        for (double digit : {1.0, 2.0, 5.0}) {
            const double exponent = power + std::log10(digit);
            if (exponent < a.low || exponent > a.high || (digit > 1 && a.high - a.low > 3)) continue;
            ticks.push_back(digit * std::pow(10, power));
        }
    }
    return ticks;
}

std::string grid(const axis& across, const axis& up) {
    std::string svg;
    for (double tick : ticks_of(across)) {
        const double x = across.place(tick);
        svg += line(x, up.from, x, up.to, "#dddddd");
        svg += text(x, up.from + 16, "middle", short_number(tick));
    }
    for (double tick : ticks_of(up)) {
        const double y = up.place(tick);
        svg += line(across.from, y, across.to, y, "#dddddd");
        svg += text(across.from - 6, y + 4, "end", short_number(tick));
    }
    return svg;
}

std::string trace(const curve& c, const axis& across, const axis& up, const char* colour) {
    std::string dots;
    std::string path;
    for (const std::pair<double, double>& point : c.points) {
        const double x = across.place(point.first);
        const double y = up.place(point.second);
        path += format("%.1f,%.1f ", x, y);
        dots += format("<circle cx=\"%.1f\" cy=\"%.1f\" r=\"2.4\" fill=\"", x, y) + colour + "\"/>\n";
    }
    return "<polyline points=\"" + path + "\" fill=\"none\" stroke-width=\"1.5\" stroke=\"" + colour + "\"/>\n" + dots;
}

std::string draw_panel(const panel& p, double left) {
    const axis across = fitted(p.curves, true, left + k_left, left + k_panel_width - k_right);
    const axis up = fitted(p.curves, false, k_panel_height - k_bottom, k_top);
    std::string svg = text((across.from + across.to) / 2, 20, "middle", p.title, " font-weight=\"bold\"");
    svg += grid(across, up);
    svg += text((across.from + across.to) / 2, k_panel_height - 14, "middle", p.across);
    svg += format("<g transform=\"translate(%.1f %.1f) rotate(-90)\">", left + 16, (up.from + up.to) / 2) +
           text(0, 0, "middle", p.up) + "</g>\n";
    for (std::size_t i = 0; i < p.curves.size(); ++i) {
        const char* colour = k_colours[i % k_colour_count];
        svg += trace(p.curves[i], across, up, colour);
        const double y = up.to + 14 + 15 * static_cast<double>(i);
        svg += line(across.from + 8, y - 4, across.from + 26, y - 4, colour);
        svg += text(across.from + 31, y, "start", p.curves[i].name);
    }
    return svg;
}

}  // namespace

std::string draw(const std::vector<panel>& panels, const std::string& caption) {
    const double width = k_panel_width * static_cast<double>(panels.size());
    const double height = k_panel_height + k_caption_height;
    std::string svg = format(
        "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 %.0f %.0f\" width=\"%.0f\" "
        "height=\"%.0f\" font-family=\"sans-serif\" font-size=\"11\">\n",
        width, height, width, height);
    svg += format("<rect width=\"%.0f\" height=\"%.0f\" fill=\"white\"/>\n", width, height);
    for (std::size_t i = 0; i < panels.size(); ++i)
        svg += draw_panel(panels[i], k_panel_width * static_cast<double>(i));
    svg += text(width / 2, height - 10, "middle", caption, " fill=\"#555555\"");
    return svg + "</svg>\n";
}

}  // namespace bench
