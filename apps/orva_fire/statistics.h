// How far a measured share or rate can be trusted: 95 % intervals, and the middle of a list.
#ifndef ORVA_APPS_ORVA_FIRE_STATISTICS_H
#define ORVA_APPS_ORVA_FIRE_STATISTICS_H

#include <optional>
#include <vector>

namespace orva_fire {

struct interval {
    double low = 0, high = 0;
};

// The share of `hits` in `trials`, as Wilson's score interval (E. B. Wilson, Journal of the American Statistical
// Association 22, 1927). It stays between 0 and 1 and is of use for few trials, also when all or none are hits.
// No trials: 0 to 1.
interval share_interval(int hits, int trials);

// The expected number of events when `count` were seen and each comes by chance: the exact interval of the Poisson
// distribution (F. Garwood, Biometrika 28, 1936). Divide both ends by the hours to get rates.
interval count_interval(int count);

// The number that as many are above as below; the mean of the two in the middle of an even list.
std::optional<double> median(std::vector<double> numbers);

// The smallest number of the list that at least this share of it does not exceed. share: above 0, at most 1.
std::optional<double> quantile(std::vector<double> numbers, double share);

}  // namespace orva_fire

#endif
