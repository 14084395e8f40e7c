// Synthetic scenes: still or moving pictures with flames, drawn from a seed with integers only, so that every machine
// draws the same bytes. A scene is a list of settings; a player turns them into frames.
#ifndef ORVA_TESTS_PIPELINE_SCENES_H
#define ORVA_TESTS_PIPELINE_SCENES_H

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "ORVA_FireDetection.h"
#include "tests/support/xorshift_source.h"

namespace scenes {

using random_source = support::xorshift_source;

struct picture_size {
    int width;
    int height;
    int stride;
};

struct settings {
    std::string name;
    int frames;
    std::vector<picture_size> sizes;  // taken in turn, one for each size_period frames
    int size_period;
    fd_rect region;
    int flames;          // how many; placed by the seed
    bool in_rows;        // five to a row instead
    int radius;          // mean half height in per mille of the picture's height
    int flicker;         // change of the radius from frame to frame, per cent to both sides
    int burst_period;    // every so many frames the flames are five times as large; 0: never
    int growth;          // growth of the radius in per mille a frame
    int drift;           // pixels a flame wanders in a frame, at most
    int noise;           // luma noise to both sides
    int background;      // luma of the still scene
    int salt;            // fire-coloured dots strewn over the picture, a frame
    int on, off;         // frames with flames, then without; off 0: always
    int grade_period;    // a new grade every so many frames; 0: never
    int refused_period;  // a frame that must be refused every so many frames; 0: never
};

// For test reports.
inline std::ostream& operator<<(std::ostream& out, const settings& scene) {
    return out << scene.name;
}

// A frame in one block of memory, as the public header asks: both planes, and one row to spare. What lies beside the
// picture is filled too, because the brightness test reads it.
class frame_block {
public:
    void shape(picture_size size);
    fd_yuv_frame view();
    std::vector<unsigned char>& bytes() { return m_bytes; }
    unsigned char* luma(int x, int y);
    unsigned char* chroma(int x, int y);  // V of the pair that covers pixel x, y
    picture_size size() const { return m_size; }

private:
    picture_size m_size{};
    std::vector<unsigned char> m_bytes;
};

// Draws a scene frame by frame.
class player {
public:
    player(const settings& scene, std::uint64_t seed);
    bool done() const { return m_frame == m_scene.frames; }
    // The next frame; it stays valid until the next call. Some are of the kind that must be refused.
    fd_yuv_frame next();
    // The grade to set before this frame, or -1.
    int grade();
    random_source& random() { return m_random; }

private:
    struct flame {
        int x, y;  // per mille of the picture
        int radius;
    };
    void draw_background();
    void draw_flame(flame& f);
    void draw_salt();
    void set_pixel(int x, int y, int luma, int u, int v);
    fd_yuv_frame spoilt(fd_yuv_frame frame);

    settings m_scene;
    random_source m_random;
    std::vector<flame> m_flames;
    std::vector<unsigned char> m_still;  // the scene without noise and flames
    frame_block m_block;
    int m_frame = 0;
};

// The whole picture.
fd_rect whole_picture();

// The named scenes, and one drawn from a seed.
std::vector<settings> named_scenes();
settings random_scene(std::uint64_t seed);

}  // namespace scenes

#endif
