// SetFrame asks the heap for nothing, from a channel's first frame on, whatever the picture holds.
#include <gtest/gtest.h>

#include <cctype>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <new>
#include <string>
#include <vector>

#include "bench/memory.h"
#include "bench/painting.h"
#include "bench/scenes.h"

namespace {

const int k_frames = 60;  // fill the history and go on

std::int64_t requests_of_frames(const bench::scene& s) {
    int handle = -1;
    EXPECT_EQ(ORVA_FireDetection_Start(&handle, bench::whole_picture()), FD_OK);
    fd_result result;
    const std::int64_t before = bench::heap_now().requests;
    for (std::size_t i = 0; i < k_frames; ++i) ORVA_FireDetection_SetFrame(handle, s.frame(i), &result);
    const std::int64_t after = bench::heap_now().requests;
    ORVA_FireDetection_Stop(handle);
    return after - before;
}

class allocations : public testing::Test {
protected:
    void SetUp() override {
        // The stream's own buffer is there before anything is counted.
        std::printf("\n");
        ASSERT_EQ(ORVA_FireDetection_Init(), FD_OK);
    }
    void TearDown() override { ORVA_FireDetection_UnInit(); }
};

// Keeps the compiler from leaving out a request whose memory nobody uses.
void* used(void* block) {
    __asm__ volatile("" : "+r"(block) : : "memory");
    return block;
}

TEST(heap_counter, sees_every_way_to_ask) {
    const std::int64_t before = bench::heap_now().requests;
    ::operator delete(used(::operator new(1)));
    std::free(used(std::malloc(1)));
    std::free(used(std::calloc(1, 1)));
    std::free(used(std::realloc(nullptr, 1)));
    void* aligned = nullptr;
    ASSERT_EQ(posix_memalign(&aligned, 64, 64), 0);
    std::free(used(aligned));
    EXPECT_EQ(bench::heap_now().requests - before, 5);
}

TEST_F(allocations, a_quiet_scene_needs_none) {
    EXPECT_EQ(requests_of_frames(bench::quiet_scene(bench::k_full_width, bench::k_full_height)), 0);
}

TEST_F(allocations, a_busy_scene_needs_none) {
    EXPECT_EQ(requests_of_frames(bench::busy_scene(bench::k_full_width, bench::k_full_height, 60)), 0);
}

TEST_F(allocations, the_hardest_pictures_need_none) {
    for (const std::vector<bench::painting>& group : {bench::constructed_paintings(), bench::found_paintings()}) {
        for (const bench::painting& p : group) {
            EXPECT_EQ(requests_of_frames(bench::paint(p, bench::k_full_width, bench::k_full_height)), 0) << p.name;
        }
    }
}

// The number behind the first `words` of a document, without the commas between its digits.
double documented(const char* path, const std::string& words) {
    std::ifstream file(path);
    const std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    const std::size_t at = text.find(words);
    if (at == std::string::npos) return -1;
    std::string digits;
    for (std::size_t i = at + words.size(); text[i] == ',' || std::isdigit(static_cast<unsigned char>(text[i])); ++i) {
        if (text[i] != ',') digits += text[i];
    }
    return digits.empty() ? -1 : std::stod(digits);
}

// The documents say "about": one part in fifty, for what the heap rounds up.
TEST_F(allocations, a_channel_holds_what_the_documents_say) {
    const double pictures = 352 * 288 * 5 + 4 + 254 * 12;  // mask, difference, three colours; the accelerator's result
    const std::int64_t before = bench::heap_now().live_bytes;
    int handle = -1;
    ASSERT_EQ(ORVA_FireDetection_Start(&handle, bench::whole_picture()), FD_OK);
    const double lists = static_cast<double>(bench::heap_now().live_bytes - before) - pictures;
    ORVA_FireDetection_Stop(handle);
    EXPECT_EQ(documented(ORVA_HEADER_PATH, "A channel holds "), pictures);
    EXPECT_EQ(documented(ORVA_README_PATH, "| memory | "), pictures);
    EXPECT_NEAR(documented(ORVA_HEADER_PATH, "working pictures and about "), lists, lists * 0.02);
    EXPECT_NEAR(documented(ORVA_README_PATH, "bytes of pictures and about "), lists, lists * 0.02);
}

}  // namespace
