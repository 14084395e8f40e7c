#include "bench/contenders.h"

#ifdef ORVA_BENCH_OPENCV

#include <cstring>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "bench/staged_contender.h"
#define ORVA_PLAIN_NAMESPACE plain_o3
#include "bench/plain/plain.h"

namespace bench {

namespace {

stage_hook watcher = nullptr;

void ended(stage s) {
    if (watcher != nullptr) watcher(s);
}

// Rows of one parity: in a picture of 2 x 2 blocks, the upper or the lower rows of all blocks.
cv::Mat rows_of(cv::Mat& image, int odd) {
    return cv::Mat(image.rows / 2, image.cols, CV_8U, image.ptr(odd), 2 * image.step[0]);
}

// Each value twice, side by side: from one value for a block to one for each of its columns.
cv::Mat twice_as_wide(const cv::Mat& blocks, cv::Mat* space) {
    const cv::Mat both[2] = {blocks, blocks};
    cv::merge(both, 2, *space);
    return space->reshape(1);
}

// The chain as it is written with OpenCV 4, one thread, each stage with the calls that were fastest of those that do
// it: THRESH_OTSU instead of calcHist and a search, findContours instead of connectedComponentsWithStats, and the
// colour test plane by plane inside the mask's bounding rectangle. The result comes near the library's, not equal to
// it. Not OpenCV's: the last two colour tests, on the pixels that pass the others; and everything after the boxes
// (merging, brightness, history), which is the plain text at -O3.
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
        filter_colour(luma, chroma);
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

    // The part of the picture in which the mask has pixels, in whole blocks.
    cv::Rect masked_part() const {
        const cv::Rect box = cv::boundingRect(m_mask);
        const int x = box.x / 2 * 2;
        const int y = box.y / 2 * 2;
        return cv::Rect(x, y, (box.x + box.width - x + 1) / 2 * 2, (box.y + box.height - y + 1) / 2 * 2);
    }

    void filter_colour(const cv::Mat& luma, const cv::Mat& chroma) {
        const cv::Rect part = masked_part();
        if (part.area() == 0) return;
        cv::Mat mask = m_mask(part);
        test_planes(mask, part);
        test_chroma(luma(part), chroma(cv::Rect(part.x / 2, part.y / 2, part.width / 2, part.height / 2)));
        test_pixels(part);
        // A block stays if enough of its set pixels burn: 1 of 1 or 2, 2 of 3, 3 of 4. Means of four bytes are 0, 64,
        // 128, 191 and 255.
        const cv::Size blocks(part.width / 2, part.height / 2);
        cv::resize(mask, m_set, blocks, 0, 0, cv::INTER_AREA);
        cv::resize(m_fire, m_burning, blocks, 0, 0, cv::INTER_AREA);
        cv::subtract(m_set, 64, m_set);
        cv::max(m_set, 1, m_set);
        cv::compare(m_burning, m_set, m_warm, cv::CMP_GE);
        const cv::Mat wide = twice_as_wide(m_warm, &m_wide);
        for (int odd = 0; odd < 2; ++odd) {
            cv::Mat rows = rows_of(mask, odd);
            cv::bitwise_and(rows, wide, rows);
        }
    }

    // Red >= green > blue, each above its limit, red below twice the green.
    void test_planes(const cv::Mat& mask, const cv::Rect& part) {
        const cv::Mat blue = m_planes[0](part);
        const cv::Mat green = m_planes[1](part);
        const cv::Mat red = m_planes[2](part);
        cv::compare(red, green, m_fire, cv::CMP_GE);
        cv::bitwise_and(m_fire, mask, m_fire);
        keep(green, blue, cv::CMP_GT);
        keep_above(blue, 80);
        keep_above(red, 150);
        keep_above(green, 100);
        cv::subtract(red, green, m_excess);
        keep(m_excess, green, cv::CMP_LT);
    }

    void keep(const cv::Mat& a, const cv::Mat& b, int comparison) {
        cv::compare(a, b, m_test, comparison);
        cv::bitwise_and(m_fire, m_test, m_fire);
    }

    void keep_above(const cv::Mat& plane, double limit) {
        cv::threshold(plane, m_test, limit, 255, cv::THRESH_BINARY);
        cv::bitwise_and(m_fire, m_test, m_fire);
    }

    // V above U and 120, luma above U + 30.
    void test_chroma(const cv::Mat& luma, const cv::Mat& chroma) {
        cv::split(chroma, m_vu);
        cv::compare(m_vu[0], m_vu[1], m_warm, cv::CMP_GT);
        cv::threshold(m_vu[0], m_above, 120, 255, cv::THRESH_BINARY);
        cv::bitwise_and(m_warm, m_above, m_warm);
        cv::add(m_vu[1], 30, m_vu[1]);
        const cv::Mat warm = twice_as_wide(m_warm, &m_wide);
        const cv::Mat least = twice_as_wide(m_vu[1], &m_wide_least);
        cv::Mat whole = luma;
        for (int odd = 0; odd < 2; ++odd) {
            cv::Mat rows = rows_of(m_fire, odd);
            cv::compare(rows_of(whole, odd), least, m_test, cv::CMP_GT);
            cv::bitwise_and(rows, m_test, rows);
            cv::bitwise_and(rows, warm, rows);
        }
    }

    // Sum and saturation, on what is left; cv::findNonZero takes longer than looking for it eight bytes at a time.
    void test_pixels(const cv::Rect& part) {
        for (int y = 0; y < part.height; ++y) {
            unsigned char* fire = m_fire.ptr(y);
            for (int x = 0; x < part.width; x += 8) {
                const int end = std::min(part.width, x + 8);
                if (end == x + 8 && none_of_eight(fire + x)) continue;
                for (int i = x; i < end; ++i) {
                    if (fire[i] != 0 && !saturated(part.x + i, part.y + y)) fire[i] = 0;
                }
            }
        }
    }

    static bool none_of_eight(const unsigned char* bytes) {
        std::uint64_t word;
        std::memcpy(&word, bytes, sizeof(word));
        return word == 0;
    }

    bool saturated(int x, int y) const {
        const int blue = m_planes[0].at<unsigned char>(y, x);
        const int red = m_planes[2].at<unsigned char>(y, x);
        const int sum = red + m_planes[1].at<unsigned char>(y, x) + blue;
        return sum > 350 && (sum - 3 * blue) * 1500 >= 11 * (255 - red) * sum;
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
    cv::Mat m_fire;
    cv::Mat m_test;
    cv::Mat m_excess;
    cv::Mat m_warm;
    cv::Mat m_above;
    cv::Mat m_set;
    cv::Mat m_burning;
    cv::Mat m_wide;
    cv::Mat m_wide_least;
    cv::Mat m_vu[2];
    std::vector<cv::Mat> m_planes;
    std::vector<std::vector<cv::Point>> m_contours;
    std::vector<plain_o3::component> m_list;
    std::vector<std::vector<plain_o3::component>> m_history;
};

class opencv_contender : public staged_contender<opencv_channel> {
public:
    opencv_contender() : staged_contender("OpenCV " + std::string(CV_VERSION), &watcher) { cv::setNumThreads(1); }
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
