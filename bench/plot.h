// Drawings of measured costs: panels with logarithmic axes, as SVG.
#ifndef ORVA_BENCH_PLOT_H
#define ORVA_BENCH_PLOT_H

#include <string>
#include <utility>
#include <vector>

namespace bench {

struct curve {
    std::string name;
    std::vector<std::pair<double, double>> points;  // both above 0
};

struct panel {
    std::string title;
    std::string across;  // what the horizontal axis counts
    std::string up;
    std::vector<curve> curves;
};

// The panels side by side, with grid lines at round numbers and a legend in each.
std::string draw(const std::vector<panel>& panels, const std::string& caption);

}  // namespace bench

#endif
