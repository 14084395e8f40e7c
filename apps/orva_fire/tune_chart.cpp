#include "apps/orva_fire/tune_chart.h"

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>

namespace orva_fire {
namespace {

const double k_width = 960, k_left = 70, k_right = 20;
const double k_row = 14, k_gap = 60, k_trade_height = 260, k_trade_width = 420;

const char k_style[] =
    "<style>"
    "svg{background:#fff;color:#222;font:12px sans-serif}"
    "text{fill:currentColor}.small{font-size:10px}.title{font-size:15px;font-weight:bold}"
    ".axis{stroke:currentColor;stroke-width:1;fill:none}.faint{stroke:currentColor;stroke-width:.5;opacity:.25}"
    ".fire{fill:#e69f00;opacity:.28}.report{fill:#c1272d}.line{fill:none;stroke:#c1272d;stroke-width:1.5}"
    ".dot{fill:#c1272d}.usual{fill:none;stroke:currentColor;stroke-width:1.5}.strong{font-weight:bold}"
    "@media(prefers-color-scheme:dark){svg{background:#16181c;color:#ddd}.report,.dot{fill:#ff6b5e}.line{stroke:#"
    "ff6b5e}}"
    "</style>\n";

__attribute__((format(printf, 1, 2))) std::string format(const char* pattern, ...) {
    char text[600];
    va_list values;
    va_start(values, pattern);
    std::vsnprintf(text, sizeof text, pattern, values);
    va_end(values);
    return text;
}

// Names come from files: nothing in them may become markup, and control characters are not allowed in XML at all.
std::string escaped(const std::string& text) {
    std::string safe;
    for (const char c : text) {
        switch (c) {
            case '<':
                safe += "&lt;";
                break;
            case '>':
                safe += "&gt;";
                break;
            case '&':
                safe += "&amp;";
                break;
            case '"':
                safe += "&quot;";
                break;
            default:
                safe += static_cast<unsigned char>(c) < 32 ? '?' : c;
        }
    }
    return safe;
}

std::string text_at(double x, double y, const char* look, const char* anchor, const std::string& text) {
    return format("<text x=\"%.1f\" y=\"%.1f\" class=\"%s\" text-anchor=\"%s\">", x, y, look, anchor) + escaped(text) +
           "</text>\n";
}

// A round number of which about `wanted` fit into the length: 1, 2 or 5 times a power of ten.
double round_step(double length, int wanted) {
    const double raw = std::max(length, 1e-6) / wanted;
    const double power = std::pow(10.0, std::floor(std::log10(raw)));
    for (const double factor : {1.0, 2.0, 5.0}) {
        if (factor * power >= raw) return factor * power;
    }
    return 10 * power;
}

class drawing {
public:
    explicit drawing(const tune_chart& chart) : m_chart(chart) {
        for (const chart_clip& clip : chart.clips) m_total += clip.seconds;
    }
    std::string draw();

private:
    double strips_height() const { return k_row * static_cast<double>(m_chart.steps.size()); }
    double across(double seconds) const { return k_left + seconds / m_total * (k_width - k_left - k_right); }
    std::string span(const char* look, double offset, const time_span& time, double top, double height) const;
    std::string strips(double top) const;
    std::string clip(const chart_clip& each, double offset, double top) const;
    std::string trade(double top) const;

