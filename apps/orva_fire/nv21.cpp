#include "apps/orva_fire/nv21.h"

#include <algorithm>
#include <iterator>

#include "apps/orva_fire/error.h"

namespace orva_fire {
namespace {

const int k_stride_step = 16;

size_t block_bytes(int stride, int height) {
    return static_cast<size_t>(stride) * static_cast<size_t>(height + (height + 1) / 2 + 1);
}

// A view of the region's pixels; nothing is copied, and the source keeps its memory.
frame_ptr cut(const AVFrame& source, const box& region) {
    frame_ptr view = new_frame();
    view->format = source.format;
    view->width = source.width;
    view->height = source.height;
    view->color_range = source.color_range;
    view->chroma_location = source.chroma_location;
    std::copy(std::begin(source.data), std::end(source.data), std::begin(view->data));
    std::copy(std::begin(source.linesize), std::end(source.linesize), std::begin(view->linesize));
    view->crop_left = static_cast<size_t>(region.x);
    view->crop_top = static_cast<size_t>(region.y);
    view->crop_right = static_cast<size_t>(source.width - region.x - region.width);
    view->crop_bottom = static_cast<size_t>(source.height - region.y - region.height);
    const int status = av_frame_apply_cropping(view.get(), AV_FRAME_CROP_UNALIGNED);
    if (status < 0) throw io_error("a region could not be cut out: " + error_text(status));
    // The matrix of untagged video depends on the size of the whole picture, not of the part.
    view->colorspace = colour_of(source).matrix;
    return view;
}

}  // namespace

nv21_picture::nv21_picture(picture_size size)
    : m_size(size),
      m_stride((size.width + k_stride_step - 1) / k_stride_step * k_stride_step),
      m_bytes(block_bytes(m_stride, size.height)) {}

fd_yuv_frame nv21_picture::view() {
    fd_yuv_frame frame = {};
    frame.format = FD_PIXEL_FORMAT_YUV420SP;
    frame.width = static_cast<uint32_t>(m_size.width);
    frame.height = static_cast<uint32_t>(m_size.height);
    frame.reserved = -1;
    frame.virt_addr[0] = luma();
    frame.virt_addr[1] = chroma();
    frame.stride[0] = static_cast<uint32_t>(m_stride);
    frame.stride[1] = static_cast<uint32_t>(m_stride);
    return frame;
}

nv21_converter::nv21_converter(const box& region)
    : m_region(region), m_picture(analysis_size({region.width, region.height})) {}

nv21_picture& nv21_converter::convert(const AVFrame& source) {
    picture_colour target;
    target.format = AV_PIX_FMT_NV21;
    target.full_range = true;
    target.matrix = AVCOL_SPC_SMPTE170M;
    uint8_t* const planes[4] = {m_picture.luma(), m_picture.chroma(), nullptr, nullptr};
    const int strides[4] = {m_picture.stride(), m_picture.stride(), 0, 0};
    const frame_ptr part = cut(source, m_region);
    m_scaler.convert(*part, target, m_picture.size(), planes, strides);
    return m_picture;
}

}  // namespace orva_fire
