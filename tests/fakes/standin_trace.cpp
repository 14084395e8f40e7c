#include "tests/fakes/standin_trace.h"

#include <cstdio>
#include <iterator>

namespace standin {

namespace {

std::string number(long value) {
    return std::to_string(value);
}

std::string hex(HI_S32 code) {
    char text[16];
    std::snprintf(text, sizeof text, "%x", static_cast<unsigned int>(code));
    return text;
}

int planes_of(const IVE_IMAGE_S& image) {
    if (image.enType == IVE_IMAGE_TYPE_U8C3_PLANAR) return 3;
    return image.enType == IVE_IMAGE_TYPE_YUV420SP ? 2 : 1;
}

std::string mask_text(const IVE_DILATE_CTRL_S& control) {
    std::string text;
    for (int at = 0; at < 25; ++at) {
        if (at > 0 && at % 5 == 0) text += '/';
        text += control.au8Mask[at] == 255 ? '#' : control.au8Mask[at] == 0 ? '.' : '?';
    }
    return text;
}

}  // namespace

const char* name_of(call function) {
    static const char* const names[k_calls] = {
        "HI_MPI_IVE_Sub",           "HI_MPI_IVE_DMA",      "HI_MPI_IVE_Dilate",
        "HI_MPI_IVE_Thresh",        "HI_MPI_IVE_CSC",      "HI_MPI_IVE_CCL",
        "HI_MPI_IVE_Query",         "HI_MPI_SYS_MmzAlloc", "HI_MPI_SYS_MmzAlloc_Cached",
        "HI_MPI_SYS_MmzFlushCache", "HI_MPI_SYS_MmzFree"};
    return names[static_cast<int>(function)];
}

// "m2+352" is a byte of the second buffer; "host%16=0" is somewhere else, in a frame of the host's.
std::string trace_text::place(HI_U32 phys_addr) const {
    const auto after = m_buffers.upper_bound(phys_addr);
    if (after != m_buffers.begin()) {
        const auto it = std::prev(after);
        const HI_U32 offset = phys_addr - it->first;
        if (offset < it->second.bytes) return "m" + number(it->second.number) + "+" + number(offset);
    }
    return phys_addr == 0 ? "none" : "host%16=" + number(phys_addr % 16);
}

std::string trace_text::image(const IVE_IMAGE_S& img) const {
    std::string text = "[type " + number(img.enType) + " " + number(img.u16Width) + "x" + number(img.u16Height);
    for (int plane = 0; plane < planes_of(img); ++plane)
        text += " " + place(img.u32PhyAddr[plane]) + "/" + number(img.u16Stride[plane]);
    return text + "]";
}

std::string trace_text::data(const IVE_DATA_S& what) const {
    return "[" + number(what.u16Width) + "x" + number(what.u16Height) + " " + place(what.u32PhyAddr) + "/" +
           number(what.u16Stride) + "]";
}

std::string trace_text::job(IVE_HANDLE handle) const {
    const auto it = m_jobs.find(handle);
    return it == m_jobs.end() ? "unknown" : number(it->second);
}

std::string trace_text::submission(const record& what) const {
    std::string text;
    switch (what.function) {
        case call::sub:
            text = image(what.images[0]) + " " + image(what.images[1]) + " " + image(what.images[2]) + " mode " +
                   number(what.sub.enMode);
            break;
        case call::dma:
            text = data(what.data[0]) + " " + data(what.data[1]) + " mode " + number(what.dma.enMode);
            break;
        case call::dilate:
            text = image(what.images[0]) + " " + image(what.images[1]) + " mask " + mask_text(what.dilate);
            break;
        case call::thresh:
            text = image(what.images[0]) + " " + image(what.images[1]) + " mode " + number(what.thresh.enMode) +
                   " low " + number(what.thresh.u8LowThr) + " values " + number(what.thresh.u8MinVal) + "," +
                   number(what.thresh.u8MaxVal);
            break;
        case call::csc:
            text = image(what.images[0]) + " " + image(what.images[1]) + " mode " + number(what.csc.enMode);
            break;
        default:
            text = image(what.images[0]) + " blob " + place(what.memory.u32PhyAddr) + "/" +
                   number(what.memory.u32Size) + " mode " + number(what.ccl.enMode) + " area " +
                   number(what.ccl.u16InitAreaThr) + " step " + number(what.ccl.u16Step);
    }
    return text + " instant " + number(what.flag);
}

std::string trace_text::arguments(const record& what) const {
    switch (what.function) {
        case call::query:
            return "job " + job(what.handle) + " block " + number(what.flag);
        case call::alloc:
        case call::alloc_cached:
            return "block " + what.block_name + " zone " + (what.default_zone ? "default" : "named") + " length " +
                   number(what.length);
        case call::flush:
            return place(what.phys_addr) + " length " + number(what.length);
        case call::free:
            return place(what.phys_addr);
        default:
            return submission(what);
    }
}

void trace_text::learn(const record& what) {
    if (what.returned != HI_SUCCESS) return;
    if (what.function == call::alloc || what.function == call::alloc_cached) {
        m_buffers[what.phys_addr] = {what.length, ++m_buffers_seen};
    } else if (what.function == call::free) {
        m_buffers.erase(what.phys_addr);
    } else if (what.function < call::query) {
        m_jobs[what.handle] = ++m_jobs_seen;
    }
}

std::string trace_text::answer(const record& what) {
    std::string text = " = " + hex(what.returned);
    if (what.function == call::query) text += " finished " + number(what.finished);
    if (what.returned != HI_SUCCESS) return text;
    if (what.function < call::query) text += " job " + job(what.handle);
    if (what.function == call::alloc || what.function == call::alloc_cached) text += " " + place(what.phys_addr);
    return text;
}

std::string trace_text::line_of(const record& what) {
    const std::string before = std::string(name_of(what.function)) + " " + arguments(what);
    learn(what);
    return before + answer(what);
}

}  // namespace standin
