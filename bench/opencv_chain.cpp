#include "bench/contenders.h"

#ifdef ORVA_BENCH_OPENCV

#include <map>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#define ORVA_PLAIN_NAMESPACE plain_o3
#include "bench/plain/plain.h"

namespace bench {

namespace {

stage_hook watcher = nullptr;

void ended(stage s) {
    if (watcher != nullptr) watcher(s);
}

// The chain as it is written with OpenCV 4, one thread, each stage with the call that was fastest of those that do it:
// THRESH_OTSU instead of calcHist and a search, findContours instead of connectedComponentsWithStats. The result comes
// near the library's, not equal to it. Not OpenCV's: the fire-colour test of the pixels that remain after OpenCV's
// comparison of the chroma planes, inside the mask's bounding rectangle; and everything after the boxes (merging,
// brightness, history). Both are the plain text's at -O3.
class opencv_channel {
public:
    opencv_channel() : m_luma(cv::Mat::zeros(FD_MAX_FRAME_HEIGHT, FD_MAX_FRAME_WIDTH, CV_8U)) {}

    void set_frame(const fd_yuv_frame& frame, fd_result* result) {
        const int width = static_cast<int>(frame.width);
        const int height = static_cast<int>(frame.height);
        if (m_luma.cols != width || m_luma.rows != height) m_luma = cv::Mat::zeros(height, width, CV_8U);
        const cv::Mat luma(height, width, CV_8U, frame.virt_addr[0], frame.stride[0]);
        const cv::Mat chroma(height / 2, width / 2, CV_8UC2, frame.virt_addr[1], frame.stride[1]);
        find_motion(luma);
        cv::cvtColorTwoPlane(luma, chroma, m_packed, cv::COLOR_YUV2BGR_NV21);
        cv::split(m_packed, m_planes);
        ended(stage_conversion);
        drop_cold_chroma(chroma);
        filter_colour(frame);
        ended(stage_colour_filter);
        cv::dilate(m_mask, m_work, cv::Mat());
        ended(stage_colour_dilate);
        m_work.copyTo(m_mask);
        ended(stage_mask_copy);
        find_boxes();
        ended(stage_label);
        luma.copyTo(m_luma);
        ended(stage_keep_luma);
        analyse(frame, result);
    }

private:
    void find_motion(const cv::Mat& luma) {
        cv::absdiff(luma, m_luma, m_work);
        ended(stage_difference);
        const double found = cv::threshold(m_work, m_binary, 0, 255, cv::THRESH_BINARY | cv::THRESH_OTSU);
        ended(stage_otsu);
        const double limit = std::max(20.0, std::min(35.0, found));
        if (found < limit || found > limit) cv::threshold(m_work, m_binary, limit, 255, cv::THRESH_BINARY);
        ended(stage_threshold);
        cv::dilate(m_binary, m_mask, cv::Mat());
        ended(stage_motion_dilate);
    }

    // Clears the mask where V is not above U and 120. A chroma value stands for two columns and two rows.
    void drop_cold_chroma(const cv::Mat& chroma) {
        cv::split(chroma, m_vu);
        cv::compare(m_vu[0], m_vu[1], m_warm, cv::CMP_GT);
        cv::compare(m_vu[0], 120, m_above, cv::CMP_GT);
        cv::bitwise_and(m_warm, m_above, m_warm);
        const cv::Mat twice[2] = {m_warm, m_warm};
        cv::merge(twice, 2, m_wide);
        const cv::Mat wide = m_wide.reshape(1);
        for (int odd = 0; odd < 2; ++odd) {
            cv::Mat rows(m_mask.rows / 2, wide.cols, CV_8U, m_mask.ptr(odd), 2 * m_mask.step);
            cv::bitwise_and(rows, wide, rows);
        }
    }

