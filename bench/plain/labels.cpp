#include <utility>

#include "bench/plain/plain.h"

namespace ORVA_PLAIN_NAMESPACE {

namespace {

struct run_list {
    std::vector<unsigned short> start;
    std::vector<unsigned short> end;
    std::vector<unsigned short> row;
};

void find_runs(const fd_yuv_frame* image, run_list& runs) {
    const int width = static_cast<int>(image->width);
    const int height = static_cast<int>(image->height);
    for (int y = 0; y < height; ++y) {
        const unsigned char* row = row_of(image, 0, y);
        bool open = false;
        for (int x = 0; x < width; ++x) {
            if (row[x] != 0 && !open) {
                runs.start.push_back(static_cast<unsigned short>(x));
                runs.row.push_back(static_cast<unsigned short>(y));
                open = true;
            } else if (row[x] == 0 && open) {
                runs.end.push_back(static_cast<unsigned short>(x - 1));
                open = false;
            }
        }
        if (open) runs.end.push_back(static_cast<unsigned short>(width - 1));
    }
}

// Provisional labels, and which of them belong together. Returns the number of labels.
int first_pass(const run_list& runs, std::vector<int>& labels, std::vector<std::pair<int, int>>& same) {
    labels.assign(runs.start.size(), 0);
    int next_label = 1;
    int row = 0;
    std::size_t row_first = 0;
    std::size_t previous_first = 0;
    std::size_t previous_end = 0;
    for (std::size_t i = 0; i < runs.start.size(); ++i) {
        if (runs.row[i] != row) {
            previous_end = i;
            previous_first = row_first;
            row_first = i;
            row = runs.row[i];
        }
        if (previous_first < previous_end && row - runs.row[previous_first] < 2) {
            for (std::size_t j = previous_first; j < previous_end; ++j) {
                if (runs.start[i] > runs.end[j] || runs.end[i] < runs.start[j]) continue;
                if (labels[i] == 0) {
                    labels[i] = labels[j];
                } else if (labels[i] != labels[j]) {
                    same.push_back(std::make_pair(labels[i], labels[j]));
                }
            }
        }
        if (labels[i] == 0) labels[i] = next_label++;
    }
    return next_label - 1;
}

// Groups of labels, numbered from 1 in the order of their smallest label. Returns the number of groups.
int resolve(int label_count, const std::vector<std::pair<int, int>>& same, std::vector<int>& groups) {
    std::vector<std::vector<int>> neighbours(static_cast<std::size_t>(label_count));
    for (std::size_t e = 0; e < same.size(); ++e) {
        neighbours[static_cast<std::size_t>(same[e].first - 1)].push_back(same[e].second - 1);
        neighbours[static_cast<std::size_t>(same[e].second - 1)].push_back(same[e].first - 1);
    }
    groups.assign(static_cast<std::size_t>(label_count), 0);
    int group_count = 0;
    std::vector<int> work;
    for (int i = 0; i < label_count; ++i) {
        if (groups[static_cast<std::size_t>(i)] != 0) continue;
        groups[static_cast<std::size_t>(i)] = ++group_count;
        work.assign(1, i);
        for (std::size_t w = 0; w < work.size(); ++w) {
            const std::vector<int>& list = neighbours[static_cast<std::size_t>(work[w])];
            for (std::size_t n = 0; n < list.size(); ++n) {
                int& group = groups[static_cast<std::size_t>(list[n])];
                if (group != 0) continue;
                group = group_count;
                work.push_back(list[n]);
            }
        }
    }
    return group_count;
}

}  // namespace

void label(const fd_yuv_frame* image, std::vector<component>& out) {
    run_list runs;
    find_runs(image, runs);
    if (runs.start.empty()) return;
    std::vector<int> labels;
    std::vector<std::pair<int, int>> same;
    const int label_count = first_pass(runs, labels, same);
    std::vector<int> groups;
    const int group_count = resolve(label_count, same, groups);

    component fresh = {};
    fresh.left = FD_MAX_FRAME_WIDTH;
    fresh.top = FD_MAX_FRAME_HEIGHT;
    out.resize(static_cast<std::size_t>(group_count), fresh);
    for (std::size_t i = 0; i < runs.start.size(); ++i) {
        component& c = out[static_cast<std::size_t>(groups[static_cast<std::size_t>(labels[i] - 1)] - 1)];
        const short start = static_cast<short>(runs.start[i]);
        const short end = static_cast<short>(runs.end[i]);
        const short row = static_cast<short>(runs.row[i]);
        if (start < c.left) c.left = start;
        if (end > c.right) c.right = end;
        if (row <= c.top) c.top = row;
        if (row >= c.bottom) c.bottom = row;
        c.area += end - start + 1;
    }
}

}  // namespace ORVA_PLAIN_NAMESPACE
