// Gathers what a report shows while the pictures go by, in an amount of memory that does not grow with their number.
#ifndef ORVA_APPS_ORVA_FIRE_REPORT_BUILDER_H
#define ORVA_APPS_ORVA_FIRE_REPORT_BUILDER_H

#include <map>
#include <string>
#include <vector>

#include "apps/orva_fire/event_tracker.h"
#include "apps/orva_fire/evidence.h"
#include "apps/orva_fire/near_misses.h"
#include "apps/orva_fire/report_data.h"
#include "apps/orva_fire/timeline.h"

namespace orva_fire {

// The annotated video that shows a moment.
struct video_place {
    std::string name;  // of the file, beside the report; empty if there is none
    double start = 0;  // second of the source at which it begins
};

class report_builder {
public:
    // zones: with their names, places, scales and grades.
    explicit report_builder(std::vector<report_zone> zones);

    // What one channel of a zone saw. area: the part of the source that it looks at.
    void observe(size_t zone, const picture_evidence& seen, const box& area, nv21_picture& picture);

    // An event as it starts, changes and ends. picture: with its boxes, of the same moment; it is kept while the event
    // is open if its box is the largest so far, so nobody may change it.
    void add(const fire_event& event, const AVFrame& picture, const video_place& video);

    // Trouble that starts or ends, of the camera.
    void start_trouble(const std::string& text, double seconds);
    void end_trouble(double seconds);

    // There are no more pictures. `about`: source, sizes, counts, settings and notes; the rest is filled in.
    report_data finish(report_data about);

private:
    report_event* listed(int id);
    void picture(report_event& shown, const fire_event& event, const AVFrame& picture);
    bool raised(size_t zone) const { return m_open[zone] > 0; }

    std::vector<report_zone> m_zones;
    std::vector<int> m_open;  // events of each zone
    timeline m_timeline;
    miss_finder m_misses;
    std::vector<report_event> m_events;
    std::map<int, frame_ptr> m_largest;  // of open events, by id
    int m_left_out = 0;
    std::vector<report_span> m_troubles;
    bool m_in_trouble = false;
};

}  // namespace orva_fire

#endif
