#include "apps/orva_fire/colour.h"

#include <algorithm>
#include <cmath>

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace orva_fire {
namespace {

const int k_hd_width = 1280;
const int k_sd_height = 576;

AVColorSpace matrix_of(const AVFrame& picture) {
    switch (picture.colorspace) {
        case AVCOL_SPC_BT709:
        case AVCOL_SPC_FCC:
        case AVCOL_SPC_SMPTE170M:
        case AVCOL_SPC_SMPTE240M:
        case AVCOL_SPC_BT2020_NCL:
            return picture.colorspace;
        case AVCOL_SPC_BT470BG:
            return AVCOL_SPC_SMPTE170M;  // the same numbers under another name
        case AVCOL_SPC_BT2020_CL:
            return AVCOL_SPC_BT2020_NCL;
        default:
            break;
    }
    // Cameras write HD as BT.709 and often forget to say so; narrow or low pictures may be turned by 90 degrees.
    const int across = std::max(picture.width, picture.height);
    const int down = std::min(picture.width, picture.height);
    return across >= k_hd_width || down > k_sd_height ? AVCOL_SPC_BT709 : AVCOL_SPC_SMPTE170M;
}

// Weights of red and blue in luma.
struct luma_weights {
    double red, blue;
};

luma_weights weights_of(AVColorSpace matrix) {
    switch (matrix) {
        case AVCOL_SPC_BT709:
            return {0.2126, 0.0722};
        case AVCOL_SPC_FCC:
            return {0.30, 0.11};
        case AVCOL_SPC_SMPTE240M:
            return {0.212, 0.087};
        case AVCOL_SPC_BT2020_NCL:
            return {0.2627, 0.0593};
        default:
            return {0.299, 0.114};
    }
}

uint8_t to_byte(double value) {
    return static_cast<uint8_t>(std::lround(std::clamp(value, 0.0, 255.0)));
}

}  // namespace

AVPixelFormat plain_format(AVPixelFormat format) {
    switch (format) {
        case AV_PIX_FMT_YUVJ411P:
            return AV_PIX_FMT_YUV411P;
        case AV_PIX_FMT_YUVJ420P:
            return AV_PIX_FMT_YUV420P;
        case AV_PIX_FMT_YUVJ422P:
            return AV_PIX_FMT_YUV422P;
        case AV_PIX_FMT_YUVJ440P:
            return AV_PIX_FMT_YUV440P;
        case AV_PIX_FMT_YUVJ444P:
            return AV_PIX_FMT_YUV444P;
        default:
            return format;
    }
}

picture_colour colour_of(const AVFrame& picture) {
    const auto format = static_cast<AVPixelFormat>(picture.format);
    const AVPixFmtDescriptor* description = av_pix_fmt_desc_get(format);
    picture_colour colour;
    colour.format = plain_format(format);
    colour.rgb = description && (description->flags & AV_PIX_FMT_FLAG_RGB);
    colour.full_range = colour.rgb || colour.format != format || picture.color_range == AVCOL_RANGE_JPEG;
    colour.matrix = matrix_of(picture);
    return colour;
}

std::string colour_warning(const AVFrame& picture) {
    const char* consequence = "; it is taken as it stands, so colours and what is reported may be wrong";
    switch (picture.color_trc) {
        case AVCOL_TRC_SMPTE2084:
            return std::string("the video is high dynamic range (PQ)") + consequence;
        case AVCOL_TRC_ARIB_STD_B67:
            return std::string("the video is high dynamic range (HLG)") + consequence;
        case AVCOL_TRC_LINEAR:
            return std::string("the video has a linear transfer function") + consequence;
        default:
            break;
    }
    switch (picture.colorspace) {
        case AVCOL_SPC_YCGCO:
        case AVCOL_SPC_BT2020_CL:
        case AVCOL_SPC_SMPTE2085:
        case AVCOL_SPC_CHROMA_DERIVED_CL:
        case AVCOL_SPC_ICTCP:
            return std::string("the video's colour matrix (") + av_color_space_name(picture.colorspace) +
                   ") cannot be converted" + consequence;
        default:
            return {};
    }
}

yuv_colour yuv_of(int red, int green, int blue, bool full_range, AVColorSpace matrix) {
    const luma_weights weights = weights_of(matrix);
    const double r = red / 255.0, g = green / 255.0, b = blue / 255.0;
    const double luma = weights.red * r + (1 - weights.red - weights.blue) * g + weights.blue * b;
    const double u = (b - luma) / (2 * (1 - weights.blue));
    const double v = (r - luma) / (2 * (1 - weights.red));
    const double luma_span = full_range ? 255 : 219;
    const double chroma_span = full_range ? 255 : 224;
    const double black = full_range ? 0 : 16;
    return {to_byte(black + luma_span * luma), to_byte(128 + chroma_span * u), to_byte(128 + chroma_span * v)};
}

}  // namespace orva_fire
