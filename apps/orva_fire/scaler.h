// One conversion of pictures: size, pixel format, range and matrix, with the exact meaning of every number kept.
#ifndef ORVA_APPS_ORVA_FIRE_SCALER_H
#define ORVA_APPS_ORVA_FIRE_SCALER_H

#include "apps/orva_fire/colour.h"
#include "apps/orva_fire/ffmpeg.h"
#include "apps/orva_fire/geometry.h"

namespace orva_fire {

class scaler {
public:
    // Scales and converts `source` into the planes given. `target` says what the result's numbers shall mean.
    // The inner state is rebuilt whenever the source's size, format or colour changes.
    // Throws io_error if the pixel format cannot be converted.
    void convert(const AVFrame& source, const picture_colour& target, picture_size size, uint8_t* const planes[4],
                 const int strides[4]);

private:
    void rebuild(picture_size from, const picture_colour& source, const picture_colour& target, picture_size size);

    scaler_ptr m_context;
    picture_size m_from, m_to;
    picture_colour m_source, m_target;
};

}  // namespace orva_fire

#endif
