#include "tests/fakes/standin_engine.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

namespace standin {

namespace {

// A plane in the engine's memory. Without data its buffer is gone.
struct view {
    unsigned char* data = nullptr;
    int width = 0;
    int height = 0;
    int stride = 0;

    unsigned char* row(int y) const { return data + static_cast<std::ptrdiff_t>(y) * stride; }
};

view view_at(memory_map& memory, HI_U32 phys_addr, int stride, int width, int height) {
    const std::size_t bytes =
        static_cast<std::size_t>(stride) * static_cast<std::size_t>(height - 1) + static_cast<std::size_t>(width);
    return {memory.engine_at(phys_addr, bytes), width, height, stride};
}

view plane_of(memory_map& memory, const IVE_IMAGE_S& image, int plane = 0) {
    const bool chroma = image.enType == IVE_IMAGE_TYPE_YUV420SP && plane == 1;
    return view_at(memory, image.u32PhyAddr[plane], image.u16Stride[plane], image.u16Width,
                   chroma ? image.u16Height / 2 : image.u16Height);
}

view plane_of(memory_map& memory, const IVE_DATA_S& data) {
    return view_at(memory, data.u32PhyAddr, data.u16Stride, data.u16Width, data.u16Height);
}

// --- difference, copy, threshold --------------------------------------------------------------------------------

job_end run_sub(const record& job, memory_map& memory) {
    const view a = plane_of(memory, job.images[0]);
    const view b = plane_of(memory, job.images[1]);
    const view dst = plane_of(memory, job.images[2]);
    if (!a.data || !b.data || !dst.data) return job_end::memory_gone;
    for (int y = 0; y < a.height; ++y) {
        std::transform(a.row(y), a.row(y) + a.width, b.row(y), dst.row(y), [](unsigned char p, unsigned char q) {
            return static_cast<unsigned char>(std::max(p, q) - std::min(p, q));
        });
    }
    return job_end::done;
}

job_end run_dma(const record& job, memory_map& memory) {
    const view src = plane_of(memory, job.data[0]);
    const view dst = plane_of(memory, job.data[1]);
    if (!src.data || !dst.data) return job_end::memory_gone;
    for (int y = 0; y < src.height; ++y) std::memmove(dst.row(y), src.row(y), static_cast<std::size_t>(src.width));
    return job_end::done;
}

job_end run_thresh(const record& job, memory_map& memory) {
    const view src = plane_of(memory, job.images[0]);
    const view dst = plane_of(memory, job.images[1]);
    if (!src.data || !dst.data) return job_end::memory_gone;
    const IVE_THRESH_CTRL_S& control = job.thresh;
    for (int y = 0; y < src.height; ++y) {
        std::transform(src.row(y), src.row(y) + src.width, dst.row(y), [&control](unsigned char value) {
            return value <= control.u8LowThr ? control.u8MinVal : control.u8MaxVal;
        });
    }
    return job_end::done;
}

// --- dilation ---------------------------------------------------------------------------------------------------

const unsigned char k_undefined = 0xA5;  // what comes out where the chip promises nothing

// Columns and rows that the mask reaches from its middle: 2, or 1 if its outer ring is empty.
int reach_of(const IVE_DILATE_CTRL_S& control) {
    for (int at = 0; at < 25; ++at) {
        const bool outer = at / 5 % 4 == 0 || at % 5 % 4 == 0;
        if (outer && control.au8Mask[at] != 0) return 2;
    }
    return 1;
}

unsigned char greatest_under_mask(const view& src, int x, int y, const IVE_DILATE_CTRL_S& control, int reach) {
    unsigned char greatest = 0;
    for (int dy = -reach; dy <= reach; ++dy) {
        for (int dx = -reach; dx <= reach; ++dx) {
            const unsigned char weight = control.au8Mask[(dy + 2) * 5 + dx + 2];
            greatest = std::max(greatest, static_cast<unsigned char>(src.row(y + dy)[x + dx] & weight));
        }
    }
    return greatest;
}

bool is_binary(const view& img) {
    for (int y = 0; y < img.height; ++y) {
        const unsigned char* row = img.row(y);
        if (!std::all_of(row, row + img.width, [](unsigned char v) { return v == 0 || v == 255; })) return false;
    }
    return true;
}

// The whole interior; pixels that the mask would leave the image from keep the source's value.
job_end run_dilate(const record& job, memory_map& memory) {
    const view src = plane_of(memory, job.images[0]);
    const view dst = plane_of(memory, job.images[1]);
    if (!src.data || !dst.data) return job_end::memory_gone;
    const bool defined = is_binary(src);
    const int reach = reach_of(job.dilate);
    for (int y = 0; y < src.height; ++y) {
        for (int x = 0; x < src.width; ++x) {
            const bool inside = x >= reach && y >= reach && x < src.width - reach && y < src.height - reach;
            const unsigned char value = inside ? greatest_under_mask(src, x, y, job.dilate, reach) : src.row(y)[x];
            dst.row(y)[x] = defined ? value : k_undefined;
        }
    }
    return defined ? job_end::done : job_end::undefined_result;
}

// --- colour -----------------------------------------------------------------------------------------------------

// Fixed point with 32 fraction bits: one factor for luma, four for chroma.
struct colour_matrix {
    std::int64_t luma, red_v, green_u, green_v, blue_u;
    int black;        // luma value of black
    int least, most;  // range of the result
};

colour_matrix matrix_of(IVE_CSC_MODE_E mode) {
    const bool bt709 = mode == IVE_CSC_MODE_VIDEO_BT709_YUV2RGB || mode == IVE_CSC_MODE_PIC_BT709_YUV2RGB;
    const bool video = mode == IVE_CSC_MODE_VIDEO_BT601_YUV2RGB || mode == IVE_CSC_MODE_VIDEO_BT709_YUV2RGB;
    const double red = bt709 ? 0.2126 : 0.299;
    const double blue = bt709 ? 0.0722 : 0.114;
    const double green = 1 - red - blue;
    // "PIC" takes studio range to 0..255, "VIDEO" full range to 16..235.
    const double luma = video ? 219.0 / 255 : 255.0 / 219;
    const double chroma = video ? 219.0 / 255 : 255.0 / 224;
    const auto fixed = [](double value) { return static_cast<std::int64_t>(std::llround(value * 4294967296.0)); };
    return {fixed(luma),
            fixed(chroma * 2 * (1 - red)),
            fixed(-chroma * 2 * (1 - blue) * blue / green),
            fixed(-chroma * 2 * (1 - red) * red / green),
            fixed(chroma * 2 * (1 - blue)),
            video ? 0 : 16,
            video ? 16 : 0,
            video ? 235 : 255};
}

unsigned char rounded(std::int64_t value, const colour_matrix& matrix) {
    const std::int64_t whole = (value + (std::int64_t{1} << 31)) >> 32;
    const std::int64_t shifted = whole + matrix.least;
    return static_cast<unsigned char>(
        std::min(std::max(shifted, std::int64_t{matrix.least}), std::int64_t{matrix.most}));
}

// HSV and Lab have no published formula: each plane is filled with the letter of what it would hold.
void fill_with_letters(const view planes[3], IVE_CSC_MODE_E mode) {
    const bool hsv = mode == IVE_CSC_MODE_PIC_BT601_YUV2HSV || mode == IVE_CSC_MODE_PIC_BT709_YUV2HSV;
    const char* letters = hsv ? "HSV" : "Lab";
    for (int plane = 0; plane < 3; ++plane) {
        for (int y = 0; y < planes[plane].height; ++y)
            std::memset(planes[plane].row(y), letters[plane], static_cast<std::size_t>(planes[plane].width));
    }
}

// One row of pixels; planes are blue, green, red.
void convert_row(const unsigned char* luma, const unsigned char* chroma, int width, const colour_matrix& matrix,
                 unsigned char* blue, unsigned char* green, unsigned char* red) {
    for (int x = 0; x < width; ++x) {
        const std::int64_t y = matrix.luma * (luma[x] - matrix.black);
        const int v = chroma[x & ~1] - 128;
        const int u = chroma[x | 1] - 128;
        blue[x] = rounded(y + matrix.blue_u * u, matrix);
        green[x] = rounded(y + matrix.green_u * u + matrix.green_v * v, matrix);
        red[x] = rounded(y + matrix.red_v * v, matrix);
    }
}

job_end run_csc(const record& job, memory_map& memory) {
    const view luma = plane_of(memory, job.images[0], 0);
    const view chroma = plane_of(memory, job.images[0], 1);
    const view planes[3] = {plane_of(memory, job.images[1], 0), plane_of(memory, job.images[1], 1),
                            plane_of(memory, job.images[1], 2)};
    if (!luma.data || !chroma.data || !planes[0].data || !planes[1].data || !planes[2].data)
        return job_end::memory_gone;
    const IVE_CSC_MODE_E mode = job.csc.enMode;
    if (mode > IVE_CSC_MODE_PIC_BT709_YUV2RGB) {
        fill_with_letters(planes, mode);
        return job_end::done;
    }
    const colour_matrix matrix = matrix_of(mode);
    for (int y = 0; y < luma.height; ++y) {
        convert_row(luma.row(y), chroma.row(y / 2), luma.width, matrix, planes[0].row(y), planes[1].row(y),
                    planes[2].row(y));
    }
    return job_end::done;
}

// --- labelling --------------------------------------------------------------------------------------------------

class labeller {
public:
    explicit labeller(const view& img)
        : m_img(img), m_group(static_cast<std::size_t>(img.width) * static_cast<std::size_t>(img.height), -1) {
        for (int y = 0; y < img.height; ++y) {
            for (int x = 0; x < img.width; ++x) {
                if (img.row(y)[x] != 0 && group(x, y) < 0) grow(x, y);
            }
        }
    }

