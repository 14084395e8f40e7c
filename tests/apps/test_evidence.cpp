// The channel that explains answers as the one that detects, and its numbers are those of the pictures.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <tuple>

#include "apps/orva_fire/detector.h"
#include "apps/orva_fire/error.h"
#include "apps/orva_fire/evidence.h"
#include "apps/orva_fire/explain.h"
#include "apps/orva_fire/library_output.h"
#include "apps/orva_fire/stages.h"
#include "apps/orva_fire/video_source.h"
#include "tests/apps/clip_maker.h"

namespace {

using namespace apps_test;
using namespace orva_fire;
using nlohmann::json;

const double k_rate = 25;
const int k_pictures = 110;
const double k_onset = 0.8;

// A short fire, picture by picture, as the detector sees it.
class burning_room {
public:
    burning_room() : m_pictures(320, 240, k_onset), m_converter({0, 0, 320, 240}) {
        m_frame = new_picture(AV_PIX_FMT_YUV420P, 320, 240);
        m_frame->color_range = AVCOL_RANGE_MPEG;
        m_frame->colorspace = AVCOL_SPC_SMPTE170M;
    }
    AVFrame& frame(int index) {
        m_pictures.paint(index / k_rate, index, *m_frame);
        return *m_frame;
    }
    nv21_picture& seen(int index) { return m_converter.convert(frame(index)); }

private:
    fire_pictures m_pictures;
    nv21_converter m_converter;
    frame_ptr m_frame;
};

moment at(int index) {
    return {index, index / k_rate};
}

// Boxes around parts of the mask that are joined by edges.
std::vector<box> parts_of(const grey_picture& mask) {
    std::vector<uint8_t> left = mask.bytes;
    std::vector<box> parts;
    const int width = mask.size.width, height = mask.size.height;
    const auto set = [&](int x, int y) {
        return x >= 0 && y >= 0 && x < width && y < height && left[static_cast<size_t>(y * width + x)] != 0;
    };
    for (int i = 0; i < width * height; ++i) {
        if (!set(i % width, i / width)) continue;
        int x0 = width, y0 = height, x1 = 0, y1 = 0;
        std::vector<std::pair<int, int>> open{{i % width, i / width}};
        while (!open.empty()) {
            const auto [x, y] = open.back();
            open.pop_back();
            if (!set(x, y)) continue;
            left[static_cast<size_t>(y * width + x)] = 0;
            x0 = std::min(x0, x), x1 = std::max(x1, x), y0 = std::min(y0, y), y1 = std::max(y1, y);
            open.insert(open.end(), {{x - 1, y}, {x + 1, y}, {x, y - 1}, {x, y + 1}});
        }
        parts.push_back({x0, y0, x1 - x0 + 1, y1 - y0 + 1});
    }
    return parts;
}

bool is_before(const box& a, const box& b) {
    return std::tie(a.y, a.x, a.height, a.width) < std::tie(b.y, b.x, b.height, b.width);
}

std::vector<box> sorted(std::vector<box> boxes) {
    std::sort(boxes.begin(), boxes.end(), is_before);
    return boxes;
}

// One run over the scene with everything recorded, for the tests below.
struct recorded_run {
    std::vector<picture_evidence> seen;
    std::vector<stage_pictures> stages;
    std::vector<std::vector<box>> answers;  // of the channel that detects

