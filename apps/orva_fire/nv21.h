// Pictures as the detector wants them, and the way from a source picture to one.
#ifndef ORVA_APPS_ORVA_FIRE_NV21_H
#define ORVA_APPS_ORVA_FIRE_NV21_H

#include <cstdint>
#include <vector>

#include "ORVA_FireDetection.h"
#include "apps/orva_fire/ffmpeg.h"
#include "apps/orva_fire/geometry.h"
#include "apps/orva_fire/scaler.h"

namespace orva_fire {

// An NV21 picture in one block: luma, directly after it chroma, then one row to spare; the stride is a multiple of 16.
class nv21_picture {
public:
    explicit nv21_picture(picture_size size);

    picture_size size() const { return m_size; }
    int stride() const { return m_stride; }
    uint8_t* luma() { return m_bytes.data(); }
    uint8_t* chroma() { return m_bytes.data() + static_cast<size_t>(m_stride) * static_cast<size_t>(m_size.height); }

    // The record for the library; it points into this picture.
    fd_yuv_frame view();

private:
    picture_size m_size;
    int m_stride;
    std::vector<uint8_t> m_bytes;
};

// Cuts one region out of source pictures and converts it: full range, BT.601, at most 352 x 288.
class nv21_converter {
public:
    // region: in source pixels, inside every picture that will come.
    explicit nv21_converter(const box& region);

    // The returned picture is valid until the next call. The source may be an AVFrame that only points at somebody
    // else's planes; nothing is copied but the pixels that are converted.
    nv21_picture& convert(const AVFrame& source);

    // Size of the pictures that convert returns.
    picture_size size() const { return m_picture.size(); }

private:
    box m_region;
    scaler m_scaler;
    nv21_picture m_picture;
};

}  // namespace orva_fire

#endif