    const std::vector<IVE_REGION_S>& regions() const { return m_regions; }

    // Replaces every pixel by label[its group].
    void write(const std::vector<unsigned char>& label) const {
        for (int y = 0; y < m_img.height; ++y) {
            for (int x = 0; x < m_img.width; ++x) {
                const int g = group(x, y);
                m_img.row(y)[x] = g < 0 ? static_cast<unsigned char>(0) : label[static_cast<std::size_t>(g)];
            }
        }
    }

private:
    int& group(int x, int y) {
        return m_group[static_cast<std::size_t>(y) * static_cast<std::size_t>(m_img.width) +
                       static_cast<std::size_t>(x)];
    }
    int group(int x, int y) const { return const_cast<labeller*>(this)->group(x, y); }

    void grow(int x, int y) {
        const int number = static_cast<int>(m_regions.size());
        IVE_REGION_S region = {0, 0xFFFF, 0, 0xFFFF, 0};
        m_open.assign(1, {x, y});
        group(x, y) = number;
        while (!m_open.empty()) {
            const auto [px, py] = m_open.back();
            m_open.pop_back();
            take(region, px, py);
            for (int dy = -1; dy <= 1; ++dy) {
                for (int dx = -1; dx <= 1; ++dx) open(px + dx, py + dy, number);
            }
        }
        m_regions.push_back(region);
    }

