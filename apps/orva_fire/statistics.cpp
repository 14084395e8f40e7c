#include "apps/orva_fire/statistics.h"

#include <algorithm>
#include <cmath>

namespace orva_fire {
namespace {

const double k_normal_95 = 1.959963984540054;  // 97.5 of 100 parts of the normal distribution lie below
const double k_tail = 0.025;

// The probability of at most `count` events when `expected` are expected.
double poisson_at_most(int count, double expected) {
    double sum = 0;
    for (int k = 0; k <= count; ++k) sum += std::exp(k * std::log(expected) - expected - std::lgamma(k + 1.0));
    return sum;
}

// The expectation at which poisson_at_most(count) has fallen to `probability`.
double expectation_for(int count, double probability) {
    double low = 0, high = 2 * count + 20;
    for (int i = 0; i < 100; ++i) {
        const double middle = (low + high) / 2;
        (poisson_at_most(count, middle) > probability ? low : high) = middle;
    }
    return (low + high) / 2;
}

}  // namespace

interval share_interval(int hits, int trials) {
    if (trials == 0) return {0, 1};
    const double n = trials, share = hits / n, z = k_normal_95;
    const double scale = 1 + z * z / n;
    const double centre = (share + z * z / (2 * n)) / scale;
    const double half = z / scale * std::sqrt(share * (1 - share) / n + z * z / (4 * n * n));
    return {hits == 0 ? 0 : std::max(0.0, centre - half), hits == trials ? 1 : std::min(1.0, centre + half)};
}

interval count_interval(int count) {
    return {count == 0 ? 0 : expectation_for(count - 1, 1 - k_tail), expectation_for(count, k_tail)};
}

std::optional<double> median(std::vector<double> numbers) {
    if (numbers.empty()) return std::nullopt;
    std::sort(numbers.begin(), numbers.end());
    const size_t middle = numbers.size() / 2;
    return numbers.size() % 2 == 1 ? numbers[middle] : (numbers[middle - 1] + numbers[middle]) / 2;
}

std::optional<double> quantile(std::vector<double> numbers, double share) {
    if (numbers.empty()) return std::nullopt;
    std::sort(numbers.begin(), numbers.end());
    const double rank = std::ceil(share * static_cast<double>(numbers.size()) - 1e-9);
    return numbers[static_cast<size_t>(std::max(1.0, rank)) - 1];
}

}  // namespace orva_fire
