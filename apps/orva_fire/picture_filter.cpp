#include "apps/orva_fire/picture_filter.h"

#include <cmath>
#include <new>
#include <utility>

#include "apps/orva_fire/error.h"

extern "C" {
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
#include <libavutil/display.h>
#include <libavutil/mem.h>
#include <libavutil/pixdesc.h>
}

namespace orva_fire {
namespace {

const int k_smallest_deinterlaced = 8;  // the filter refuses pictures of a few pixels

// Clockwise angle of a display matrix in degrees, 0 to 360.
double clockwise_angle(const int32_t* matrix) {
    const double angle = -av_display_rotation_get(matrix);
    if (std::isnan(angle)) return 0;
    return angle - 360 * std::floor(angle / 360 + 0.9 / 360);
}

bool is_near(double angle, double wanted) {
    return std::fabs(angle - wanted) < 1;
}

void append_filter(std::string& chain, const std::string& filter) {
    if (!chain.empty()) chain += ',';
    chain += filter;
}

// Formats whose pixels cannot be cut or addressed one by one: packed bits, palettes, sensor mosaics.
bool needs_plain_rgb(int format) {
    const AVPixFmtDescriptor* description = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(format));
    const uint64_t awkward = AV_PIX_FMT_FLAG_BITSTREAM | AV_PIX_FMT_FLAG_PAL | AV_PIX_FMT_FLAG_BAYER;
    return description && (description->flags & awkward);
}

void check(int status, const char* what) {
    if (status == AVERROR(ENOMEM)) throw std::bad_alloc();
    if (status < 0) throw io_error(std::string(what) + ": " + error_text(status));
}

AVFilterContext* add_end(AVFilterGraph* graph, const char* filter, const char* name, const char* arguments) {
    AVFilterContext* context = nullptr;
    check(avfilter_graph_create_filter(&context, avfilter_get_by_name(filter), name, arguments, nullptr, graph),
          "the pictures cannot be prepared");
    return context;
}

AVFilterInOut* open_pad(const char* name, AVFilterContext* context) {
    AVFilterInOut* pad = avfilter_inout_alloc();
    if (!pad) throw std::bad_alloc();
    pad->name = av_strdup(name);
    pad->filter_ctx = context;
    pad->pad_idx = 0;
    pad->next = nullptr;
    return pad;
}

}  // namespace

std::string upright_filters(const int32_t* matrix) {
    if (!matrix) return {};
    const double angle = clockwise_angle(matrix);
    if (is_near(angle, 90)) return matrix[3] > 0 ? "transpose=cclock_flip" : "transpose=clock";
    if (is_near(angle, 270)) return matrix[3] < 0 ? "transpose=clock_flip" : "transpose=cclock";
    std::string filters;
    if (is_near(angle, 180)) {
        if (matrix[0] < 0) append_filter(filters, "hflip");
        if (matrix[4] < 0) append_filter(filters, "vflip");
    } else if (is_near(angle, 0) && matrix[4] < 0) {
        append_filter(filters, "vflip");
    }
    return filters;
}

bool has_odd_angle(const int32_t* matrix) {
    if (!matrix) return false;
    const double angle = clockwise_angle(matrix);
    return !is_near(angle, 0) && !is_near(angle, 90) && !is_near(angle, 180) && !is_near(angle, 270);
}

picture_filter::picture_filter(AVRational time_base, std::string upright, picture_size size)
    : m_time_base(time_base), m_upright(std::move(upright)), m_size(size) {}

picture_filter::layout picture_filter::layout_of(const AVFrame& picture) const {
    layout result;
    result.width = picture.width;
    result.height = picture.height;
    result.format = picture.format;
    result.aspect = picture.sample_aspect_ratio;
    result.deinterlace =
        m_interlaced_seen && picture.width >= k_smallest_deinterlaced && picture.height >= k_smallest_deinterlaced;
    return result;
}

