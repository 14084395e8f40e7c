#include "apps/orva_fire/shards.h"

#include <algorithm>
#include <cstdio>
#include <functional>
#include <numeric>
#include <queue>
#include <utility>

#include "apps/orva_fire/error.h"

namespace orva_fire {
namespace {

const int k_most_shards = 100000;

}  // namespace

shard_choice parse_shard(const std::string& text) {
    shard_choice choice;
    int end = 0;
    const bool plain = text.find_first_not_of("0123456789/") == std::string::npos && text.size() <= 13;
    const bool read = plain && std::sscanf(text.c_str(), "%d/%d%n", &choice.number, &choice.count, &end) == 2 &&
                      static_cast<size_t>(end) == text.size();
    if (!read || choice.number < 1 || choice.number > choice.count || choice.count > k_most_shards) {
        throw usage_error("a shard is K/N with K from 1 to N, and N at most " + std::to_string(k_most_shards) +
                          ", not '" + text + "'");
    }
    return choice;
}

std::vector<int> divide(const std::vector<int64_t>& lengths, int shards) {
    std::vector<size_t> order(lengths.size());
    std::iota(order.begin(), order.end(), size_t{0});
    std::stable_sort(order.begin(), order.end(), [&](size_t a, size_t b) { return lengths[a] > lengths[b]; });

    using load = std::pair<int64_t, int>;  // of a shard, and its number
    std::priority_queue<load, std::vector<load>, std::greater<load>> loads;
    for (int shard = 1; shard <= shards; ++shard) loads.push({0, shard});
    std::vector<int> chosen(lengths.size());
    for (const size_t index : order) {
        load lightest = loads.top();
        loads.pop();
        chosen[index] = lightest.second;
        lightest.first += lengths[index];
        loads.push(lightest);
    }
    return chosen;
}

}  // namespace orva_fire
