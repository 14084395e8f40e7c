#include "apps/orva_fire/stages.h"

#include <cstring>

#include "apps/orva_fire/fresh_channel.h"
#include "backend/hisi_ive_func.h"
#include "imgproc/common.h"
#include "preprocess/pre_process.h"
#include "preprocess/region_scan.h"

namespace orva_fire {
namespace {

// Planes of a picture's size without gaps, as the library's records see them.
class planes {
public:
    planes(picture_size size, int count)
        : m_size(size),
          m_bytes(static_cast<size_t>(size.width) * static_cast<size_t>(size.height) * static_cast<size_t>(count)) {}

    fd_yuv_frame view() {
        fd_yuv_frame frame = {};
        frame.width = static_cast<uint32_t>(m_size.width);
        frame.height = static_cast<uint32_t>(m_size.height);
        const size_t plane_bytes = static_cast<size_t>(m_size.width) * static_cast<size_t>(m_size.height);
        for (size_t plane = 0; plane < 3; ++plane) {
            frame.stride[plane] = frame.width;
            const bool there = (plane + 1) * plane_bytes <= m_bytes.size();
            frame.virt_addr[plane] = there ? m_bytes.data() + plane * plane_bytes : nullptr;
        }
        return frame;
    }
    void fill(uint8_t value) { std::memset(m_bytes.data(), value, m_bytes.size()); }
    grey_picture take() { return {m_size, std::move(m_bytes)}; }
    std::vector<uint8_t>& bytes() { return m_bytes; }

private:
    picture_size m_size;
    std::vector<uint8_t> m_bytes;
};

}  // namespace

// Nothing here has a physical address, so every operation runs in software; sizes are equal, so none fails.
stage_pictures stage_maker::make(nv21_picture& picture) {
    const picture_size size = fresh_channel::looked_at(picture.size());
    planes before(size, 1), difference(size, 1), motion(size, 1), moving(size, 1), filtered(size, 1), colour(size, 1),
        mask(size, 1), rgb(size, 3);
    if (m_before.size() == before.bytes().size()) before.bytes() = m_before;
    pass(picture);

    fd_yuv_frame seen = picture.view();
    seen.height = static_cast<uint32_t>(size.height);
    fd_yuv_frame old_luma = before.view(), d = difference.view(), m = motion.view(), grown = moving.view(),
                 f = filtered.view(), c = colour.view(), last = mask.view(), planes3 = rgb.view();
    orva_fd::hisi_ive_func operations;
    orva_fd::pre_process filter;
    stage_pictures stages;
    (void)operations.do_sub(&seen, &old_luma, &d, true);
    stages.threshold =
        orva_fd::getThreshVal_Otsu(&d, 0, 0, orva_fd::region_scan::k_otsu_min, orva_fd::region_scan::k_otsu_max);
    (void)operations.do_thres(&d, &m, stages.threshold, true);
    (void)operations.do_dilate(&m, &grown, true);
    (void)operations.do_color_trans(&seen, &planes3, orva_fd::color_trans_rgb, true);
    filtered.bytes() = moving.bytes();
    (void)filter.color_filter(&f, &planes3, &seen);
    (void)operations.do_dilate(&f, &last, true);
    colour.fill(255);
    (void)filter.color_filter(&c, &planes3, &seen);

    stages.difference = difference.take();
    stages.motion = motion.take();
    stages.moving = moving.take();
    stages.colour = colour.take();
    stages.mask = mask.take();
    return stages;
}

void stage_maker::pass(nv21_picture& picture) {
    const picture_size size = fresh_channel::looked_at(picture.size());
    const auto width = static_cast<size_t>(size.width), height = static_cast<size_t>(size.height);
    m_before.resize(width * height);
    for (size_t y = 0; y < height; ++y) {
        std::memcpy(m_before.data() + y * width, picture.luma() + y * static_cast<size_t>(picture.stride()), width);
    }
}

}  // namespace orva_fire