    void filter_colour(const fd_yuv_frame& frame) {
        const cv::Rect box = cv::boundingRect(m_mask);
        if (box.area() == 0) return;
        const int x = box.x / 2 * 2;
        const int y = box.y / 2 * 2;
        const std::size_t stride = m_mask.step;
        fd_yuv_frame mask = {};
        mask.width = static_cast<std::uint32_t>((box.x + box.width - x + 1) / 2 * 2);
        mask.height = static_cast<std::uint32_t>((box.y + box.height - y + 1) / 2 * 2);
        mask.virt_addr[0] = m_mask.ptr(y) + x;
        mask.stride[0] = static_cast<std::uint32_t>(stride);
        fd_yuv_frame rgb = mask;
        for (std::size_t plane = 0; plane < 3; ++plane) rgb.virt_addr[plane] = m_planes[plane].ptr(y) + x;
        rgb.stride[0] = static_cast<std::uint32_t>(m_planes[0].step);
        fd_yuv_frame yuv = frame;
        yuv.virt_addr[0] += static_cast<std::size_t>(y) * frame.stride[0] + static_cast<std::size_t>(x);
        yuv.virt_addr[1] += static_cast<std::size_t>(y / 2) * frame.stride[1] + static_cast<std::size_t>(x);
        plain_o3::colour_filter(&mask, &rgb, &yuv);
    }

    void find_boxes() {
        cv::findContours(m_work, m_contours, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_SIMPLE);
        m_list.clear();
        for (std::size_t i = m_contours.size(); i-- > 0;) {  // findContours lists the lowest first
            const cv::Rect box = cv::boundingRect(m_contours[i]);
            const int area = static_cast<int>(cv::contourArea(m_contours[i])) + static_cast<int>(m_contours[i].size());
            m_list.push_back({area, static_cast<short>(box.x), static_cast<short>(box.x + box.width - 1),
                              static_cast<short>(box.y), static_cast<short>(box.y + box.height - 1)});
        }
    }

    void analyse(const fd_yuv_frame& frame, fd_result* result) {
        fd_yuv_frame mask = {};
        mask.virt_addr[0] = m_mask.ptr();
        mask.stride[0] = static_cast<std::uint32_t>(m_mask.step);
        std::vector<plain_o3::component> candidates;
        plain_o3::find_candidates(&frame, &mask, m_list, candidates);
        ended(stage_boxes);
        *result = fd_result();
        if (m_history.size() == 50) {
            plain_o3::find_stable(m_history, candidates, 35, *result);
            if (!m_list.empty()) m_history.erase(m_history.begin());
        }
        if (!m_list.empty()) m_history.push_back(m_list);
        ended(stage_history);
    }

    cv::Mat m_luma;  // of the frame before
    cv::Mat m_work;
    cv::Mat m_binary;
    cv::Mat m_mask;
    cv::Mat m_packed;
    cv::Mat m_warm;
    cv::Mat m_above;
    cv::Mat m_wide;
    cv::Mat m_vu[2];
    std::vector<cv::Mat> m_planes;
    std::vector<std::vector<cv::Point>> m_contours;
    std::vector<plain_o3::component> m_list;
    std::vector<std::vector<plain_o3::component>> m_history;
};

class opencv_contender : public contender {
public:
    opencv_contender() : contender("OpenCV " + std::string(CV_VERSION)) { cv::setNumThreads(1); }

    int open() override {
        m_channels[m_next].reset(new opencv_channel);
        return m_next++;
    }
    void close(int handle) override { m_channels.erase(handle); }
    int play(int handle, const fd_yuv_frame& frame, fd_result* result) override {
        m_channels[handle]->set_frame(frame, result);
        return FD_OK;
    }
    bool watch_stages(stage_hook hook) override {
        watcher = hook;
        return true;
    }

private:
    std::map<int, std::unique_ptr<opencv_channel>> m_channels;
    int m_next = 0;
};

}  // namespace

std::unique_ptr<contender> make_opencv_contender() {
    return std::unique_ptr<contender>(new opencv_contender);
}

}  // namespace bench

#else

namespace bench {

std::unique_ptr<contender> make_opencv_contender() {
    return nullptr;
}

}  // namespace bench

#endif
