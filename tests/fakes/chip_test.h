// What the tests on the stand-in chip share: a fixture that leaves no buffer behind, and pictures that the engine
// knows.
#ifndef ORVA_TESTS_FAKES_CHIP_TEST_H
#define ORVA_TESTS_FAKES_CHIP_TEST_H

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <vector>

#include "ORVA_FireDetection.h"
#include "imgproc/common.h"
#include "tests/fakes/standin.h"
#include "tests/reference/ref_pixels.h"

namespace fakes {

// Every test starts with a fresh chip and must end without a live buffer.
class chip_test : public testing::Test {
protected:
    chip_test() { standin::reset(); }
    ~chip_test() override {
        EXPECT_EQ(standin::live_buffers(), 0) << "a buffer was not released";
        standin::reset();
    }
};

// One to three byte planes in a block that the engine knows, as a frame from video hardware: not cached.
class chip_picture {
public:
    chip_picture(int width, int height, int planes = 1, int stride = 0)
        : m_width(width),
          m_height(height),
          m_planes(planes),
          m_stride(stride != 0 ? stride : (width + 15) / 16 * 16),
          m_bytes(static_cast<std::size_t>(m_stride) * static_cast<std::size_t>(height + 2) *
                      static_cast<std::size_t>(planes),
                  0),
          m_phys_addr(standin::register_frame(m_bytes.data(), m_bytes.size())) {}
    ~chip_picture() { standin::unregister_frame(m_bytes.data()); }
    chip_picture(const chip_picture&) = delete;
    chip_picture& operator=(const chip_picture&) = delete;

    // For NV21 give two planes: the second is the chroma plane.
    fd_yuv_frame frame() {
        fd_yuv_frame record = fd_yuv_frame();
        record.width = static_cast<std::uint32_t>(m_width);
        record.height = static_cast<std::uint32_t>(m_height);
        record.reserved = -1;
        for (int plane = 0; plane < m_planes; ++plane) {
            const std::size_t offset = plane_offset(plane);
            record.phys_addr[plane] = m_phys_addr + static_cast<std::uint32_t>(offset);
            record.virt_addr[plane] = m_bytes.data() + offset;
            record.stride[plane] = static_cast<std::uint32_t>(m_stride);
        }
        return record;
    }

    ref::plane plane(int which = 0) { return {m_bytes.data() + plane_offset(which), m_width, m_height, m_stride}; }
    ref::yuv_view yuv() { return {plane(0), plane(1).data, m_stride}; }
    ref::rgb_view rgb() { return {plane(0), plane(1).data, plane(2).data}; }

    std::vector<unsigned char>& bytes() { return m_bytes; }
    std::uint32_t phys_addr() const { return m_phys_addr; }

    // Plane 0 without row padding.
    std::vector<unsigned char> pixels() {
        std::vector<unsigned char> all;
        for (int y = 0; y < m_height; ++y) all.insert(all.end(), &plane().at(0, y), &plane().at(0, y) + m_width);
        return all;
    }

    void fill_noise(std::uint32_t seed) {
        for (unsigned char& byte : m_bytes) {
            seed = seed * 1664525u + 1013904223u;
            byte = static_cast<unsigned char>(seed >> 24);
        }
    }
    // 255 where noise is above `level`, else 0.
    void fill_binary_noise(std::uint32_t seed, int level) {
        fill_noise(seed);
        for (unsigned char& byte : m_bytes) byte = byte > level ? 255 : 0;
    }

private:
    std::size_t plane_offset(int plane) const {
        return static_cast<std::size_t>(plane) * static_cast<std::size_t>(m_stride) *
               static_cast<std::size_t>(m_height);
    }

    int m_width;
    int m_height;
    int m_planes;
    int m_stride;
    std::vector<unsigned char> m_bytes;
    std::uint32_t m_phys_addr;
};

}  // namespace fakes

#endif
