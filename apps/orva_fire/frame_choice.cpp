#include "apps/orva_fire/frame_choice.h"

#include <algorithm>
#include <limits>

#include "apps/orva_fire/error.h"

namespace orva_fire {
namespace {

const int64_t k_no_end = std::numeric_limits<int64_t>::max();
const size_t k_most_digits = 15;

[[noreturn]] void refuse(const std::string& part) {
    throw usage_error("--explain: '" + part +
                      "' is no picture number and no stretch of them; write for example 140, 150-160 or 300-");
}

int64_t number(const std::string& text, const std::string& part) {
    const bool digits = !text.empty() && text.size() <= k_most_digits &&
                        std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
    if (!digits) refuse(part);
    return std::stoll(text);
}

std::pair<int64_t, int64_t> stretch(const std::string& part) {
    const size_t dash = part.find('-');
    const int64_t first = number(part.substr(0, dash), part);
    if (dash == std::string::npos) return {first, first};
    const std::string rest = part.substr(dash + 1);
    const int64_t last = rest.empty() ? k_no_end : number(rest, part);
    if (last < first) refuse(part);
    return {first, last};
}

}  // namespace

frame_choice frame_choice::parse(const std::string& text) {
    frame_choice choice;
    if (text.empty() || text == "all") {
        choice.m_stretches.emplace_back(0, k_no_end);
        return choice;
    }
    for (size_t from = 0; from <= text.size();) {
        const size_t comma = std::min(text.find(',', from), text.size());
        choice.m_stretches.push_back(stretch(text.substr(from, comma - from)));
        from = comma + 1;
    }
    return choice;
}

bool frame_choice::holds(int64_t frame) const {
    return std::any_of(m_stretches.begin(), m_stretches.end(),
                       [frame](const auto& s) { return s.first <= frame && frame <= s.second; });
}

}  // namespace orva_fire
