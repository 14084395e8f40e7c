// Copies of pictures in memory that may be read a little beyond its end.
#ifndef ORVA_GST_PICTURE_COPY_H
#define ORVA_GST_PICTURE_COPY_H

#include <vector>

#include "apps/orva_fire/ffmpeg.h"

namespace orva_gst {

// The scaler reads some bytes beyond the last row, where a GstBuffer may end with its page. And the finder of repeats
// keeps the last picture, which must not hold back a buffer of the pipeline. One copy serves both; its memory is used
// again as soon as nobody else holds it.
class picture_copier {
public:
    // source: may only point at planes. The result is valid until the next call, and longer for who shares it.
    const AVFrame& copy(const AVFrame& source);

private:
    AVFrame& spare_frame(const AVFrame& source);

    std::vector<orva_fire::frame_ptr> m_frames;
};

}  // namespace orva_gst

#endif
