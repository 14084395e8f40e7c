#include "apps/orva_fire/evidence.h"

#include <cstdlib>
#include <cstring>
#include <deque>

#include "apps/orva_fire/error.h"
#include "apps/orva_fire/fresh_channel.h"
#include "channel/frame_process.h"

namespace orva_fire {
namespace {

const fd_rect k_whole_picture = {0, 1, 0, 1, 1, 1, 1, 1};
const int k_default_grade = 70;
const int k_change = 20;  // the lowest threshold that the detector takes for motion
const size_t k_most_candidates = 10;

box box_of(const orva_fd::con_info& info) {
    return {info.left, info.top, orva_fd::box_width(info), orva_fd::box_height(info)};
}

verdict verdict_of(orva_fd::box_verdict told) {
    switch (told) {
        case orva_fd::box_covered:
            return verdict::covered;
        case orva_fd::box_too_small:
            return verdict::too_small;
        case orva_fd::box_too_dim:
            return verdict::too_dim;
        case orva_fd::box_not_brighter:
            return verdict::not_brighter;
        default:
            return verdict::gathering;
    }
}

int count_set(const fd_yuv_frame& mask) {
    int count = 0;
    for (int y = 0; y < static_cast<int>(mask.height); ++y) {
        const uint8_t* row = orva_fd::plane_row(&mask, 0, y);
        for (uint32_t x = 0; x < mask.width; ++x) count += row[x] & 1;
    }
    return count;
}

int count_changed(const uint8_t* row, const uint8_t* before, int width) {
    int count = 0;
    for (int x = 0; x < width; ++x) count += std::abs(row[x] - before[x]) > k_change;
    return count;
}

}  // namespace

int frames_needed(int grade) {
    return (103 - grade) / 6 + 30;
}

int least_grade(int matched) {
    for (int grade = 0; grade <= 100; ++grade) {
        if (matched >= frames_needed(grade)) return grade;
    }
    return -1;
}

// The channel, and the observer that fills the record of the picture in work.
class evidence_channel::inner final : public orva_fd::analysis_observer {
public:
    inner() { open(); }
    ~inner() { close(); }

    void open() {
        m_channel = std::make_unique<orva_fd::frame_process>();
        if (m_channel->start(k_whole_picture) != FD_OK) throw io_error("no memory for another channel of the detector");
        m_channel->set_observer(this);
        (void)m_channel->set_sensitive(m_grade);
        m_stored_at.clear();
        m_before.clear();
        m_reporting = false;
        m_held_for = 0;
    }
    void close() { (void)m_channel->stop(); }

    void set_grade(int grade) {
        m_grade = grade;
        (void)m_channel->set_sensitive(grade);
    }

    const picture_evidence& look(nv21_picture& picture, const moment& at) {
        m_seen = picture_evidence();
        m_seen.at = at;
        m_seen.size = picture.size();
        m_seen.stored = static_cast<int>(m_stored_at.size());
        m_seen.needed = frames_needed(m_grade);
        compare_with_last(picture);
        m_candidates.clear();
        const picture_size looked_at = fresh_channel::looked_at(picture.size());
        fd_yuv_frame frame = picture.view();
        frame.width = static_cast<uint32_t>(looked_at.width);
        frame.height = static_cast<uint32_t>(looked_at.height);
        fd_result result = {};
        if (m_channel->set_frame(frame, result) != FD_OK) throw io_error("the detector refused a picture to explain");
        for (int i = 0; i < result.count; ++i) {
            const fd_rect& rect = result.rects[i];
            m_seen.answered.push_back({rect.x, rect.y, rect.width, rect.height});
        }
        m_seen.fresh = note_fresh();
        if (!m_seen.boxes.empty()) remember(at.seconds);
        return m_seen;
    }

    void on_components(const fd_yuv_frame& mask, const std::vector<orva_fd::con_info>& components) override {
        m_seen.mask = components.empty() ? 0 : count_set(mask);
        for (const auto& component : components) m_seen.components.push_back(box_of(component));
    }

    void on_merged(const std::vector<orva_fd::con_info>&) override {}

