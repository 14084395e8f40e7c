#include <algorithm>
#include <fstream>

#include "bench/campaign.h"
#include "bench/machine.h"
#include "bench/measure.h"
#include "bench/painting.h"
#include "bench/plot.h"
#include "bench/report.h"
#include "bench/search.h"

namespace bench {

namespace {

const double k_limit_ns = 1.5e9;  // for one point

double cost_us(contender& who, const scene& s) {
    return cost_of(who, s, k_limit_ns) / 1e3;
}

panel cost_by_pixels(const cast& everybody) {
    panel p = {"pixels", "pixels of the picture", "us a frame", {}};
    p.curves = {{"library, quiet", {}}, {"library, busy", {}}, {"plain -O2, quiet", {}}, {"plain -O2, busy", {}}};
    for (int share = 2; share <= 8; ++share) {
        const int width = k_full_width * share / 16 * 2;
        const int height = k_full_height * share / 16 * 2;
        const scene quiet = quiet_scene(width, height);
        const scene busy = busy_scene(width, height, std::max(1, 60 * share * share / 64));
        p.curves[0].points.push_back({quiet.pixels(), cost_us(everybody.library(), quiet)});
        p.curves[1].points.push_back({busy.pixels(), cost_us(everybody.library(), busy)});
        p.curves[2].points.push_back({quiet.pixels(), cost_us(everybody.plain_o2(), quiet)});
        p.curves[3].points.push_back({busy.pixels(), cost_us(everybody.plain_o2(), busy)});
    }
    return p;
}

// Specks, 88 in a row, in more and more rows: the picture's size stays.
panel cost_by_components(const cast& everybody) {
    panel p = {"components", "components before merging", "us a frame", {{"library", {}}, {"plain -O2", {}}}};
    for (int rows : {1, 2, 4, 8, 16, 32, 70}) {
        const painting specks =
            parse("specks: background 70 70 128 128; specks 1 1 175 " + std::to_string(2 * rows) + " 2 2");
        const scene s = paint(specks, k_full_width, k_full_height);
        p.curves[0].points.push_back({88.0 * rows, cost_us(everybody.library(), s)});
        p.curves[1].points.push_back({88.0 * rows, cost_us(everybody.plain_o2(), s)});
    }
    return p;
}

panel cost_by_channels(const cast& everybody) {
    panel p = {"channels", "channels in turn", "us a frame", {{"library, quiet", {}}, {"library, busy", {}}}};
    const scene scenes[] = {quiet_scene(k_full_width, k_full_height), busy_scene(k_full_width, k_full_height, 60)};
    for (int channels = 1; channels <= FD_MAX_CHANNELS; channels *= 2) {
        for (std::size_t i = 0; i < 2; ++i) {
            const std::vector<double> times =
                play_cold(everybody.library(), scenes[i], channels, 52, std::max(8, 200 / channels));
            p.curves[i].points.push_back({static_cast<double>(channels), median(times) / 1e3});
        }
    }
    return p;
}

}  // namespace

bool write_plot(const std::string& path, const cast& everybody) {
    const std::string caption = today() + ", " + processor_name() + ", " + build_compiler() + ", " + build_flags();
    std::ofstream file(path);
    file << draw({cost_by_pixels(everybody), cost_by_components(everybody), cost_by_channels(everybody)}, caption);
    file.close();
    return file.good();
}

}  // namespace bench