    void open(int x, int y, int number) {
        if (x < 0 || y < 0 || x >= m_img.width || y >= m_img.height) return;
        if (m_img.row(y)[x] == 0 || group(x, y) >= 0) return;
        group(x, y) = number;
        m_open.push_back({x, y});
    }

    static void take(IVE_REGION_S& region, int x, int y) {
        const HI_U16 column = static_cast<HI_U16>(x);
        const HI_U16 row = static_cast<HI_U16>(y);
        ++region.u32Area;
        region.u16Left = std::min(region.u16Left, column);
        region.u16Right = std::max(region.u16Right, column);
        region.u16Top = std::min(region.u16Top, row);
        region.u16Bottom = std::max(region.u16Bottom, row);
    }

    view m_img;
    std::vector<int> m_group;
    std::vector<IVE_REGION_S> m_regions;
    std::vector<std::pair<int, int>> m_open;
};

std::vector<std::size_t> above(const std::vector<IVE_REGION_S>& regions, HI_U32 area) {
    std::vector<std::size_t> which;
    for (std::size_t i = 0; i < regions.size(); ++i) {
        if (regions[i].u32Area > area) which.push_back(i);
    }
    return which;
}

// Slots that hold nothing valid look as if they did, but for their area.
IVE_REGION_S dropped_region(HI_U32 area) {
    return {area, 7, 3, 9, 1};
}

// Valid regions are spread over all slots, the last one always taken.
std::size_t slot_of(std::size_t index, std::size_t count) {
    return (index + 1) * IVE_MAX_REGION_NUM / count - 1;
}

job_end run_ccl(const record& job, memory_map& memory, HI_S8 status) {
    const view img = plane_of(memory, job.images[0]);
    unsigned char* result = memory.engine_at(job.memory.u32PhyAddr, sizeof(IVE_CCBLOB_S));
    if (!img.data || !result) return job_end::memory_gone;

    const labeller labels(img);
    HI_U32 threshold = job.ccl.u16InitAreaThr;
    std::vector<std::size_t> valid = above(labels.regions(), threshold);
    while (valid.size() > IVE_MAX_REGION_NUM) {
        threshold += job.ccl.u16Step;
        valid = above(labels.regions(), threshold);
    }

    IVE_CCBLOB_S blob = {};
    blob.u16CurAreaThr = static_cast<HI_U16>(threshold);
    blob.s8LabelStatus = status;
    blob.u8RegionNum = static_cast<HI_U8>(valid.size());
    std::fill(std::begin(blob.astRegion), std::end(blob.astRegion), dropped_region(threshold));
    std::vector<unsigned char> label(labels.regions().size(), 0);
    for (std::size_t i = 0; i < valid.size(); ++i) {
        const std::size_t slot = slot_of(i, valid.size());
        blob.astRegion[slot] = labels.regions()[valid[i]];
        label[valid[i]] = static_cast<unsigned char>(slot + 1);
    }
    labels.write(label);
    std::memcpy(result, &blob, sizeof blob);
    return job_end::done;
}

}  // namespace

job_end run(const record& job, memory_map& memory, HI_S8 label_status) {
    switch (job.function) {
        case call::sub:
            return run_sub(job, memory);
        case call::dma:
            return run_dma(job, memory);
        case call::dilate:
            return run_dilate(job, memory);
        case call::thresh:
            return run_thresh(job, memory);
        case call::csc:
            return run_csc(job, memory);
        default:
            return run_ccl(job, memory, label_status);
    }
}

}  // namespace standin
