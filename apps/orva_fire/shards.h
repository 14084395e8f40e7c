// Divides recordings among machines that do not talk to each other: each works out the whole division and takes its
// share of it.
#ifndef ORVA_APPS_ORVA_FIRE_SHARDS_H
#define ORVA_APPS_ORVA_FIRE_SHARDS_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace orva_fire {

// One of several shares, numbered from 1.
struct shard_choice {
    int number = 1;
    int count = 1;
};

// "3/8". Throws usage_error for anything but two whole numbers of which the first is 1 at least and the second at most.
shard_choice parse_shard(const std::string& text);

// The shard of each recording, from 1. lengths: in microseconds, in the order of the recordings' names.
// The longest first, each into the shard that holds least so far. Of equal recordings the first comes first, of equal
// shards that with the lowest number: whole numbers and fixed orders, so that every machine finds the same.
std::vector<int> divide(const std::vector<int64_t>& lengths, int shards);

}  // namespace orva_fire

#endif
