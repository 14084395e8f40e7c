#include "apps/orva_fire/detector_picture.h"

#include <algorithm>
#include <cstring>

#include "apps/orva_fire/picture_file.h"
#include "apps/orva_fire/scaler.h"

namespace orva_fire {
namespace {

void copy_rows(const std::vector<uint8_t>& bytes, size_t row_bytes, AVFrame& picture) {
    for (int y = 0; y < picture.height; ++y) {
        std::memcpy(picture.data[0] + static_cast<ptrdiff_t>(y) * picture.linesize[0],
                    bytes.data() + static_cast<size_t>(y) * row_bytes, row_bytes);
    }
}

void write_plane(const std::string& path, picture_size size, AVPixelFormat format, const std::vector<uint8_t>& bytes) {
    const frame_ptr picture = new_picture(format, size.width, size.height);
    copy_rows(bytes, bytes.size() / static_cast<size_t>(size.height), *picture);
    save_bytes(path, png_bytes(*picture));
}

}  // namespace

frame_ptr viewable(nv21_picture& picture) {
    const picture_size size = picture.size();
    frame_ptr copy = new_picture(AV_PIX_FMT_YUVJ420P, size.width, size.height);
    for (int y = 0; y < size.height; ++y) {
        std::memcpy(copy->data[0] + static_cast<ptrdiff_t>(y) * copy->linesize[0],
                    picture.luma() + static_cast<ptrdiff_t>(y) * picture.stride(), static_cast<size_t>(size.width));
    }
    for (int y = 0; y < (size.height + 1) / 2; ++y) {
        const uint8_t* pairs = picture.chroma() + static_cast<ptrdiff_t>(y) * picture.stride();
        uint8_t* u = copy->data[1] + static_cast<ptrdiff_t>(y) * copy->linesize[1];
        uint8_t* v = copy->data[2] + static_cast<ptrdiff_t>(y) * copy->linesize[2];
        for (int x = 0; x < (size.width + 1) / 2; ++x) {
            v[x] = pairs[2 * x];
            u[x] = pairs[2 * x + 1];
        }
    }
    copy->color_range = AVCOL_RANGE_JPEG;
    copy->colorspace = AVCOL_SPC_SMPTE170M;
    return copy;
}

colour_picture coloured(nv21_picture& picture) {
    const frame_ptr source = viewable(picture);
    const picture_size size = picture.size();
    const frame_ptr converted = new_picture(AV_PIX_FMT_RGB24, size.width, size.height);
    picture_colour target;
    target.format = AV_PIX_FMT_RGB24;
    target.full_range = true;
    target.rgb = true;
    scaler().convert(*source, target, size, converted->data, converted->linesize);
    colour_picture result{size, std::vector<uint8_t>(static_cast<size_t>(size.width * size.height) * 3)};
    const size_t row_bytes = static_cast<size_t>(size.width) * 3;
    for (int y = 0; y < size.height; ++y) {
        std::memcpy(result.bytes.data() + static_cast<size_t>(y) * row_bytes,
                    converted->data[0] + static_cast<ptrdiff_t>(y) * converted->linesize[0], row_bytes);
    }
    return result;
}

void outline(colour_picture& picture, const box& where, ink colour) {
    const int left = where.x - 1, top = where.y - 1, right = where.x + where.width, bottom = where.y + where.height;
    for (int y = std::max(top, 0); y <= std::min(bottom, picture.size.height - 1); ++y) {
        for (int x = std::max(left, 0); x <= std::min(right, picture.size.width - 1); ++x) {
            if (y != top && y != bottom && x != left && x != right) continue;
            uint8_t* pixel =
                picture.bytes.data() +
                (static_cast<size_t>(y) * static_cast<size_t>(picture.size.width) + static_cast<size_t>(x)) * 3;
            pixel[0] = colour.red;
            pixel[1] = colour.green;
            pixel[2] = colour.blue;
        }
    }
}

void write_png(const std::string& path, const grey_picture& picture) {
    write_plane(path, picture.size, AV_PIX_FMT_GRAY8, picture.bytes);
}

void write_png(const std::string& path, const colour_picture& picture) {
    write_plane(path, picture.size, AV_PIX_FMT_RGB24, picture.bytes);
}

}  // namespace orva_fire