    const tune_chart& m_chart;
    double m_total = 0;
};

// At least a pixel wide: a report of six pictures in an hour must be seen.
std::string drawing::span(const char* look, double offset, const time_span& time, double top, double height) const {
    const double left = across(offset + time.from), right = across(offset + time.to);
    return format("<rect class=\"%s\" x=\"%.1f\" y=\"%.1f\" width=\"%.1f\" height=\"%.1f\"/>\n", look, left, top,
                  std::max(1.0, right - left), height);
}

std::string drawing::clip(const chart_clip& each, double offset, double top) const {
    std::string text = "<g><title>" + escaped(each.name) + "</title>\n";
    text += format("<line class=\"faint\" x1=\"%.1f\" y1=\"%.1f\" x2=\"%.1f\" y2=\"%.1f\"/>\n", across(offset), top - 4,
                   across(offset), top + strips_height() + 4);
    for (const time_span& fire : each.fires) text += span("fire", offset, fire, top - 4, strips_height() + 8);
    for (size_t i = 0; i < each.reports.size(); ++i) {
        for (const time_span& report : each.reports[i]) {
            text += span("report", offset, report, top + k_row * static_cast<double>(i) + 2, k_row - 4);
        }
    }
    return text + "</g>\n";
}

std::string drawing::strips(double top) const {
    std::string text = text_at(k_left - 8, top - 10, "small", "end", "grade");
    for (size_t i = 0; i < m_chart.steps.size(); ++i) {
        const double base = top + k_row * static_cast<double>(i) + k_row - 4;
        const chart_step& step = m_chart.steps[i];
        text += text_at(k_left - 8, base, step.usual ? "small strong" : "small", "end", step.name);
    }
    double offset = 0;
    for (const chart_clip& each : m_chart.clips) {
        text += clip(each, offset, top);
        offset += each.seconds;
    }
    const double bottom = top + strips_height() + 4;
    text += format("<path class=\"axis\" d=\"M%.1f %.1fH%.1f\"/>\n", k_left, bottom, k_width - k_right);
    const double step = round_step(m_total, 8);
    for (double t = 0; t <= m_total * 1.0001; t += step) {
        text += text_at(across(std::min(t, m_total)), bottom + 14, "small", "middle", format("%g s", t));
    }
    return text;
}

std::string drawing::trade(double top) const {
    double most_delay = 1, most_reports = 1;
    for (const chart_step& step : m_chart.steps) {
        most_delay = std::max(most_delay, step.delay.value_or(0) * 1.1);
        most_reports = std::max(most_reports, step.reports * 1.1);
    }
    const auto x = [&](double reports) { return k_left + reports / most_reports * k_trade_width; };
    const auto y = [&](double delay) { return top + k_trade_height - delay / most_delay * k_trade_height; };
    std::string text = format("<path class=\"axis\" d=\"M%.1f %.1fV%.1fH%.1f\"/>\n", k_left, top, top + k_trade_height,
                              k_left + k_trade_width);
    for (double r = 0; r <= most_reports; r += std::max(1.0, round_step(most_reports, 6))) {
        text += text_at(x(r), top + k_trade_height + 14, "small", "middle", format("%g", r));
    }
    for (double d = 0; d <= most_delay; d += round_step(most_delay, 5)) {
        text += text_at(k_left - 6, y(d) + 4, "small", "end", format("%g s", d));
    }
    text += text_at(k_left + k_trade_width / 2, top + k_trade_height + 32, "", "middle",
                    m_chart.labelled ? "false reports" : "reports");
    text += text_at(k_left, top - 10, "", "start",
                    m_chart.labelled ? "median delay of the fires that were found" : "median time of the first report");
    std::string line;
    std::string dots;
    for (const chart_step& step : m_chart.steps) {
        if (!step.delay) continue;
        const double cx = x(step.reports), cy = y(*step.delay);
        line += format("%s%.1f %.1f", line.empty() ? "M" : "L", cx, cy);
        dots += format("<circle class=\"dot\" cx=\"%.1f\" cy=\"%.1f\" r=\"4\"><title>", cx, cy) + "grade " +
                escaped(step.name) + format(": %d reports, %.1f s", step.reports, *step.delay) + "</title></circle>\n";
        if (step.usual) dots += format("<circle class=\"usual\" cx=\"%.1f\" cy=\"%.1f\" r=\"8\"/>\n", cx, cy);
    }
    if (!line.empty()) text += "<path class=\"line\" d=\"" + line + "\"/>\n" + dots;
    const chart_step& first = m_chart.steps.front();
    const chart_step& last = m_chart.steps.back();
    const double note = k_left + k_trade_width + 40;
    text += text_at(note, top + 20, "", "start",
                    "Each dot is one step of the grades, from " + first.name + " to " + last.name + ".");
    text += text_at(note, top + 38, "", "start", "The ring marks the library's own. Hover over a dot to read it.");
    if (m_chart.labelled) text += text_at(note, top + 56, "", "start", "Orange above: where people have noted a fire.");
    return text;
}

std::string drawing::draw() {
    const double strips_top = 60, trade_top = strips_top + strips_height() + k_gap + 20;
    const double height = trade_top + k_trade_height + 50;
    std::string text = format(
        "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 %.0f %.0f\" width=\"%.0f\" "
        "height=\"%.0f\" role=\"img\">\n<title>orva-fire tune</title>\n",
        k_width, height, k_width, height);
    text += k_style;
    text += text_at(k_left, 24, "title", "start", "When each sensitivity reports");
    if (m_total > 0 && !m_chart.steps.empty()) text += strips(strips_top) + trade(trade_top);
    return text + "</svg>\n";
}

}  // namespace

std::string draw_tune_chart(const tune_chart& chart) {
    return drawing(chart).draw();
}

}  // namespace orva_fire
