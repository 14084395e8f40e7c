#include "apps/orva_fire/near_misses.h"

#include <algorithm>

#include "apps/orva_fire/annotate.h"
#include "apps/orva_fire/detector_picture.h"
#include "apps/orva_fire/picture_file.h"
#include "apps/orva_fire/reasons.h"

namespace orva_fire {
namespace {

const double k_gap = 2;               // seconds between boxes of one miss
const size_t k_most = 8;              // that are kept
const double k_least_nearness = 0.1;  // a box that is bright and larger than a speck

const box_evidence* nearest(const picture_evidence& seen) {
    const auto nearer = [](const box_evidence& a, const box_evidence& b) { return closeness(a) < closeness(b); };
    const auto best = std::max_element(seen.boxes.begin(), seen.boxes.end(), nearer);
    return best == seen.boxes.end() || closeness(*best) < k_least_nearness ? nullptr : &*best;
}

frame_ptr marked(nv21_picture& picture, const box& where) {
    frame_ptr copy = viewable(picture);
    draw_frame(*copy, {where.x - 2, where.y - 2, where.width + 4, where.height + 4}, 2, 240, 190, 40);
    return copy;
}

void describe(report_miss& miss, const box_evidence& box) {
    miss.nearness = closeness(box);
    if (box.ended == verdict::reported) {
        miss.reason = "seen as fire by the detector, but not for long enough to be confirmed";
        miss.remedy = "would have been reported with a smaller --confirm";
        return;
    }
    miss.reason = reason(box);
    miss.remedy = remedy(box);
}

}  // namespace

miss_finder::miss_finder(size_t zones) : m_zones(zones) {}

void miss_finder::observe(size_t zone, const picture_evidence& seen, const box& area, bool raised,
                          nv21_picture& picture) {
    zone_state& state = m_zones[zone];
    const double now = seen.at.seconds;
    if (state.open && now > state.open->miss.to + k_gap) close(state);
    if (raised) {
        state.last_raised = now;
        state.open.reset();
        return;
    }
    const box_evidence* best = nearest(seen);
    if (best == nullptr || now <= state.last_raised + k_gap) return;
    if (!state.open) {
        state.open.emplace();
        state.open->miss.zone = zone;
        state.open->miss.from = now;
        state.open->miss.nearness = -1;
    }
    report_miss& miss = state.open->miss;
    miss.to = now;
    if (closeness(*best) <= miss.nearness) return;
    miss.at = now;
    miss.place = to_source(best->place, seen.size, area);
    describe(miss, *best);
    state.open->picture = marked(picture, best->place);
}

void miss_finder::close(zone_state& state) {
    keep(std::move(*state.open));
    state.open.reset();
}

void miss_finder::keep(episode&& closed) {
    const auto nearer = [](const episode& a, const episode& b) { return a.miss.nearness > b.miss.nearness; };
    m_kept.insert(std::upper_bound(m_kept.begin(), m_kept.end(), closed, nearer), std::move(closed));
    if (m_kept.size() > k_most) m_kept.pop_back();
}

std::vector<report_miss> miss_finder::finish() {
    for (zone_state& state : m_zones) {
        if (state.open) close(state);
    }
    std::vector<report_miss> misses;
    for (episode& kept : m_kept) {
        kept.miss.picture = jpeg_bytes(*kept.picture, {kept.picture->width, kept.picture->height});
        misses.push_back(std::move(kept.miss));
    }
    m_kept.clear();
    return misses;
}

}  // namespace orva_fire
