#include "preprocess/CYuv420_Rgb.h"

#include "imgproc/common.h"

namespace orva_fd {

namespace {

const int k_clip_zero = 384;  // where value 0 lies in the clipping table

template <int... values>
struct index_list {};
template <int count, int... values>
struct count_up : count_up<count - 1, count - 1, values...> {};
template <int... values>
struct count_up<0, values...> {
    typedef index_list<values...> list;
};

// Offsets for a coefficient with 8 fraction bits; the shift rounds towards minus infinity.
template <int... chroma>
constexpr chroma_table offsets(int coefficient, index_list<chroma...>) {
    return chroma_table{{(((chroma - 128) * coefficient) >> 8)...}};
}
typedef count_up<256>::list all_chroma;

struct block_offsets {
    int red;
    int green;
    int blue;
};

void convert_pixel(const block_offsets& offset, unsigned char luma, unsigned char* blue, unsigned char* green,
                   unsigned char* red) {
    const unsigned char* clip = CYuv420_Rgb::m_table_clp + k_clip_zero;
    *blue = clip[luma + offset.blue];
    *green = clip[luma - offset.green];
    *red = clip[luma + offset.red];
}

}  // namespace

const chroma_table CYuv420_Rgb::m_table_fv1 = offsets(359, all_chroma());
const chroma_table CYuv420_Rgb::m_table_fv2 = offsets(183, all_chroma());
const chroma_table CYuv420_Rgb::m_table_fu1 = offsets(88, all_chroma());
const chroma_table CYuv420_Rgb::m_table_fu2 = offsets(454, all_chroma());
unsigned char CYuv420_Rgb::m_table_clp[1024];

int CYuv420_Rgb::init() {
    for (int i = 0; i < 1024; ++i) m_table_clp[i] = static_cast<unsigned char>(limit_range(i - k_clip_zero, 0, 255));
    return FD_OK;
}

int CYuv420_Rgb::destroy() {
    return FD_OK;
}

int CYuv420_Rgb::yuv420sp_to_rgb24(fd_yuv_frame* src, fd_yuv_frame* dst) {
    const int width = static_cast<int>(src->width);
    const int height = static_cast<int>(src->height);
    const std::size_t stride = dst->stride[0];
    for (int y = 0; y < height; y += 2) {
        const unsigned char* chroma = plane_row(src, 1, y / 2);
        const unsigned char* luma[2] = {plane_row(src, 0, y), plane_row(src, 0, y + 1)};
        const std::size_t row = static_cast<std::size_t>(y) * stride;
        for (int x = 0; x < width; x += 2) {
            const unsigned char v = chroma[x];
            const unsigned char u = chroma[x + 1];
            const block_offsets offset = {m_table_fv1[v], m_table_fu1[u] + m_table_fv2[v], m_table_fu2[u]};
            for (int pixel = 0; pixel < 4; ++pixel) {
                const std::size_t at = row + (pixel / 2 != 0 ? stride : 0) + static_cast<std::size_t>(x + pixel % 2);
                convert_pixel(offset, luma[pixel / 2][x + pixel % 2], dst->virt_addr[0] + at, dst->virt_addr[1] + at,
                              dst->virt_addr[2] + at);
            }
        }
    }
    return FD_OK;
}

}  // namespace orva_fd
