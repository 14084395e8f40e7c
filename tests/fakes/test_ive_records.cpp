// Each operation's records, field by field, and its result, pixel by pixel.
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>

#include "tests/fakes/ive_operations.h"
#include "tests/fakes/twin_engine.h"
#include "tests/support/capture.h"
#include "tests/support/log_text.h"

namespace {

using fakes::workbench;
using standin::call;
using standin::record;

class ive_records : public fakes::chip_test {
protected:
    workbench bench;

    record submitted(call function) const { return standin::records(function).at(0); }
};

void expect_plane(const IVE_IMAGE_S& image, const fd_yuv_frame& frame, int plane) {
    EXPECT_EQ(image.u32PhyAddr[plane], frame.phys_addr[plane]) << "plane " << plane;
    EXPECT_EQ(image.pu8VirAddr[plane], frame.virt_addr[plane]) << "plane " << plane;
    EXPECT_EQ(image.u16Stride[plane], frame.stride[plane]) << "plane " << plane;
}

void expect_no_plane(const IVE_IMAGE_S& image, int plane) {
    EXPECT_EQ(image.u32PhyAddr[plane], 0u) << "plane " << plane;
    EXPECT_EQ(image.pu8VirAddr[plane], nullptr) << "plane " << plane;
    EXPECT_EQ(image.u16Stride[plane], 0) << "plane " << plane;
}

void expect_image(const IVE_IMAGE_S& image, const fd_yuv_frame& frame, int type, int planes) {
    EXPECT_EQ(image.enType, type);
    EXPECT_EQ(image.u16Width, frame.width);
    EXPECT_EQ(image.u16Height, frame.height);
    EXPECT_EQ(image.u16Reserved, 0);
    for (int plane = 0; plane < 3; ++plane) {
        if (plane < planes) {
            expect_plane(image, frame, plane);
        } else {
            expect_no_plane(image, plane);
        }
    }
}

void expect_grey(const IVE_IMAGE_S& image, const fd_yuv_frame& frame) {
    expect_image(image, frame, 0, 1);
}

void expect_data(const IVE_DATA_S& data, const fd_yuv_frame& frame) {
    EXPECT_EQ(data.u32PhyAddr, frame.phys_addr[0]);
    EXPECT_EQ(data.pu8VirAddr, frame.virt_addr[0]);
    EXPECT_EQ(data.u16Stride, frame.stride[0]);
    EXPECT_EQ(data.u16Width, frame.width);
    EXPECT_EQ(data.u16Height, frame.height);
    EXPECT_EQ(data.u16Reserved, 0);
}

// Stale planes of a grey image's record, which the engine must not be given.
void add_stale_planes(fd_yuv_frame& frame) {
    for (int plane = 1; plane < 3; ++plane) {
        frame.phys_addr[plane] = 0x1230;
        frame.virt_addr[plane] = frame.virt_addr[0];
        frame.stride[plane] = 4711;
    }
}

std::vector<unsigned char> copy_of(fakes::chip_picture& picture) {
    return picture.bytes();
}

ref::plane plane_in(std::vector<unsigned char>& bytes, fakes::chip_picture& like, int plane = 0) {
    ref::plane view = like.plane(plane);
    view.data = bytes.data() + (view.data - like.bytes().data());
    return view;
}

TEST_F(ive_records, sub) {
    add_stale_planes(bench.first_frame);
    std::vector<unsigned char> wanted = copy_of(bench.result);
    twin::sub(bench.first.plane(), bench.second.plane(), plane_in(wanted, bench.result));
    EXPECT_EQ(bench.ive.do_sub(&bench.first_frame, &bench.second_frame, &bench.result_frame, true), 0);
    const record job = submitted(call::sub);
    expect_grey(job.images[0], bench.first_frame);
    expect_grey(job.images[1], bench.second_frame);
    expect_grey(job.images[2], bench.result_frame);
    EXPECT_EQ(job.sub.enMode, 0);
    EXPECT_EQ(bench.result.bytes(), wanted);
}

TEST_F(ive_records, sub_in_place) {
    std::vector<unsigned char> wanted = copy_of(bench.second);
    twin::sub(bench.first.plane(), bench.second.plane(), plane_in(wanted, bench.second));
    EXPECT_EQ(bench.ive.do_sub(&bench.first_frame, &bench.second_frame, &bench.second_frame, true), 0);
    EXPECT_EQ(bench.second.bytes(), wanted);
}

TEST_F(ive_records, dma) {
    std::vector<unsigned char> wanted = copy_of(bench.result);
    ref::copy_rows(bench.second.plane(), plane_in(wanted, bench.result));
    EXPECT_EQ(bench.ive.do_dma(&bench.second_frame, &bench.result_frame, true), 0);
    const record job = submitted(call::dma);
    expect_data(job.data[0], bench.second_frame);
    expect_data(job.data[1], bench.result_frame);
    EXPECT_EQ(job.dma.enMode, 0);
    EXPECT_EQ(job.dma.u64Val, 0u);
    EXPECT_EQ(job.dma.u8HorSegSize, 0);
    EXPECT_EQ(job.dma.u8ElemSize, 0);
    EXPECT_EQ(job.dma.u8VerSegRows, 0);
    EXPECT_EQ(bench.result.bytes(), wanted) << "row padding stays";
}

TEST_F(ive_records, dilate) {
    std::vector<unsigned char> wanted = copy_of(bench.result);
    twin::dilate(bench.first.plane(), plane_in(wanted, bench.result));
    EXPECT_EQ(bench.ive.do_dilate(&bench.first_frame, &bench.result_frame, true), 0);
    const record job = submitted(call::dilate);
    expect_grey(job.images[0], bench.first_frame);
    expect_grey(job.images[1], bench.result_frame);
    const HI_U8 mask[25] = {0, 0,   0,   0,   0,  //
                            0, 255, 255, 255, 0,  //
                            0, 255, 255, 255, 0,  //
                            0, 255, 255, 255, 0,  //
                            0, 0,   0,   0,   0};
    EXPECT_TRUE(std::equal(std::begin(mask), std::end(mask), std::begin(job.dilate.au8Mask)));
    EXPECT_EQ(bench.result.bytes(), wanted);
    EXPECT_EQ(standin::undefined_results(), 0);
}

TEST_F(ive_records, thres_hands_over_the_low_8_bits_of_the_threshold) {
    std::vector<unsigned char> wanted = copy_of(bench.result);
    twin::threshold(bench.second.plane(), plane_in(wanted, bench.result), 0x17);
    EXPECT_EQ(bench.ive.do_thres(&bench.second_frame, &bench.result_frame, 0x1217, true), 0);
    const record job = submitted(call::thresh);
    expect_grey(job.images[0], bench.second_frame);
    expect_grey(job.images[1], bench.result_frame);
    EXPECT_EQ(job.thresh.enMode, 0);
    EXPECT_EQ(job.thresh.u8LowThr, 0x17);
    EXPECT_EQ(job.thresh.u8HighThr, 0);
    EXPECT_EQ(job.thresh.u8MinVal, 0);
    EXPECT_EQ(job.thresh.u8MidVal, 0);
    EXPECT_EQ(job.thresh.u8MaxVal, 255);
    EXPECT_EQ(bench.result.bytes(), wanted);
}

TEST_F(ive_records, color_trans_to_rgb) {
    bench.nv21_frame.phys_addr[2] = 0x40;  // a host's stale third plane
    std::vector<unsigned char> wanted = copy_of(bench.planes);
    twin::convert_image(bench.nv21.yuv(), {plane_in(wanted, bench.planes), plane_in(wanted, bench.planes, 1).data,
                                           plane_in(wanted, bench.planes, 2).data});
    EXPECT_EQ(bench.ive.do_color_trans(&bench.nv21_frame, &bench.planes_frame, orva_fd::color_trans_rgb, true), 0);
    const record job = submitted(call::csc);
    expect_image(job.images[0], bench.nv21_frame, 2, 2);
    expect_image(job.images[1], bench.planes_frame, 11, 3);
    EXPECT_EQ(job.csc.enMode, 3);
    EXPECT_EQ(bench.planes.bytes(), wanted);
}

struct colour_row : support::named_row {
    int target;
    int mode;
};
class colour_target : public ive_records, public testing::WithParamInterface<colour_row> {};

TEST_P(colour_target, selects_the_mode) {
    const auto target = static_cast<orva_fd::ive_color_trans>(GetParam().target);
    EXPECT_EQ(bench.ive.do_color_trans(&bench.nv21_frame, &bench.planes_frame, target, true), 0);
    EXPECT_EQ(submitted(call::csc).csc.enMode, GetParam().mode);
}
INSTANTIATE_TEST_SUITE_P(ive, colour_target,
                         testing::Values(colour_row{{"lab is mode 7"}, 0, 7}, colour_row{{"rgb is mode 3"}, 1, 3},
                                         colour_row{{"hsv is mode 5"}, 2, 5},
                                         colour_row{{"an unknown target leaves mode 0"}, 3, 0},
                                         colour_row{{"a negative target leaves mode 0"}, -1, 0}),
                         support::row_name());

TEST_F(ive_records, colours_without_a_software_path_fail_when_an_image_does_not_qualify) {
    for (const orva_fd::ive_color_trans target : {orva_fd::color_trans_lab, orva_fd::color_trans_hsv}) {
        bench.nv21_frame.stride[0] = 104;
        const std::vector<unsigned char> before = bench.planes.bytes();
        const support::outcome got = support::outcome_of(
            [&] { return bench.ive.do_color_trans(&bench.nv21_frame, &bench.planes_frame, target, true); });
        EXPECT_EQ(got.status, 5);
        EXPECT_EQ(got.text, support::entered("hisi_ive_func", "do_color_trans", 414));
        EXPECT_EQ(bench.planes.bytes(), before);
    }
}

// Only plane 0 is asked: a chroma plane that the engine cannot take is refused by the chip.
TEST_F(ive_records, an_unaligned_chroma_plane_is_not_noticed_and_refused) {
    bench.nv21_frame.phys_addr[1] += 8;
    const support::outcome got = support::outcome_of([&] {
        return bench.ive.do_color_trans(&bench.nv21_frame, &bench.planes_frame, orva_fd::color_trans_rgb, true);
    });
    EXPECT_EQ(got.status, 4);
    EXPECT_EQ(got.text, fakes::refused_text(fakes::all_operations()[4], 0xA01D8003u));
}

// Address 0 counts as aligned: a host without physical addresses gets 4.
TEST_F(ive_records, a_frame_without_physical_addresses_qualifies_and_is_refused) {
    bench.first_frame.phys_addr[0] = 0;
    const support::outcome got = support::outcome_of(
        [&] { return bench.ive.do_sub(&bench.first_frame, &bench.second_frame, &bench.result_frame, true); });
    EXPECT_EQ(got.status, 4);
    EXPECT_EQ(got.text, fakes::refused_text(fakes::all_operations()[0], 0xA01D8003u));
}

// A stride of 65,536 and more passes the rule and arrives without its upper half, as the records have no room for it.
TEST_F(ive_records, a_stride_of_65632_arrives_as_96) {
    std::vector<unsigned char> wanted = copy_of(bench.result);
    twin::sub(bench.first.plane(), bench.second.plane(), plane_in(wanted, bench.result));
    bench.first_frame.stride[0] += 65536;
    EXPECT_EQ(bench.ive.do_sub(&bench.first_frame, &bench.second_frame, &bench.result_frame, true), 0);
    EXPECT_EQ(submitted(call::sub).images[0].u16Stride[0], 96);
    EXPECT_EQ(bench.result.bytes(), wanted);
    EXPECT_EQ(bench.ive.do_dma(&bench.first_frame, &bench.result_frame, true), 0);
    EXPECT_EQ(submitted(call::dma).data[0].u16Stride, 96);
    EXPECT_EQ(bench.result.pixels(), bench.first.pixels());
}

// --- labelling --------------------------------------------------------------------------------------------------

TEST_F(ive_records, ccl) {
    std::vector<unsigned char> wanted = copy_of(bench.first);
    std::vector<ref::component> components;
    twin::label(plane_in(wanted, bench.first), 10, 2, components);
    EXPECT_EQ(bench.ive.do_ccl(&bench.first_frame, &bench.blob, bench.components, true), 0);
    const record job = submitted(call::ccl);
    expect_grey(job.images[0], bench.first_frame);
    EXPECT_EQ(job.memory.u32PhyAddr, bench.blob.phys_addr());
    EXPECT_EQ(job.memory.pu8VirAddr, bench.blob.virt_addr());
    EXPECT_EQ(job.memory.u32Size, 3052u);
    EXPECT_EQ(job.ccl.enMode, 1);
    EXPECT_EQ(job.ccl.u16InitAreaThr, 10);
    EXPECT_EQ(job.ccl.u16Step, 2);
    EXPECT_EQ(bench.first.bytes(), wanted) << "labels in place";

    ASSERT_GT(components.size(), 0u);
    ASSERT_EQ(bench.components.size(), components.size());
    for (std::size_t i = 0; i < components.size(); ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(bench.components[i].area, components[i].area);
        EXPECT_EQ(bench.components[i].left, components[i].left);
        EXPECT_EQ(bench.components[i].right, components[i].right);
        EXPECT_EQ(bench.components[i].top, components[i].top);
        EXPECT_EQ(bench.components[i].bottom, components[i].bottom);
    }

    const std::vector<record> flushes = standin::records(call::flush);
    ASSERT_EQ(flushes.size(), 1u) << "the result is read after one flush of the whole buffer";
    EXPECT_EQ(flushes[0].phys_addr, bench.blob.phys_addr());
    EXPECT_EQ(flushes[0].virt_addr, bench.blob.virt_addr());
    EXPECT_EQ(flushes[0].length, 3052u);
}

class ccl_result : public ive_records {
protected:
    // Writes the engine's result so that the library's flush finds it. With a chained job nothing overwrites it.
    std::vector<orva_fd::con_info> read(const IVE_CCBLOB_S& blob) {
        const auto* bytes = reinterpret_cast<const unsigned char*>(&blob);
        EXPECT_TRUE(standin::write_engine_bytes(bench.blob.phys_addr(), {bytes, bytes + sizeof blob}));
        EXPECT_EQ(bench.ive.do_ccl(&bench.first_frame, &bench.blob, bench.components, false), 0);
        return bench.components;
    }
    static IVE_CCBLOB_S blob_with(int threshold, int regions) {
        IVE_CCBLOB_S blob = IVE_CCBLOB_S();
        blob.u16CurAreaThr = static_cast<HI_U16>(threshold);
        blob.u8RegionNum = static_cast<HI_U8>(regions);
        return blob;
    }
};

TEST_F(ccl_result, a_region_of_the_threshold_is_skipped_and_one_above_it_taken) {
    IVE_CCBLOB_S blob = blob_with(12, 2);
    blob.astRegion[0] = {12, 1, 2, 3, 4};
    blob.astRegion[1] = {13, 5, 6, 7, 8};
    blob.astRegion[253] = {0xFFFFFFFFu, 65535, 32768, 32767, 0};
    const auto out = read(blob);
    ASSERT_EQ(out.size(), 2u);
    EXPECT_EQ(out[0].area, 13);
    EXPECT_EQ(out[0].left, 5);
    EXPECT_EQ(out[0].right, 6);
    EXPECT_EQ(out[0].top, 7);
    EXPECT_EQ(out[0].bottom, 8);
    EXPECT_EQ(out[1].area, -1) << "areas compare unsigned, records hold the bits";
    EXPECT_EQ(out[1].left, -1);
    EXPECT_EQ(out[1].right, -32768);
}

TEST_F(ccl_result, the_walk_stops_after_the_number_of_regions) {
    IVE_CCBLOB_S blob = blob_with(10, 2);
    for (HI_U16 slot : {HI_U16{3}, HI_U16{100}, HI_U16{200}})
        blob.astRegion[slot] = {20u + slot, slot, slot, slot, slot};
    const auto out = read(blob);
    ASSERT_EQ(out.size(), 2u);
    EXPECT_EQ(out[0].left, 3);
    EXPECT_EQ(out[1].left, 100);
}

TEST_F(ccl_result, no_regions_give_no_records_even_with_areas_above_the_threshold) {
    IVE_CCBLOB_S blob = blob_with(10, 0);
    blob.astRegion[0] = {500, 1, 2, 3, 4};
    EXPECT_TRUE(read(blob).empty());
}

TEST_F(ccl_result, records_are_appended) {
    bench.components.push_back({7, 1, 1, 1, 1});
    IVE_CCBLOB_S blob = blob_with(10, 1);
    blob.astRegion[9] = {11, 2, 3, 4, 5};
    const auto out = read(blob);
    ASSERT_EQ(out.size(), 2u);
    EXPECT_EQ(out[0].area, 7);
    EXPECT_EQ(out[1].area, 11);
}

TEST_F(ccl_result, labels_that_are_not_unique_still_give_their_boxes) {
    IVE_CCBLOB_S blob = blob_with(10, 1);
    blob.s8LabelStatus = -1;
    blob.astRegion[0] = {11, 2, 3, 4, 5};
    EXPECT_EQ(read(blob).size(), 1u);
}

TEST_F(ccl_result, a_failing_flush_is_reported_and_the_old_result_read) {
    EXPECT_EQ(bench.ive.do_ccl(&bench.first_frame, &bench.blob, bench.components, true), 0);
    const std::vector<orva_fd::con_info> old = bench.components;
    ASSERT_FALSE(old.empty());
    bench.components.clear();
    bench.first.fill_binary_noise(99, 0);  // one large component
    standin::answer(call::flush, 1, HI_FAILURE);
    const support::outcome got =
        support::outcome_of([&] { return bench.ive.do_ccl(&bench.first_frame, &bench.blob, bench.components, true); });
    EXPECT_EQ(got.status, 0);
    EXPECT_EQ(got.text, support::error_line("hisi_mmz_mem", "flush_mmz", 66) +
                            "HI_MPI_SYS_MmzFlushCache failed, ret = ffffffff\n");
    ASSERT_EQ(bench.components.size(), old.size());
    EXPECT_EQ(bench.components[0].area, old[0].area);
}

TEST_F(ccl_result, the_blob_is_not_checked_and_one_that_is_too_small_is_refused) {
    orva_fd::hisi_mmz_mem small;
    ASSERT_EQ(small.alloc_mmz(3051, true), 0);
    const support::outcome got =
        support::outcome_of([&] { return bench.ive.do_ccl(&bench.first_frame, &small, bench.components, true); });
    EXPECT_EQ(got.status, 4);
    EXPECT_EQ(got.text, fakes::refused_text(fakes::all_operations()[5], 0xA01D8003u));
}

}  // namespace
