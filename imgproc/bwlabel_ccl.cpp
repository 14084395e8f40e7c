#include "imgproc/bwlabel_ccl.h"

#include "imgproc/run_labeller.h"

namespace orva_fd {

namespace {

typedef std::vector<unsigned short> run_column;

void open_run(int x, int y, run_column& stRun, run_column& enRun, run_column& rowRun) {
    stRun.push_back(static_cast<unsigned short>(x));
    enRun.push_back(static_cast<unsigned short>(x));  // replaced when the run closes
    rowRun.push_back(static_cast<unsigned short>(y));
}

}  // namespace

// The same components as the three functions below give: a component's smallest label is that of its first run either
// way.
int bwlabel_ccl::do_comm_ccl(fd_yuv_frame* img, std::vector<con_info>& out) {
    run_labeller labeller;
    labeller.begin();
    const int height = static_cast<int>(img->height);
    for (int y = 0; y < height; ++y) labeller.add_row(plane_row(img, 0, y), 0, static_cast<int>(img->width), y);
    labeller.finish(out);
    return FD_OK;
}

int bwlabel_ccl::fillRunVectors(unsigned char* data, int width, int height, int stride, int& runCount,
                                run_column& stRun, run_column& enRun, run_column& rowRun) {
    for (int y = 0; y < height; ++y) {
        const unsigned char* row = data + static_cast<std::ptrdiff_t>(y) * stride;
        bool open = row[0] != 0;
        if (open) open_run(0, y, stRun, enRun, rowRun);
        for (int x = 1; x < width; ++x) {
            if ((row[x] != 0) == open) continue;
            if (open) enRun[static_cast<std::size_t>(runCount++)] = static_cast<unsigned short>(x - 1);
            if (!open) open_run(x, y, stRun, enRun, rowRun);
            open = !open;
        }
        if (open) enRun[static_cast<std::size_t>(runCount++)] = static_cast<unsigned short>(width - 1);
    }
    return FD_OK;
}

int bwlabel_ccl::firstPass(run_column& stRun, run_column& enRun, run_column& rowRun, int runCount,
                           std::vector<int>& runLabels, std::vector<std::pair<int, int>>& equivalences,
                           int& labelCount) {
    runLabels.assign(static_cast<std::size_t>(runCount < 0 ? 0 : runCount), 0);
    labelCount = 0;
    if (runCount < 1) return FD_OK;

    int next_label = 1;
    int row = 0;
    std::size_t row_first = 0;       // first run of the current row
    std::size_t previous_first = 0;  // runs of the row before it: [previous_first, previous_end)
    std::size_t previous_end = 0;
    for (std::size_t i = 0; i < static_cast<std::size_t>(runCount); ++i) {
        if (rowRun[i] != row) {
            previous_end = i;
            previous_first = row_first;
            row_first = i;
            row = rowRun[i];
        }
        // Runs of one row never touch, so this never holds for runs that fillRunVectors made; kept for other callers.
        if (i > 0 && rowRun[i - 1] == row && stRun[i] <= enRun[i - 1]) runLabels[i] = runLabels[i - 1];
        if (previous_first < previous_end && row - rowRun[previous_first] < 2) {
            for (std::size_t j = previous_first; j < previous_end; ++j) {
                if (stRun[i] > enRun[j] || enRun[i] < stRun[j]) continue;
                if (runLabels[i] == 0) {
                    runLabels[i] = runLabels[j];
                } else if (runLabels[i] != runLabels[j]) {
                    equivalences.push_back(std::make_pair(runLabels[i], runLabels[j]));
                }
            }
        }
        if (runLabels[i] == 0) runLabels[i] = next_label++;
    }
    labelCount = next_label - 1;
    return FD_OK;
}

int bwlabel_ccl::replaceSameLabel(int labelCount, std::vector<std::pair<int, int>>& equivalences,
                                  std::vector<int>& finalLabels, int& groupCount) {
    std::vector<std::vector<int>> neighbours(static_cast<std::size_t>(labelCount));
    for (std::size_t e = 0; e < equivalences.size(); ++e) {
        const int a = equivalences[e].first - 1;
        const int b = equivalences[e].second - 1;
        neighbours[static_cast<std::size_t>(a)].push_back(b);
        neighbours[static_cast<std::size_t>(b)].push_back(a);
    }

    finalLabels.resize(static_cast<std::size_t>(labelCount), 0);
    groupCount = 0;
    std::vector<int> work;
    for (int i = 0; i < labelCount; ++i) {
        if (finalLabels[static_cast<std::size_t>(i)] != 0) continue;
        ++groupCount;
        finalLabels[static_cast<std::size_t>(i)] = groupCount;
        work.assign(1, i);
        for (std::size_t w = 0; w < work.size(); ++w) {
            const std::vector<int>& list = neighbours[static_cast<std::size_t>(work[w])];
            for (std::size_t n = 0; n < list.size(); ++n) {
                int& label = finalLabels[static_cast<std::size_t>(list[n])];
                if (label != 0) continue;
                label = groupCount;
                work.push_back(list[n]);
            }
        }
    }
    return FD_OK;
}

}  // namespace orva_fd
