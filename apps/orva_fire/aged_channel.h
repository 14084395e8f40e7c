// A channel whose evidence ages: two channels of the library that take turns.
#ifndef ORVA_APPS_ORVA_FIRE_AGED_CHANNEL_H
#define ORVA_APPS_ORVA_FIRE_AGED_CHANNEL_H

#include <memory>
#include <optional>

#include "apps/orva_fire/fresh_channel.h"

namespace orva_fire {

// A longer time than this between two pictures starts a zone afresh: what moved in between was not seen, and a fire
// that still burns is confirmed again by the next 50 pictures.
const double k_longest_gap = 5;

// Half of it is 15 seconds, in which even 4 pictures a second bring the 50 that the library needs; and what passes once
// a minute is never added up. See docs/detection.md.
const double k_default_max_age = 30;

// When two channels that see the same pictures are started and which of them answers, so that no answer rests on
// evidence older than max_age. A channel lives for max_age. Half of that after its start a second one is started beside
// it, which takes over when the first one's time is up. So the one that answers is between a half and a whole max_age
// old, but for the beginning. Evidence that gathers within half of max_age is therefore always reported, slower one
// with luck, and what took longer than max_age never.
class age_plan {
public:
    // What has to be done before a picture is passed, in this order.
    struct step {
        bool restart = false;        // drop both channels, start the answering one
        bool hand_over = false;      // drop the answering one; the other takes its place
        bool start_younger = false;  // start the second channel
    };

    explicit age_plan(double max_age) : m_max_age(max_age) {}

    // seconds: of the picture that comes next; not smaller than the last.
    step next(double seconds);

    // The next picture starts afresh.
    void restart() { m_older.reset(); }

private:
    const double m_max_age;
    std::optional<double> m_older, m_younger;  // when the channels were started
    double m_last = 0;
};

// The channels of one tile at one grade, as the plan wants them.
class aged_channel {
public:
    // seen: size of the pictures that will come; grade: 0 to 100, none for the library's own.
    aged_channel(picture_size seen, std::optional<int> grade) : m_seen(seen), m_grade(grade) {}

    // Drops and opens channels. To be called with each step of the plan, before the picture is passed.
    // Throws io_error if the library opens no channel.
    void prepare(const age_plan::step& step);

    // Passes one picture to all channels that are open; returns the answer of the older one.
    channel_answer analyse(nv21_picture& picture);

private:
    std::unique_ptr<fresh_channel> open() const;

    picture_size m_seen;
    std::optional<int> m_grade;
    std::unique_ptr<fresh_channel> m_older, m_younger;
};

}  // namespace orva_fire

#endif
