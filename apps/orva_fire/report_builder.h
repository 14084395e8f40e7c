// Gathers what a report shows while the pictures go by, in an amount of memory that does not grow with their number.
#ifndef ORVA_APPS_ORVA_FIRE_REPORT_BUILDER_H
#define ORVA_APPS_ORVA_FIRE_REPORT_BUILDER_H

#include <string>
#include <vector>

#include "apps/orva_fire/event_tracker.h"
#include "apps/orva_fire/evidence.h"
#include "apps/orva_fire/near_misses.h"
#include "apps/orva_fire/report_data.h"
#include "apps/orva_fire/timeline.h"

namespace orva_fire {

class report_builder {
public:
    // zones: with their names, places, scales and grades.
    explicit report_builder(std::vector<report_zone> zones);

    // What one channel of a zone saw. area: the part of the source that it looks at.
    void observe(size_t zone, const picture_evidence& seen, const box& area, nv21_picture& picture);

    // An event as it starts, changes and ends. snapshot: path of the picture file that was written for it, or empty.
    // video: name of the annotated video that shows it, beside the report, or empty; video_start: where that begins.
    void add(const fire_event& event, const std::string& snapshot, const std::string& video, double video_start);

    // Trouble that starts or ends, of the camera.
    void start_trouble(const std::string& text, double seconds);
    void end_trouble(double seconds);

    // There are no more pictures. `about`: source, sizes, counts, settings and notes; the rest is filled in.
    report_data finish(report_data about);

private:
    report_event* listed(int id);
    bool raised(size_t zone) const { return m_open[zone] > 0; }

    std::vector<report_zone> m_zones;
    std::vector<int> m_open;  // events of each zone
    timeline m_timeline;
    miss_finder m_misses;
    std::vector<report_event> m_events;
    int m_left_out = 0;
    std::vector<report_span> m_troubles;
    bool m_in_trouble = false;
};

}  // namespace orva_fire

#endif