    // Every merged box is judged but for those behind the eleventh candidate, at which the search ends.
    void on_verdict(const orva_fd::con_info& info, orva_fd::box_verdict told,
                    const orva_fd::box_measures& measures) override {
        box_evidence seen;
        seen.place = box_of(info);
        seen.area = info.area;
        seen.ended = verdict_of(told);
        seen.pixels = measures.pixels;
        seen.bright = measures.bright;
        seen.fire = measures.fire;
        seen.centre = measures.centre;
        seen.around = measures.around;
        seen.stored = m_seen.stored;
        seen.needed = m_seen.needed;
        if (told == orva_fd::box_is_candidate) {
            if (m_candidates.size() == k_most_candidates) seen.ended = verdict::beyond_ten;
            m_candidates.push_back(m_seen.boxes.size());
        }
        m_seen.boxes.push_back(seen);
    }

    // Candidates are compared in the order in which they were found.
    void on_stability(const orva_fd::con_info&, const orva_fd::stability_measures& measures) override {
        box_evidence& seen = m_seen.boxes[m_candidates[m_compared++]];
        seen.matched = measures.count - 1;
        seen.mean_area = measures.mean_area;
        seen.deviation = measures.deviation;
        seen.span = measures.lists == 0 ? 0 : m_seen.at.seconds - oldest(measures.lists);
        if (measures.is_reported) {
            seen.ended = verdict::reported;
        } else if (measures.count <= measures.more_than) {
            seen.ended = verdict::too_rare;
        } else {
            seen.ended = measures.deviation >= measures.mean_area ? verdict::too_wild : verdict::too_steady;
        }
    }

private:
    void compare_with_last(nv21_picture& picture) {
        const auto width = static_cast<size_t>(picture.size().width);
        const auto height = static_cast<size_t>(picture.size().height);
        const bool first = m_before.size() != width * height;
        m_before.resize(width * height);
        for (size_t y = 0; y < height; ++y) {
            const uint8_t* row = picture.luma() + y * static_cast<size_t>(picture.stride());
            uint8_t* before = m_before.data() + y * width;
            if (!first) m_seen.changed += count_changed(row, before, static_cast<int>(width));
            std::memcpy(before, row, width);
        }
        m_compared = 0;
    }

    double oldest(uint64_t lists) const {
        size_t i = 0;
        while ((lists >> i & 1) == 0) ++i;
        return m_stored_at[i];
    }

    // The library stores each frame that has components, the last 50 of them.
    void remember(double seconds) {
        if (m_stored_at.size() == k_stored_frames) m_stored_at.pop_front();
        m_stored_at.push_back(seconds);
    }

    // The library holds what it reports for 6 pictures whatever it sees, and for 15 while it sees nothing.
    bool note_fresh() {
        bool any = false;
        for (const box_evidence& b : m_seen.boxes) any = any || b.ended == verdict::reported;
        const bool held = m_reporting && m_held_for != 15 && (!any || m_held_for < 6);
        m_held_for = held ? m_held_for + 1 : 0;
        m_reporting = !m_seen.answered.empty();
        return any && !held;
    }

    std::unique_ptr<orva_fd::frame_process> m_channel;
    int m_grade = k_default_grade;
    picture_evidence m_seen;
    std::vector<size_t> m_candidates;  // their places among the boxes
    size_t m_compared = 0;             // of these
    std::deque<double> m_stored_at;    // seconds of the stored frames, oldest first
    std::vector<uint8_t> m_before;     // luma of the last picture
    bool m_reporting = false;
    int m_held_for = 0;
};

evidence_channel::evidence_channel() : m_inner(std::make_unique<inner>()) {}
evidence_channel::~evidence_channel() = default;

void evidence_channel::set_grade(int grade) {
    m_inner->set_grade(grade);
}

void evidence_channel::restart() {
    m_inner->close();
    m_inner->open();
}

const picture_evidence& evidence_channel::look(nv21_picture& picture, const moment& at) {
    return m_inner->look(picture, at);
}

}  // namespace orva_fire
