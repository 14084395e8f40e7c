// The drawings of a report: lanes over time without any text in them, so that they stretch to every width.
#ifndef ORVA_APPS_ORVA_FIRE_REPORT_SVG_H
#define ORVA_APPS_ORVA_FIRE_REPORT_SVG_H

#include <string>
#include <vector>

#include "apps/orva_fire/report_data.h"

namespace orva_fire {

// A bar on a lane, with a text that shows when it is pointed at, and perhaps an address that it leads to. Both are
// escaped here.
struct lane_bar {
    report_span span;
    std::string address;
};

// A lane with bars over its whole height. style: class of their colour; name: for those who cannot see it.
std::string bar_lane(const std::vector<lane_bar>& bars, double seconds, const std::string& style,
                     const std::string& name);

// A lane with a height of 0 to 1 for each step of time. mark: height of a dashed line, 0 for none.
std::string level_lane(const std::vector<double>& heights, double step, double seconds, const std::string& style,
                       const std::string& name, double mark);

}  // namespace orva_fire

#endif
