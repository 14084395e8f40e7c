// One frame in the words of its trace: which buffer each job reads and writes, which one each flush names and how much
// of it, in which order. Written down from the order of the stages, for comparing with a chip.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "tests/fakes/channel_pair.h"
#include "tests/fakes/chip_test.h"
#include "tests/support/capture.h"

namespace {

using fakes::chip_picture;

// What a run writes to its trace, line by line.
template <typename Run>
std::vector<std::string> trace_of(Run run) {
    const std::filesystem::path path =
        std::filesystem::temp_directory_path() / ("frame_trace_" + std::to_string(getpid()));
    standin::trace_to(path.string());
    support::output_of(run);
    standin::trace_to("");
    std::vector<std::string> lines;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) lines.push_back(line);
    std::filesystem::remove(path);
    return lines;
}

// Half of the first picture is 25 and half 200, and so is its difference to nothing: the first threshold that parts
// the two is 25.
void fill_in_halves(chip_picture& picture) {
    std::vector<unsigned char>& bytes = picture.bytes();
    std::fill(bytes.begin(), bytes.end(), static_cast<unsigned char>(128));
    std::fill_n(bytes.begin(), 96 * 40, static_cast<unsigned char>(25));
    std::fill_n(bytes.begin() + 96 * 40, 96 * 40, static_cast<unsigned char>(200));
}

class frame_trace : public fakes::chip_test {};

// Buffers by their order at Start: 1 the mask, 2 the difference, 3 the colours, 4 the labelling result. The working
// pictures keep rows of 352 bytes whatever the frame's; planes of colours follow each other 80 rows apart.
TEST_F(frame_trace, names_every_buffer_of_a_first_frame) {
    chip_picture picture(96, 80, 2);
    fill_in_halves(picture);
    const std::vector<std::string> seen = trace_of([&] {
        int handle = -1;
        fd_result result = fd_result();
        ORVA_FireDetection_Init();
        ORVA_FireDetection_Start(&handle, fakes::whole_picture());
        ORVA_FireDetection_SetFrame(handle, picture.frame(), &result);
        ORVA_FireDetection_UnInit();
    });
    const std::vector<std::string> wanted = {
        // Start.
        "HI_MPI_SYS_MmzAlloc_Cached block User zone default length 101376 = 0 m1+0",
        "HI_MPI_SYS_MmzFlushCache m1+0 length 101376 = 0",
        "HI_MPI_SYS_MmzAlloc_Cached block User zone default length 101376 = 0 m2+0",
        "HI_MPI_SYS_MmzFlushCache m2+0 length 101376 = 0",
        "HI_MPI_SYS_MmzAlloc_Cached block User zone default length 304128 = 0 m3+0",
        "HI_MPI_SYS_MmzFlushCache m3+0 length 304128 = 0",
        "HI_MPI_SYS_MmzAlloc_Cached block User zone default length 3052 = 0 m4+0",
        // Another size than the last.
        "HI_MPI_IVE_DMA [96x80 host%16=0/96] [96x80 m3+0/352] mode 0 instant 1 = 0 job 1",
        "HI_MPI_IVE_Query job 1 block 1 = 0 finished 1",
        // Motion.
        "HI_MPI_IVE_Sub [type 0 96x80 host%16=0/96] [type 0 96x80 m2+0/352] [type 0 96x80 m2+0/352] mode 0 instant 1"
        " = 0 job 2",
        "HI_MPI_IVE_Query job 2 block 1 = 0 finished 1",
        "HI_MPI_SYS_MmzFlushCache m2+0 length 101376 = 0",
        "HI_MPI_IVE_Thresh [type 0 96x80 m2+0/352] [type 0 96x80 m2+0/352] mode 0 low 25 values 0,255 instant 0"
        " = 0 job 3",
        "HI_MPI_IVE_Dilate [type 0 96x80 m2+0/352] [type 0 96x80 m1+0/352] mask ...../.###./.###./.###./....."
        " instant 1 = 0 job 4",
        "HI_MPI_IVE_Query job 4 block 1 = 0 finished 1",
        "HI_MPI_SYS_MmzFlushCache m1+0 length 101376 = 0",
        // Colour.
        "HI_MPI_IVE_CSC [type 2 96x80 host%16=0/96 host%16=0/96]"
        " [type 11 96x80 m3+0/352 m3+28160/352 m3+56320/352] mode 3 instant 1 = 0 job 5",
        "HI_MPI_IVE_Query job 5 block 1 = 0 finished 1",
        "HI_MPI_SYS_MmzFlushCache m3+0 length 304128 = 0",
        "HI_MPI_SYS_MmzFlushCache m1+0 length 101376 = 0",
        "HI_MPI_IVE_Dilate [type 0 96x80 m1+0/352] [type 0 96x80 m2+0/352] mask ...../.###./.###./.###./....."
        " instant 0 = 0 job 6",
        "HI_MPI_IVE_DMA [96x80 m2+0/352] [96x80 m1+0/352] mode 0 instant 1 = 0 job 7",
        "HI_MPI_IVE_Query job 7 block 1 = 0 finished 1",
        "HI_MPI_SYS_MmzFlushCache m1+0 length 101376 = 0",
        // Components, and the luma for the next frame.
        "HI_MPI_IVE_CCL [type 0 96x80 m2+0/352] blob m4+0/3052 mode 1 area 10 step 2 instant 1 = 0 job 8",
        "HI_MPI_IVE_Query job 8 block 1 = 0 finished 1",
        "HI_MPI_SYS_MmzFlushCache m4+0 length 3052 = 0",
        "HI_MPI_IVE_DMA [96x80 host%16=0/96] [96x80 m2+0/352] mode 0 instant 1 = 0 job 9",
        "HI_MPI_IVE_Query job 9 block 1 = 0 finished 1",
        // Stop.
        "HI_MPI_SYS_MmzFree m1+0 = 0",
        "HI_MPI_SYS_MmzFree m2+0 = 0",
        "HI_MPI_SYS_MmzFree m3+0 = 0",
        "HI_MPI_SYS_MmzFree m4+0 = 0",
    };
    ASSERT_EQ(seen.size(), wanted.size());
    for (std::size_t i = 0; i < seen.size(); ++i) EXPECT_EQ(seen[i], wanted[i]) << "line " << i + 1;
}

}  // namespace
