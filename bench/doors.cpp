#include "backend/hisi_ive_func.h"
#include "bench/staged_contender.h"
#include "channel/foreground_analysis.h"
#include "preprocess/CYuv420_Rgb.h"
#include "preprocess/pre_process.h"

namespace bench {

namespace {

stage_hook watcher = nullptr;

void ended(stage s) {
    if (watcher != nullptr) watcher(s);
}

// The library's stages one by one, each through its own door, on pictures of 352 x 288 and less. The library itself may
// join stages, so their sum can be more than its frame; results are the same.
class door_channel {
public:
    door_channel()
        : m_bytes(5,
                  std::vector<unsigned char>(static_cast<std::size_t>(orva_fd::k_max_width * orva_fd::k_max_height))) {
        m_stages.start();
        describe(&m_mask, 0);
        describe(&m_work, 1);
        describe(&m_rgb, 2);
        for (std::size_t plane = 1; plane < 3; ++plane) {
            m_rgb.virt_addr[plane] = m_bytes[2 + plane].data();
            m_rgb.stride[plane] = m_rgb.stride[0];
        }
    }

    void set_frame(fd_yuv_frame frame, fd_result* result) {
        resize(frame);
        m_components.clear();
        m_ive.do_sub(&frame, &m_work, &m_work, true);
        ended(stage_difference);
        const int limit = orva_fd::getThreshVal_Otsu(&m_work, 0, 0, 20, 35);
        ended(stage_otsu);
        m_ive.do_thres(&m_work, &m_work, limit, false);
        ended(stage_threshold);
        m_ive.do_dilate(&m_work, &m_mask, true);
        ended(stage_motion_dilate);
        m_ive.do_color_trans(&frame, &m_rgb, orva_fd::color_trans_rgb, true);
        ended(stage_conversion);
        m_stages.color_filter(&m_mask, &m_rgb, &frame);
        ended(stage_colour_filter);
        m_ive.do_dilate(&m_mask, &m_work, false);
        ended(stage_colour_dilate);
        m_ive.do_dma(&m_work, &m_mask, true);
        ended(stage_mask_copy);
        m_ive.do_ccl(&m_work, nullptr, m_components, true);
        ended(stage_label);
        m_ive.do_dma(&frame, &m_work, true);
        ended(stage_keep_luma);
        *result = fd_result();
        m_analysis.set_frame(&frame, &m_mask, &m_rgb, m_components, *result);
        ended(stage_boxes);  // and history, in one
    }

private:
    void describe(fd_yuv_frame* image, std::size_t number) {
        orva_fd::init_yuv_frame(image, orva_fd::k_max_width, orva_fd::k_max_height, orva_fd::k_max_width, 0,
                                m_bytes[number].data(), FD_PIXEL_FORMAT_YUV420SP);
    }

    void resize(const fd_yuv_frame& frame) {
        for (fd_yuv_frame* image : {&m_mask, &m_work, &m_rgb}) {
            image->width = frame.width;
            image->height = frame.height;
        }
    }

    std::vector<std::vector<unsigned char>> m_bytes;
    fd_yuv_frame m_mask;
    fd_yuv_frame m_work;
    fd_yuv_frame m_rgb;
    orva_fd::hisi_ive_func m_ive;
    orva_fd::pre_process m_stages;
    orva_fd::foreground_analysis m_analysis;
    std::vector<orva_fd::con_info> m_components;
};

class door_contender : public staged_contender<door_channel> {
public:
    door_contender() : staged_contender("library, stage by stage", &watcher) {
        orva_fd::fd_table::init();
        orva_fd::pre_process::init();
        orva_fd::CYuv420_Rgb::init();
    }
};

}  // namespace

std::unique_ptr<contender> make_door_contender() {
    return std::unique_ptr<contender>(new door_contender);
}

}  // namespace bench
