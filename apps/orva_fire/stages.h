// The stages of one picture on its way to boxes, as pictures: made again with the library's own single operations,
// which give the same as the channel does in one pass.
#ifndef ORVA_APPS_ORVA_FIRE_STAGES_H
#define ORVA_APPS_ORVA_FIRE_STAGES_H

#include <cstdint>
#include <vector>

#include "apps/orva_fire/detector_picture.h"
#include "apps/orva_fire/nv21.h"

namespace orva_fire {

struct stage_pictures {
    grey_picture difference;  // of the luma, from the picture before
    int threshold = 0;        // chosen for it, 20 to 35
    grey_picture motion;      // 255 where the difference is above it
    grey_picture moving;      // the same, grown by one pixel
    grey_picture colour;      // 255 in blocks of 2 x 2 pixels that have the colour of fire, moving or not
    grey_picture mask;        // moving and fire-coloured, grown by one pixel: what components are made of
};

class stage_maker {
public:
    // The stages of the part of this picture that is looked at; the one before it is what the last call of make or pass
    // brought, black at first.
    stage_pictures make(nv21_picture& picture);

    // Only remembers this picture.
    void pass(nv21_picture& picture);

    // The next picture is the first again.
    void restart() { m_before.clear(); }

private:
    std::vector<uint8_t> m_before;
};

}  // namespace orva_fire

#endif
