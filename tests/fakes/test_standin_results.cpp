// The stand-in's results against the plain twin's, operation by operation, and its trace.
#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "backend/hisi_ive_func.h"
#include "tests/fakes/camera.h"
#include "tests/fakes/chip_test.h"
#include "tests/fakes/twin_engine.h"

namespace {

using fakes::chip_picture;

class standin_results : public fakes::chip_test {
protected:
    // Runs through the library's own submissions, so that the records are those that matter.
    orva_fd::hisi_ive_func ive;

    // Converts 256 x 256 pixels: one luma value, all pairs of chroma.
    static long wrong_pixels(orva_fd::hisi_ive_func& ive, chip_picture& nv21, chip_picture& rgb, int luma) {
        for (int y = 0; y < 512; ++y) {
            for (int x = 0; x < 512; ++x) {
                nv21.plane(0).at(x, y) = static_cast<unsigned char>(luma);
                nv21.plane(1).at(x, y / 2) = static_cast<unsigned char>(x % 2 == 0 ? y / 2 : x / 2);
            }
        }
        fd_yuv_frame from = nv21.frame(), to = rgb.frame();
        EXPECT_EQ(ive.do_color_trans(&from, &to, orva_fd::color_trans_rgb, true), 0);
        long wrong = 0;
        for (int v = 0; v < 256; ++v) {
            for (int u = 0; u < 256; ++u) {
                const ref::bgr wanted = twin::convert_pixel(luma, u, v);
                wrong += rgb.plane(0).at(2 * u, 2 * v) != wanted.blue;
                wrong += rgb.plane(1).at(2 * u + 1, 2 * v) != wanted.green;
                wrong += rgb.plane(2).at(2 * u, 2 * v + 1) != wanted.red;
            }
        }
        return wrong;
    }
};

TEST_F(standin_results, colours_agree_for_some_luma_values) {
    chip_picture nv21(512, 512, 2), rgb(512, 512, 3);
    for (const int luma : {0, 15, 16, 17, 128, 200, 235, 255}) EXPECT_EQ(wrong_pixels(ive, nv21, rgb, luma), 0) << luma;
}

class standin_results_full : public standin_results {};

TEST_F(standin_results_full, colours_agree_for_all_triples) {
    chip_picture nv21(512, 512, 2), rgb(512, 512, 3);
    for (int luma = 0; luma < 256; ++luma) EXPECT_EQ(wrong_pixels(ive, nv21, rgb, luma), 0) << luma;
}

TEST_F(standin_results, labels_agree_on_noise_of_every_density) {
    for (int density = 0; density < 256; density += 5) {
        SCOPED_TRACE(density);
        chip_picture mask(128, 96), copy(128, 96);
        mask.fill_binary_noise(static_cast<std::uint32_t>(density) + 77u, density);
        copy.bytes() = mask.bytes();
        std::vector<ref::component> wanted;
        twin::label(copy.plane(), 10, 2, wanted);
        orva_fd::hisi_mmz_mem blob;
        ASSERT_EQ(blob.alloc_mmz(3052, true), 0);
        fd_yuv_frame frame = mask.frame();
        std::vector<orva_fd::con_info> got;
        ASSERT_EQ(ive.do_ccl(&frame, &blob, got, true), 0);
        ASSERT_EQ(got.size(), wanted.size());
        for (std::size_t i = 0; i < got.size(); ++i) {
            EXPECT_EQ(got[i].area, wanted[i].area);
            EXPECT_EQ(got[i].left, wanted[i].left);
            EXPECT_EQ(got[i].right, wanted[i].right);
            EXPECT_EQ(got[i].top, wanted[i].top);
            EXPECT_EQ(got[i].bottom, wanted[i].bottom);
        }
        EXPECT_EQ(mask.bytes(), copy.bytes()) << "labels";
    }
}

// A grid of small regions: more than 254, so that the bound must grow, by steps of 2, until few enough are left.
TEST_F(standin_results, labels_agree_when_the_bound_grows) {
    fakes::dice chance(5);
    for (int round = 0; round < 20; ++round) {
        SCOPED_TRACE(round);
        chip_picture mask(352, 288), copy(352, 288);
        for (int cell = 0; cell < 29 * 24; ++cell) {
            const int width = chance.between(1, 10);
            const int height = chance.between(1, 6);
            for (int at = 0; at < width * height; ++at)
                mask.plane().at(cell % 29 * 12 + at % width, cell / 29 * 12 + at / width) = 255;
        }
        copy.bytes() = mask.bytes();
        std::vector<ref::component> wanted;
        twin::label(copy.plane(), 10, 2, wanted);
        EXPECT_LE(wanted.size(), 254u);
        EXPECT_GT(wanted.size(), 100u);
        orva_fd::hisi_mmz_mem blob;
        ASSERT_EQ(blob.alloc_mmz(3052, true), 0);
        fd_yuv_frame frame = mask.frame();
        std::vector<orva_fd::con_info> got;
        ASSERT_EQ(ive.do_ccl(&frame, &blob, got, true), 0);
        ASSERT_EQ(got.size(), wanted.size());
        EXPECT_EQ(mask.bytes(), copy.bytes());
    }
}

TEST_F(standin_results, colours_without_a_formula_are_filled_with_letters) {
    chip_picture nv21(96, 66, 2), planes(96, 66, 3);
    fd_yuv_frame from = nv21.frame(), to = planes.frame();
    EXPECT_EQ(ive.do_color_trans(&from, &to, orva_fd::color_trans_hsv, true), 0);
    EXPECT_EQ(planes.plane(0).at(5, 5), 'H');
    EXPECT_EQ(planes.plane(1).at(5, 5), 'S');
    EXPECT_EQ(planes.plane(2).at(5, 5), 'V');
    EXPECT_EQ(ive.do_color_trans(&from, &to, orva_fd::color_trans_lab, true), 0);
    EXPECT_EQ(planes.plane(0).at(95, 65), 'L');
    EXPECT_EQ(planes.plane(2).at(95, 65), 'b');
}

// --- trace ------------------------------------------------------------------------------------------------------

std::string text_of(const std::filesystem::path& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

TEST_F(standin_results, a_trace_has_one_line_for_each_call_without_addresses) {
    const std::filesystem::path path =
        std::filesystem::temp_directory_path() / ("standin_trace_" + std::to_string(getpid()));
    standin::trace_to(path.string());
    {
        chip_picture a(96, 66);
        orva_fd::hisi_mmz_mem first, blob;
        ASSERT_EQ(first.alloc_mmz(96 * 66, true), 0);
        ASSERT_EQ(blob.alloc_mmz(3052, false), 0);
        fd_yuv_frame host = a.frame();
        fd_yuv_frame own = host;
        own.phys_addr[0] = first.phys_addr() + 96;
        own.virt_addr[0] = static_cast<unsigned char*>(first.virt_addr()) + 96;
        own.height = host.height = 64;
        EXPECT_EQ(ive.do_sub(&host, &own, &own, true), 0);
        EXPECT_EQ(ive.do_thres(&own, &own, 25, false), 0);
        EXPECT_EQ(ive.do_dilate(&host, &own, false), 0);
        standin::answer(standin::call::query, 1, HI_ERR_IVE_QUERY_TIMEOUT);
        EXPECT_EQ(ive.do_dma(&own, &host, true), 0);
        std::vector<orva_fd::con_info> out;
        EXPECT_EQ(ive.do_ccl(&own, &blob, out, true), 0);
    }
    {
        chip_picture nv21(96, 66, 2), planes(96, 66, 3);
        fd_yuv_frame from = nv21.frame(), to = planes.frame();
        from.phys_addr[1] = 0;
        EXPECT_EQ(ive.do_color_trans(&from, &to, orva_fd::color_trans_rgb, true), 4);
    }
    standin::trace_to("");
    EXPECT_EQ(
        text_of(path),
        "HI_MPI_SYS_MmzAlloc_Cached block User zone default length 6336 = 0 m1+0\n"
        "HI_MPI_SYS_MmzAlloc block User zone default length 3052 = 0 m2+0\n"
        "HI_MPI_IVE_Sub [type 0 96x64 host%16=0/96] [type 0 96x64 m1+96/96] [type 0 96x64 m1+96/96] mode 0 instant 1"
        " = 0 job 1\n"
        "HI_MPI_IVE_Query job 1 block 1 = 0 finished 1\n"
        "HI_MPI_IVE_Thresh [type 0 96x64 m1+96/96] [type 0 96x64 m1+96/96] mode 0 low 25 values 0,255 instant 0"
        " = 0 job 2\n"
        "HI_MPI_IVE_Dilate [type 0 96x64 host%16=0/96] [type 0 96x64 m1+96/96] mask ...../.###./.###./.###./....."
        " instant 0 = 0 job 3\n"
        "HI_MPI_IVE_DMA [96x64 m1+96/96] [96x64 host%16=0/96] mode 0 instant 1 = 0 job 4\n"
        "HI_MPI_IVE_Query job 4 block 1 = a01d8041 finished 0\n"
        "HI_MPI_IVE_Query job 4 block 1 = 0 finished 1\n"
        "HI_MPI_IVE_CCL [type 0 96x64 m1+96/96] blob m2+0/3052 mode 1 area 10 step 2 instant 1 = 0 job 5\n"
        "HI_MPI_IVE_Query job 5 block 1 = 0 finished 1\n"
        "HI_MPI_SYS_MmzFlushCache m2+0 length 3052 = 0\n"
        "HI_MPI_SYS_MmzFree m2+0 = 0\n"
        "HI_MPI_SYS_MmzFree m1+0 = 0\n"
        "HI_MPI_IVE_CSC [type 2 96x66 host%16=0/96 none/96] [type 11 96x66 host%16=0/96 host%16=0/96 host%16=0/96]"
        " mode 3 instant 1 = a01d8003\n");
    std::filesystem::remove(path);
}

}  // namespace