    recorded_run() {
        const library_output quiet("");
        const detector_session session;
        detector_channel detecting({0, 0, 320, 240});
        evidence_channel explaining;
        stage_maker stage;
        burning_room room;
        stopwatch unused;
        for (int i = 0; i < k_pictures; ++i) {
            answers.push_back(detecting.analyse(room.frame(i), unused, unused));
            nv21_picture& picture = room.seen(i);
            seen.push_back(explaining.look(picture, at(i)));
            stages.push_back(stage.make(picture));
        }
    }
};

const recorded_run& the_run() {
    static const recorded_run run;
    return run;
}

TEST(evidence, comes_with_the_answers_of_the_channel_that_detects) {
    int reported = 0;
    for (size_t i = 0; i < the_run().seen.size(); ++i) {
        const picture_evidence& seen = the_run().seen[i];
        std::vector<box> boxes;
        for (const box& b : seen.answered) boxes.push_back(to_source(b, seen.size, {0, 0, 320, 240}));
        EXPECT_EQ(boxes, the_run().answers[i]) << "picture " << i;
        reported += !boxes.empty();
    }
    EXPECT_GT(reported, 0) << "the scene must burn";
    EXPECT_LT(reported, k_pictures);
}

TEST(evidence, stores_a_frame_for_each_picture_with_boxes_and_fifty_at_most) {
    int stored = 0;
    for (const picture_evidence& seen : the_run().seen) {
        EXPECT_EQ(seen.stored, std::min(stored, 50));
        EXPECT_EQ(seen.boxes.empty(), seen.components.empty());
        stored += !seen.boxes.empty();
    }
    EXPECT_GT(stored, 51);
}

TEST(evidence, has_a_report_or_a_reason_for_every_box) {
    for (const picture_evidence& seen : the_run().seen) {
        bool any = false;
        for (const box_evidence& b : seen.boxes) {
            const bool compared = b.ended >= verdict::too_rare;
            EXPECT_EQ(compared, seen.stored == 50 && b.centre > 0 && b.ended > verdict::not_brighter);
            if (!compared) continue;
            EXPECT_LE(b.matched, 50);
            EXPECT_EQ(b.ended == verdict::too_rare, b.matched < 35);
            EXPECT_LE(b.span, seen.at.seconds);
            EXPECT_GE(b.span, b.matched / k_rate - 1e-9) << "matches lie in different pictures before this one";
            any = any || b.ended == verdict::reported;
        }
        EXPECT_TRUE(any || !seen.fresh);
        EXPECT_FALSE(any && seen.answered.empty());
    }
}

TEST(evidence, calls_a_report_fresh_first_and_then_at_most_every_seventh_picture) {
    int last = -100;
    for (size_t i = 0; i < the_run().seen.size(); ++i) {
        const picture_evidence& seen = the_run().seen[i];
        if (!seen.fresh) continue;
        const int index = static_cast<int>(i);
        EXPECT_FALSE(seen.answered.empty());
        EXPECT_TRUE(index - last >= 7) << index;
        last = index;
    }
    EXPECT_GE(last, 50);
}

TEST(evidence, of_a_channel_that_starts_anew_is_that_of_a_new_channel) {
    const library_output quiet("");
    const detector_session session;
    evidence_channel restarted, fresh;
    burning_room room;
    for (int i = 0; i < 60; ++i) restarted.look(room.seen(i), at(i));
    restarted.restart();
    for (int i = 60; i < 70; ++i) {
        nv21_picture& picture = room.seen(i);
        const picture_evidence a = restarted.look(picture, at(i)), b = fresh.look(picture, at(i));
        EXPECT_EQ(a.stored, b.stored);
        EXPECT_EQ(a.mask, b.mask);
        EXPECT_EQ(a.changed, b.changed);
        EXPECT_EQ(a.answered, b.answered);
    }
}

TEST(stages, end_in_the_mask_and_the_components_of_the_channel) {
    for (size_t i = 0; i < the_run().stages.size(); ++i) {
        const stage_pictures& stages = the_run().stages[i];
        const picture_evidence& seen = the_run().seen[i];
        const auto set = std::count(stages.mask.bytes.begin(), stages.mask.bytes.end(), 255);
        EXPECT_EQ(set, seen.mask) << "picture " << i;
        EXPECT_EQ(sorted(parts_of(stages.mask)), sorted(seen.components)) << "picture " << i;
        EXPECT_GE(stages.threshold, 20);
        EXPECT_LE(stages.threshold, 35);
    }
}

TEST(stages, follow_from_each_other) {
    const stage_pictures& stages = the_run().stages[80];
    for (size_t i = 0; i < stages.mask.bytes.size(); ++i) {
        EXPECT_EQ(stages.motion.bytes[i] != 0, stages.difference.bytes[i] > stages.threshold);
        EXPECT_TRUE(stages.motion.bytes[i] == 0 || stages.moving.bytes[i] != 0);
    }
}

TEST(explanation, is_json_with_the_numbers_of_the_boxes) {
    const picture_evidence& seen = the_run().seen[100];
    ASSERT_FALSE(seen.boxes.empty());
    const explained_place place{"stove \"<script>\xff", 0, 0, {100, 50, 640, 480}};
    const json all = json::parse(explanation_json(place, seen, 27));
    EXPECT_EQ(all["frame"], 100);
    EXPECT_EQ(all["seconds"], 4.0);
    EXPECT_EQ(all["zone"], "stove \"<script>\xEF\xBF\xBD");
    EXPECT_EQ(all["threshold"], 27);
    EXPECT_EQ(all["components"].size(), seen.components.size());
    ASSERT_EQ(all["boxes"].size(), seen.boxes.size());
    for (size_t i = 0; i < seen.boxes.size(); ++i) {
        const json& b = all["boxes"][i];
        EXPECT_EQ(b["seen"]["x"], seen.boxes[i].place.x);
        EXPECT_EQ(b["x"], 100 + 2 * seen.boxes[i].place.x) << "a region of twice the size of what is seen";
        EXPECT_FALSE(b["reason"].get<std::string>().empty());
        EXPECT_EQ(b.contains("matched"), seen.boxes[i].ended >= verdict::too_rare);
    }
}

TEST(explain_writer, writes_a_folder_a_picture_and_a_page_and_replaces_those_of_an_earlier_run) {
    const temporary_folder folder;
    const explained_place place{"whole <b>", 0, 0, {0, 0, 320, 240}};
    burning_room room;
    room.seen(0);
    for (int run = 0; run < 2; ++run) {
        explain_writer writer(folder.file("explain"), "clip & co");
        EXPECT_FALSE(std::filesystem::exists(folder.file("explain/picture-000100-zone-1-1")));
        writer.write(place, room.seen(100), the_run().seen[100], the_run().stages[100]);
        writer.finish();
        EXPECT_EQ(writer.written(), 1);
    }
    const std::string picture = folder.file("explain/picture-000100-zone-1-1/");
    for (const char* file : {"1-seen.png", "2-difference.png", "3-threshold.png", "4-motion.png", "5-colour.png",
                             "6-mask.png", "7-components.png", "8-boxes.png"}) {
        video_source source(picture + file);
        source_picture read;
        ASSERT_TRUE(source.next(read)) << file;
        EXPECT_EQ(read.frame->width, 320) << file;
        EXPECT_EQ(read.frame->height, 240) << file;
    }
    EXPECT_EQ(json::parse(read_file(picture + "numbers.json"))["frame"], 100);
    const std::string page = read_file(folder.file("explain/index.html"));
    EXPECT_NE(page.find("clip &amp; co"), std::string::npos);
    EXPECT_NE(page.find("whole &lt;b&gt;"), std::string::npos);
    EXPECT_NE(page.find("picture-000100-zone-1-1/8-boxes.png"), std::string::npos);
}

TEST(explain_writer, names_a_folder_that_cannot_be_made) {
    EXPECT_THROW(explain_writer("/dev/null/explain", "clip"), io_error);
}

TEST(components, have_a_colour_each_and_the_rest_is_black) {
    // ##.#
    // ...#
    const grey_picture mask{{4, 2}, {255, 255, 0, 255, 0, 0, 0, 255}};
    const colour_picture drawn = coloured_components(mask);
    const auto colour = [&](size_t i) { return std::vector<uint8_t>(&drawn.bytes[3 * i], &drawn.bytes[3 * i] + 3); };
    EXPECT_EQ(colour(0), colour(1));
    EXPECT_EQ(colour(3), colour(7));
    EXPECT_NE(colour(0), colour(3));
    EXPECT_EQ(colour(2), std::vector<uint8_t>(3));
}

}  // namespace
