// Makes decoded pictures upright, progressive and of one size. Pictures that are all that already pass untouched.
#ifndef ORVA_APPS_ORVA_FIRE_PICTURE_FILTER_H
#define ORVA_APPS_ORVA_FIRE_PICTURE_FILTER_H

#include <cstdint>
#include <deque>
#include <string>

#include "apps/orva_fire/ffmpeg.h"
#include "apps/orva_fire/geometry.h"

namespace orva_fire {

// The filters that make a picture with this display matrix upright, or an empty text. matrix: 9 numbers or null.
// Only quarter turns and mirror images are known; any other angle gives an empty text too.
std::string upright_filters(const int32_t* matrix);

// True if the matrix turns the picture by an angle that upright_filters leaves alone.
bool has_odd_angle(const int32_t* matrix);

class picture_filter {
public:
    // time_base: of the pictures' time stamps. upright: from upright_filters.
    // size: of all pictures handed out; that of the first if it is empty.
    picture_filter(AVRational time_base, std::string upright, picture_size size = {});

    // Takes one decoded picture with a time stamp.
    void push(frame_ptr picture);

    // No more pictures come; what is held back for deinterlacing becomes ready.
    void finish();

    // Hands out the next ready picture and its time in seconds. False if there is none yet.
    bool pull(frame_ptr& picture, double& seconds);

private:
    struct layout {
        int width = 0, height = 0, format = AV_PIX_FMT_NONE;
        AVRational aspect = {0, 1};
        bool deinterlace = false;
    };
    struct ready_picture {
        frame_ptr picture;
        double seconds;
    };

    layout layout_of(const AVFrame& picture) const;
    std::string chain_for(const layout& wanted) const;
    void rebuild(const layout& wanted);
    void drain_graph();
    void hand_on(frame_ptr picture, AVRational time_base);

    const AVRational m_time_base;
    const std::string m_upright;
    layout m_layout;
    picture_size m_size;  // of all pictures handed out, once it is known
    bool m_interlaced_seen = false;
    graph_ptr m_graph;
    AVFilterContext* m_entry = nullptr;
    AVFilterContext* m_exit = nullptr;
    std::deque<ready_picture> m_ready;
};

}  // namespace orva_fire

#endif
