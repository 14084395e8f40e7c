// What the tests of the twin share: row names, small pictures drawn as text, and images with memory of their own.
#ifndef ORVA_TESTS_REFERENCE_REFERENCE_ROWS_H
#define ORVA_TESTS_REFERENCE_REFERENCE_ROWS_H

#include <gtest/gtest.h>

#include <cctype>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "ORVA_FireDetection.h"
#include "tests/reference/ref_pixels.h"

namespace ref_test {

// A row's name, as far as a test name may hold it.
template <typename row>
std::string row_name(const testing::TestParamInfo<row>& info) {
    std::string name = info.param.name;
    for (char& c : name) {
        if (std::isalnum(static_cast<unsigned char>(c)) == 0) c = '_';
    }
    return name;
}

// A grey image that owns its bytes.
class grey_image {
public:
    grey_image(int width, int height, int stride, unsigned char fill = 0)
        : m_bytes(static_cast<std::size_t>(stride) * static_cast<std::size_t>(height), fill),
          m_width(width),
          m_height(height),
          m_stride(stride) {}

    // One character per pixel: '#' is 255, '.' is 0, '1' is 1, 'e' is 254. Stride equals width.
    explicit grey_image(const std::vector<std::string>& rows)
        : grey_image(static_cast<int>(rows[0].size()), static_cast<int>(rows.size()),
                     static_cast<int>(rows[0].size())) {
        for (int y = 0; y < m_height; ++y) {
            for (int x = 0; x < m_width; ++x) {
                const char c = rows[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)];
                view().at(x, y) = c == '#' ? 255 : c == '1' ? 1 : c == 'e' ? 254 : 0;
            }
        }
    }

    ref::plane view() { return {m_bytes.data(), m_width, m_height, m_stride}; }
    std::vector<unsigned char>& bytes() { return m_bytes; }

    std::vector<std::string> drawn() {
        std::vector<std::string> rows;
        for (int y = 0; y < m_height; ++y) {
            std::string row;
            for (int x = 0; x < m_width; ++x) {
                const int value = view().at(x, y);
                row += value == 255 ? '#' : value == 0 ? '.' : value == 1 ? '1' : value == 254 ? 'e' : '?';
            }
            rows.push_back(row);
        }
        return rows;
    }

private:
    std::vector<unsigned char> m_bytes;
    int m_width;
    int m_height;
    int m_stride;
};

inline void fill_box(const ref::plane& img, int left, int top, int width, int height, int value) {
    for (int y = top; y < top + height; ++y) {
        for (int x = left; x < left + width; ++x) img.at(x, y) = static_cast<unsigned char>(value);
    }
}

using values = std::vector<int>;

const fd_rect k_whole = {0, 1, 0, 1, 1, 1, 1, 1};

inline values of(const fd_rect& r) {
    return {r.x, r.x_ref, r.y, r.y_ref, r.width, r.width_ref, r.height, r.height_ref};
}

// A host's frame in one block: luma, chroma directly behind it, one row to spare.
class host_frame {
public:
    host_frame(int width, int height, int stride, int luma)
        : m_bytes(static_cast<std::size_t>(stride) * static_cast<std::size_t>(height + (height + 1) / 2 + 1), 128) {
        m_frame.width = static_cast<std::uint32_t>(width);
        m_frame.height = static_cast<std::uint32_t>(height);
        m_frame.virt_addr[0] = m_bytes.data();
        m_frame.virt_addr[1] = m_bytes.data() + static_cast<std::ptrdiff_t>(stride) * height;
        m_frame.stride[0] = static_cast<std::uint32_t>(stride);
        m_frame.stride[1] = static_cast<std::uint32_t>(stride);
        fill_box({m_bytes.data(), width, height, stride}, 0, 0, width, height, luma);
    }

    // All even.
    void paint(int left, int top, int width, int height, int y, int u, int v) {
        const int stride = static_cast<int>(m_frame.stride[0]);
        fill_box({m_frame.virt_addr[0], 0, 0, stride}, left, top, width, height, y);
        const ref::plane chroma = {m_frame.virt_addr[1], 0, 0, stride};
        for (int row = top / 2; row < (top + height) / 2; ++row) {
            for (int x = left; x < left + width; x += 2) {
                chroma.at(x, row) = static_cast<unsigned char>(v);
                chroma.at(x + 1, row) = static_cast<unsigned char>(u);
            }
        }
    }

    fd_yuv_frame& frame() { return m_frame; }

private:
    std::vector<unsigned char> m_bytes;
    fd_yuv_frame m_frame{};
};

}  // namespace ref_test

#endif
