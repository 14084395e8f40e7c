#include "bench/search.h"

#include <algorithm>
#include <string>

#include "bench/measure.h"

namespace bench {

namespace {

const int k_columns = k_full_width / 2;
const int k_rows = k_full_height / 2;
const std::size_t k_most_strokes = 24;
const std::size_t k_families = 40;  // searched side by side
const std::size_t k_kept = 10;
const double k_evaluation_limit_ns = 1e9;

int random_position(random_source& random, int limit) {
    return random.between(-4, limit);
}

// Each value in the range in which it changes something.
int random_value(stroke_kind kind, int index, random_source& random) {
    switch (kind) {
        case stroke_luma:
            return random.between(125, 255);
        case stroke_chroma:
            return index == 0 ? random.between(80, 122) : random.between(119, 170);
        case stroke_turn:
            return random.between(0, 2);
        case stroke_background:
            return index < 2 ? random.between(0, 255) : random.between(100, 150);
        case stroke_stairs:
            if (index == 2) return random.between(1, 120);
            if (index > 2) return random.between(index > 4 ? 1 : -12, 12);
            return random_position(random, index == 0 ? k_columns : k_rows);
        case stroke_lattice:
            if (index >= 4) return random.between(-6, 6);
            break;
        case stroke_salt:
            if (index == 4) return random.between(1, 600);
            if (index == 5) return random.below(1000000);
            break;
        default:
            if (index >= 6) return random.between(1, 8);   // sizes of blocks
            if (index >= 4) return random.between(2, 30);  // pitches
            break;
    }
    return random_position(random, index % 2 == 0 ? k_columns : k_rows);
}

stroke random_stroke(random_source& random) {
    stroke s = {static_cast<stroke_kind>(random.below(k_stroke_kinds)), {}};
    for (int i = 0; i < value_count(s.kind); ++i) s.values[i] = random_value(s.kind, i, random);
    return s;
}

bool costlier(const ranked_painting& a, const ranked_painting& b) {
    return a.cost_ns > b.cost_ns;
}

// The faster fifth of the frames: what the machine does besides makes frames dearer, never cheaper.
double measured(contender& who, const painting& p) {
    return cost_of(who, paint(p, k_full_width, k_full_height), k_evaluation_limit_ns, 0.2);
}

// Both paintings, one on the other.
painting joined(const painting& a, const painting& b) {
    painting result = a;
    for (const stroke& s : b.strokes) {
        if (s.kind != stroke_background && result.strokes.size() < k_most_strokes) result.strokes.push_back(s);
    }
    return result;
}

// A lucky moment of the machine must not throw a painting out, nor an unlucky one let it in: the lower of two counts.
double confirmed(contender& who, const painting& p, double first) {
    return std::min(first, measured(who, p));
}

std::vector<ranked_painting> beginnings(contender& who) {
    std::vector<ranked_painting> all;
    for (const std::vector<painting>& group : {found_paintings(), constructed_paintings()}) {
        for (const painting& p : group) all.push_back({p, measured(who, p)});
    }
    return all;
}

void keep_worst(std::vector<ranked_painting>& families, std::size_t most) {
    std::stable_sort(families.begin(), families.end(), costlier);
    if (families.size() > most) families.resize(most);
}

// "worst 3, from comb": paintings keep the name of what they descend from.
void name_found(painting& p, std::size_t rank) {
    const std::string from = "from ";
    const std::size_t before = p.name.rfind(from);
    const std::string root = before == std::string::npos ? p.name : p.name.substr(before + from.size());
    p.name = "worst " + std::to_string(rank) + ", " + from + root;
}

}  // namespace

painting random_painting(random_source& random) {
    painting p = {"random", {}};
    const int count = random.between(1, 8);
    for (int i = 0; i < count; ++i) p.strokes.push_back(random_stroke(random));
    return p;
}

painting changed_painting(const painting& p, random_source& random) {
    painting result = p;
    const int changes = random.between(1, 3);
    for (int i = 0; i < changes; ++i) {
        const std::size_t at = static_cast<std::size_t>(random.below(static_cast<int>(result.strokes.size())));
        stroke& s = result.strokes[at];
        const int index = random.below(value_count(s.kind));
        switch (random.below(6)) {
            case 0:
                if (result.strokes.size() < k_most_strokes) result.strokes.push_back(random_stroke(random));
                break;
            case 1:
                if (result.strokes.size() > 1)
                    result.strokes.erase(result.strokes.begin() + static_cast<std::ptrdiff_t>(at));
                break;
            case 2:
                if (result.strokes.size() < k_most_strokes) {
                    stroke copy = s;
                    copy.values[0] += random.between(-30, 30);
                    copy.values[1] += random.between(-30, 30);
                    result.strokes.push_back(copy);
                }
                break;
            case 3:
                s.values[index] = random_value(s.kind, index, random);
                break;
            default:
                s.values[index] += random.between(-3, 3);
                break;
        }
    }
    return result;
}

double cost_of(contender& who, const scene& s, double limit_ns, double share) {
    const plan p = {54, 1, 0, 10, limit_ns};
    return quantile(measure({&who}, s, p)[0].frames_ns, share);
}

std::vector<ranked_painting> search_worst(contender& who, double seconds, std::uint64_t seed, FILE* progress) {
    random_source random(seed);
    std::vector<ranked_painting> families = beginnings(who);
    keep_worst(families, k_families);
    const std::int64_t end = now_ns() + static_cast<std::int64_t>(seconds * 1e9);
    double worst = families[0].cost_ns;
    for (int round = 0; now_ns() < end; ++round) {
        const bool fresh = random.below(8) == 0;
        const std::size_t from = static_cast<std::size_t>(random.below(static_cast<int>(families.size())));
        const std::size_t other = static_cast<std::size_t>(random.below(static_cast<int>(families.size())));
        ranked_painting tried = {fresh ? random_painting(random) : families[from].what, 0};
        if (!fresh && random.below(8) == 0) tried.what = joined(families[from].what, families[other].what);
        if (!fresh) tried.what = changed_painting(tried.what, random);
        if (fresh) tried.what.name = "seed " + std::to_string(seed) + ", round " + std::to_string(round);
        tried.cost_ns = measured(who, tried.what);
        const double limit = fresh ? families.back().cost_ns : families[from].cost_ns;
        if (tried.cost_ns <= limit) continue;
        tried.cost_ns = confirmed(who, tried.what, tried.cost_ns);
        if (tried.cost_ns <= limit) continue;
        if (fresh) {
            families.push_back(tried);
        } else {
            families[from] = tried;
        }
        keep_worst(families, k_families);
        if (families[0].cost_ns <= worst) continue;
        worst = families[0].cost_ns;
        std::fprintf(progress, "round %d: %.1f us  %s\n", round, worst / 1e3, to_text(families[0].what).c_str());
    }
    for (ranked_painting& one : families) one.cost_ns = measured(who, one.what);
    keep_worst(families, k_kept);
    for (std::size_t i = 0; i < families.size(); ++i) name_found(families[i].what, i + 1);
    return families;
}

}  // namespace bench