std::string picture_filter::chain_for(const layout& wanted) const {
    std::string chain;
    if (needs_plain_rgb(wanted.format)) append_filter(chain, "format=rgb24");
    // Progressive pictures of a mixed stream pass the deinterlacer as they are.
    if (wanted.deinterlace) append_filter(chain, "bwdif=mode=send_frame:parity=auto:deint=interlaced");
    if (!m_upright.empty()) append_filter(chain, m_upright);
    const bool turned = m_upright.rfind("transpose", 0) == 0;
    const picture_size out =
        turned ? picture_size{wanted.height, wanted.width} : picture_size{wanted.width, wanted.height};
    if (m_size.width != 0 && out != m_size) {
        append_filter(chain, "scale=" + std::to_string(m_size.width) + ":" + std::to_string(m_size.height));
    }
    return chain;
}

void picture_filter::rebuild(const layout& wanted) {
    m_layout = wanted;
    m_graph.reset();
    const std::string chain = chain_for(wanted);
    if (chain.empty()) return;

    m_graph.reset(avfilter_graph_alloc());
    if (!m_graph) throw std::bad_alloc();
    m_graph->nb_threads = 1;
    const std::string entry = "video_size=" + std::to_string(wanted.width) + "x" + std::to_string(wanted.height) +
                              ":pix_fmt=" + std::to_string(wanted.format) +
                              ":time_base=" + std::to_string(m_time_base.num) + "/" + std::to_string(m_time_base.den) +
                              ":pixel_aspect=" + std::to_string(wanted.aspect.num) + "/" +
                              std::to_string(wanted.aspect.den > 0 ? wanted.aspect.den : 1);
    m_entry = add_end(m_graph.get(), "buffer", "in", entry.c_str());
    m_exit = add_end(m_graph.get(), "buffersink", "out", nullptr);

    // Names as seen from the chain: its input is the entry's open output.
    AVFilterInOut* outputs = open_pad("in", m_entry);
    AVFilterInOut* inputs = open_pad("out", m_exit);
    const int status = avfilter_graph_parse_ptr(m_graph.get(), chain.c_str(), &inputs, &outputs, nullptr);
    avfilter_inout_free(&inputs);
    avfilter_inout_free(&outputs);
    check(status, "the pictures cannot be prepared");
    check(avfilter_graph_config(m_graph.get(), nullptr), "the pictures cannot be prepared");
}

void picture_filter::push(frame_ptr picture) {
    if (picture->interlaced_frame) m_interlaced_seen = true;
    const layout wanted = layout_of(*picture);
    const bool same = wanted.width == m_layout.width && wanted.height == m_layout.height &&
                      wanted.format == m_layout.format && wanted.deinterlace == m_layout.deinterlace &&
                      av_cmp_q(wanted.aspect, m_layout.aspect) == 0;
    if (!same) {
        finish();
        rebuild(wanted);
    }
    if (!m_graph) {
        hand_on(std::move(picture), m_time_base);
        return;
    }
    check(av_buffersrc_add_frame(m_entry, picture.get()), "a picture could not be prepared");
    drain_graph();
}

void picture_filter::finish() {
    if (!m_graph) return;
    check(av_buffersrc_add_frame(m_entry, nullptr), "a picture could not be prepared");
    drain_graph();
    m_graph.reset();
    m_layout = layout();
}

void picture_filter::drain_graph() {
    while (true) {
        frame_ptr picture = new_frame();
        const int status = av_buffersink_get_frame(m_exit, picture.get());
        if (status == AVERROR(EAGAIN) || status == AVERROR_EOF) return;
        check(status, "a picture could not be prepared");
        hand_on(std::move(picture), av_buffersink_get_time_base(m_exit));
    }
}

void picture_filter::hand_on(frame_ptr picture, AVRational time_base) {
    if (m_size.width == 0) m_size = {picture->width, picture->height};
    const double seconds = static_cast<double>(picture->pts) * av_q2d(time_base);
    m_ready.push_back({std::move(picture), seconds});
}

bool picture_filter::pull(frame_ptr& picture, double& seconds) {
    if (m_ready.empty()) return false;
    picture = std::move(m_ready.front().picture);
    seconds = m_ready.front().seconds;
    m_ready.pop_front();
    return true;
}

}  // namespace orva_fire
