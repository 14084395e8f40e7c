// The page that tells what was found in many recordings, with a way to the page of each.
#ifndef ORVA_APPS_ORVA_FIRE_JOINED_REPORT_H
#define ORVA_APPS_ORVA_FIRE_JOINED_REPORT_H

#include <string>

#include "apps/orva_fire/joined_results.h"

namespace orva_fire {

struct joined_page_setting {
    std::string folder;   // that the page lies in
    std::string version;  // of the program
    std::string made_at;  // RFC 3339, or empty
};

// Names may hold anything.
std::string joined_page(const joined_results& joined, const joined_page_setting& setting);

// The way from one folder to another, for addresses.
std::string way_between(const std::string& from, const std::string& to);

// One sentence: how many recordings, with fire, failed, missing.
std::string joined_summary(const joined_results& joined);

}  // namespace orva_fire

#endif
