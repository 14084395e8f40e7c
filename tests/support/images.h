// Images for tests: bytes in a block of exactly the length that an operation may use, between guard bytes, and small
// pictures drawn as text.
#ifndef ORVA_TESTS_SUPPORT_IMAGES_H
#define ORVA_TESTS_SUPPORT_IMAGES_H

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

#include "ORVA_FireDetection.h"

namespace support {

// One plane of `stride` * `height` bytes that starts `offset` bytes behind the front guard. Without a stride it is the
// width.
class grey_image {
public:
    grey_image(int width, int height, int stride = -1, int offset = 0, unsigned char fill = 0)
        : m_width(width), m_height(height), m_stride(stride < 0 ? width : stride), m_start(k_guard + offset) {
        const int length = m_stride * std::max(height, 0);
        m_bytes.assign(static_cast<std::size_t>(m_start + length + k_guard), k_guard_byte);
        std::fill_n(data(), length, fill);
    }

    // '.' is 0, '#' is 255, '1' is 1, 'e' is 254.
    static grey_image drawn(const std::vector<std::string>& rows, int stride = -1) {
        const int width = rows.empty() ? 0 : static_cast<int>(rows[0].size());
        grey_image image(width, static_cast<int>(rows.size()), stride);
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < width; ++x) {
                image.at(x, y) = value_of(rows[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)]);
            }
        }
        return image;
    }

    std::vector<std::string> as_text() const {
        std::vector<std::string> rows;
        for (int y = 0; y < m_height; ++y) {
            std::string row;
            for (int x = 0; x < m_width; ++x) row += letter_of(at(x, y));
            rows.push_back(row);
        }
        return rows;
    }

    int width() const { return m_width; }
    int height() const { return m_height; }
    int stride() const { return m_stride; }
    unsigned char* data() { return m_bytes.data() + m_start; }
    const unsigned char* data() const { return m_bytes.data() + m_start; }
    std::size_t length() const { return m_bytes.size() - static_cast<std::size_t>(m_start + k_guard); }

    unsigned char& at(int x, int y) { return data()[static_cast<std::ptrdiff_t>(y) * m_stride + x]; }
    unsigned char at(int x, int y) const { return data()[static_cast<std::ptrdiff_t>(y) * m_stride + x]; }

    void fill_rect(int x, int y, int width, int height, unsigned char value) {
        for (int row = y; row < y + height; ++row) std::memset(&at(x, row), value, static_cast<std::size_t>(width));
    }

    // The record through which the library sees plane 0.
    fd_yuv_frame frame() {
        fd_yuv_frame record;
        std::memset(&record, 0, sizeof record);
        record.width = static_cast<unsigned>(m_width);
        record.height = static_cast<unsigned>(m_height);
        record.virt_addr[0] = data();
        record.stride[0] = static_cast<unsigned>(m_stride);
        return record;
    }

    bool guards_intact() const {
        const auto is_guard = [](unsigned char byte) { return byte == k_guard_byte; };
        return std::all_of(m_bytes.begin(), m_bytes.begin() + m_start, is_guard) &&
               std::all_of(m_bytes.end() - k_guard, m_bytes.end(), is_guard);
    }

    bool operator==(const grey_image& other) const { return m_bytes == other.m_bytes; }

private:
    static constexpr int k_guard = 32;
    static constexpr unsigned char k_guard_byte = 0xA5;

    static unsigned char value_of(char letter) {
        switch (letter) {
            case '#':
                return 255;
            case '1':
                return 1;
            case 'e':
                return 254;
            default:
                return 0;
        }
    }
    static char letter_of(unsigned char value) {
        switch (value) {
            case 0:
                return '.';
            case 255:
                return '#';
            case 1:
                return '1';
            case 254:
                return 'e';
            default:
                return '?';
        }
    }

    int m_width;
    int m_height;
    int m_stride;
    int m_start;
    std::vector<unsigned char> m_bytes;
};

// A host's picture in one block of exactly the promised length: luma, chroma pairs (V, U), one row to spare.
class nv21_picture {
public:
    nv21_picture(int width, int height, int stride = -1) : m_width(width), m_height(height) {
        m_stride = stride < 0 ? (width + 1) / 2 * 2 : stride;
        m_bytes.assign(static_cast<std::size_t>(m_stride * (height + (height + 1) / 2 + 1)), 0);
        paint_all(0, 128, 128);
    }

    void paint_all(int luma, int u, int v) {
        std::memset(m_bytes.data(), luma, static_cast<std::size_t>(m_stride * m_height));
        unsigned char* chroma = m_bytes.data() + m_stride * m_height;
        const std::ptrdiff_t rest = static_cast<std::ptrdiff_t>(m_bytes.size()) - m_stride * m_height;
        for (std::ptrdiff_t i = 0; i < rest; ++i) chroma[i] = static_cast<unsigned char>(i % m_stride % 2 == 0 ? v : u);
    }

    // x, y, width and height are even, so that chroma pairs are whole.
    void paint(int x, int y, int width, int height, int luma, int u, int v) {
        for (int row = y; row < y + height; ++row) {
            for (int column = x; column < x + width; ++column) {
                luma_at(column, row) = static_cast<unsigned char>(luma);
                chroma_at(column / 2 * 2, row) = static_cast<unsigned char>(v);
                chroma_at(column / 2 * 2 + 1, row) = static_cast<unsigned char>(u);
            }
        }
    }

    int width() const { return m_width; }
    int height() const { return m_height; }
    int stride() const { return m_stride; }
    unsigned char& luma_at(int x, int y) { return m_bytes[static_cast<std::size_t>(y * m_stride + x)]; }
    unsigned char& chroma_at(int x, int y) {
        return m_bytes[static_cast<std::size_t>((m_height + y / 2) * m_stride + x)];
    }
    const std::vector<unsigned char>& bytes() const { return m_bytes; }
    std::vector<unsigned char>& bytes() { return m_bytes; }

    fd_yuv_frame frame() {
        fd_yuv_frame record;
        std::memset(&record, 0, sizeof record);
        record.format = FD_PIXEL_FORMAT_YUV420SP;
        record.width = static_cast<unsigned>(m_width);
        record.height = static_cast<unsigned>(m_height);
        record.reserved = -1;
        record.virt_addr[0] = m_bytes.data();
        record.virt_addr[1] = m_bytes.data() + static_cast<std::ptrdiff_t>(m_stride) * m_height;
        record.stride[0] = static_cast<unsigned>(m_stride);
        record.stride[1] = static_cast<unsigned>(m_stride);
        return record;
    }

private:
    int m_width;
    int m_height;
    int m_stride;
    std::vector<unsigned char> m_bytes;
};

// "" if the two are equal in all bytes of their planes, else the first place where they differ.
inline std::string first_difference(const grey_image& got, const grey_image& wanted) {
    for (int y = 0; y < wanted.height(); ++y) {
        for (int x = 0; x < wanted.stride(); ++x) {
            if (got.at(x, y) == wanted.at(x, y)) continue;
            return "x " + std::to_string(x) + (x < wanted.width() ? "" : " (padding)") + ", y " + std::to_string(y) +
                   ": got " + std::to_string(got.at(x, y)) + ", wanted " + std::to_string(wanted.at(x, y));
        }
    }
    if (!got.guards_intact()) return "a guard byte was overwritten";
    return "";
}

}  // namespace support

#endif
