// A fire drill: a synthetic flame is laid over the pictures of a source, so that everything behind it can be tried.
#ifndef ORVA_APPS_ORVA_FIRE_DRILL_H
#define ORVA_APPS_ORVA_FIRE_DRILL_H

#include <functional>
#include <memory>

#include "apps/flame_clip/flame.h"
#include "apps/orva_fire/annotate.h"
#include "apps/orva_fire/geometry.h"
#include "apps/orva_fire/picture_source.h"

namespace orva_fire {

// Seconds of the source's own pictures before the flame begins.
const double k_drill_onset = 1;

// Lays a flame over a part of a picture.
class flame_painter {
public:
    // where: in source pixels, even, inside every picture. The flame's foot is near its lower edge.
    explicit flame_painter(const box& where);

    // A copy of the picture as 8-bit yuv420p, with the flame as it is `age` seconds after it began; without it before
    // that.
    frame_ptr paint(const AVFrame& picture, double age);

private:
    const box m_where;
    const flame_clip::flame m_flame;
    annotator m_annotator;
    scaler m_to_rgb, m_from_rgb;
};

// Where the flame goes in a part that is looked at: in its middle, two fifths of its height, even.
box place_of_flame(const box& part);

class drill_source : public picture_source {
public:
    // place: tells from the size of the pictures where the flame goes.
    drill_source(std::unique_ptr<picture_source> source, std::function<box(picture_size)> place);

    // From the next picture on there is no flame.
    void extinguish() { m_burning = false; }

    bool next(source_picture& picture) override;
    double duration() const override { return m_source->duration(); }
    double nominal_rate() const override { return m_source->nominal_rate(); }
    bool live() const override { return m_source->live(); }
    int64_t dropped() const override { return m_source->dropped(); }
    std::string problem() const override { return m_source->problem(); }
    std::vector<std::string> take_warnings() override { return m_source->take_warnings(); }

private:
    const std::unique_ptr<picture_source> m_source;
    const std::function<box(picture_size)> m_place;
    std::unique_ptr<flame_painter> m_painter;
    bool m_burning = true;
};

}  // namespace orva_fire

#endif
