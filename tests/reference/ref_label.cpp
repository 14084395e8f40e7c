#include "tests/reference/ref_label.h"

#include <cstddef>
#include <utility>

namespace ref {

namespace {

// Group number of every pixel, 0 where the image is 0.
class label_map {
public:
    explicit label_map(const plane& img)
        : m_img(img),
          m_labels(static_cast<std::size_t>(img.width > 0 ? img.width : 0) *
                   static_cast<std::size_t>(img.height > 0 ? img.height : 0)) {
        for (int y = 0; y < img.height; ++y) {
            for (int x = 0; x < img.width; ++x) {
                if (img.at(x, y) != 0 && at(x, y) == 0) flood(x, y, ++m_groups);
            }
        }
    }

    int groups() const { return m_groups; }

    int& at(int x, int y) {
        return m_labels[static_cast<std::size_t>(y) * static_cast<std::size_t>(m_img.width) +
                        static_cast<std::size_t>(x)];
    }

private:
    void mark(int x, int y, int label) {
        if (x < 0 || y < 0 || x >= m_img.width || y >= m_img.height) return;
        if (m_img.at(x, y) == 0 || at(x, y) != 0) return;
        at(x, y) = label;
        m_pending.emplace_back(x, y);
    }

    void flood(int x, int y, int label) {
        mark(x, y, label);
        while (!m_pending.empty()) {
            const std::pair<int, int> pixel = m_pending.back();
            m_pending.pop_back();
            mark(pixel.first - 1, pixel.second, label);
            mark(pixel.first + 1, pixel.second, label);
            mark(pixel.first, pixel.second - 1, label);
            mark(pixel.first, pixel.second + 1, label);
        }
    }

    plane m_img;
    std::vector<int> m_labels;
    std::vector<std::pair<int, int>> m_pending;
    int m_groups = 0;
};

// Widens a record by the stretch of columns first..last of one row. The edges are compared as signed 16-bit values.
void add_run(component& record, int first, int last, int row) {
    const std::int16_t s = static_cast<std::int16_t>(first);
    const std::int16_t e = static_cast<std::int16_t>(last);
    const std::int16_t r = static_cast<std::int16_t>(row);
    if (s < record.left) record.left = s;
    if (e > record.right) record.right = e;
    if (r <= record.top) record.top = r;
    if (r >= record.bottom) record.bottom = r;
    record.area += last - first + 1;
}

}  // namespace

bool operator==(const component& a, const component& b) {
    return a.area == b.area && a.left == b.left && a.right == b.right && a.top == b.top && a.bottom == b.bottom;
}

void label_components(const plane& img, std::vector<component>& out) {
    label_map labels(img);
    if (labels.groups() == 0) return;
    component start;
    start.left = 352;
    start.top = 288;
    out.resize(static_cast<std::size_t>(labels.groups()), start);
    for (int y = 0; y < img.height; ++y) {
        for (int x = 0; x < img.width; ++x) {
            const int label = labels.at(x, y);
            if (label == 0) continue;
            const int first = x;
            while (x + 1 < img.width && labels.at(x + 1, y) != 0) ++x;
            add_run(out[static_cast<std::size_t>(label - 1)], first, x, y);
        }
    }
}

}  // namespace ref
