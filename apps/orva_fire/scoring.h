// Compares what was reported in a recording with what people have noted: found fires, delays and false alarms.
#ifndef ORVA_APPS_ORVA_FIRE_SCORING_H
#define ORVA_APPS_ORVA_FIRE_SCORING_H

#include <cstdint>
#include <optional>
#include <vector>

#include "apps/orva_fire/geometry.h"
#include "apps/orva_fire/labels.h"

namespace orva_fire {

// Times are noted by eye; a report that starts this many seconds before or after a noted fire still belongs to it.
const double k_label_slack = 1;

// What became of one noted fire.
struct fire_score {
    labelled_fire label;
    std::optional<double> found;  // when it was reported first
    // Seconds from the noted beginning to the report, 0 if the report was there before; none if it was missed.
    std::optional<double> delay() const;
};

// One recording. A false alarm is a report that starts while no fire is noted, or, where the label has a box, none of
// whose boxes shares a pixel with it at its start. A report that starts too early and lasts into the fire is both a
// false alarm and a fire that was found.
struct clip_score {
    double seconds = 0;        // length
    double quiet_seconds = 0;  // without any noted fire
    int64_t pictures = 0, reported = 0;
    int64_t burning = 0, burning_reported = 0;  // pictures with a noted fire, and those of them with a report
    std::optional<double> first_report;
    std::vector<fire_score> fires;
    std::vector<double> false_alarms;  // when they started
};

class clip_scorer {
public:
    // size: of the pictures.
    clip_scorer(const labelled_clip& clip, picture_size size);

    // What is reported for one picture; an empty list for nothing. Every picture of the recording in its order.
    void observe(double seconds, const std::vector<box>& boxes);

    // end: length of the recording in seconds.
    clip_score finish(double end);

private:
    // A noted fire with its place on the picture.
    struct noted {
        double from, to;
        box where;
        bool hits(double seconds, const std::vector<box>& boxes) const;
    };

    double quiet_time(double end) const;

    std::vector<noted> m_noted;
    clip_score m_score;
    bool m_open = false;  // the picture before had a report
};

// Scores of several recordings.
struct total_score {
    int clips = 0;
    int clips_with_false_alarms = 0;
    int fires = 0, found = 0;
    std::vector<double> delays;
    int false_alarms = 0;
    double quiet_hours = 0;

    void add(const clip_score& score);
};

}  // namespace orva_fire

#endif
