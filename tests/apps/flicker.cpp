#include "tests/apps/flicker.h"

#include "tests/apps/pictures.h"

namespace apps_test {

orva_fire::frame_ptr still_picture(int width, int height) {
    return flat_picture(AV_PIX_FMT_YUV420P, width, height, {60, 60, 60}, AVCOL_RANGE_JPEG, AVCOL_SPC_SMPTE170M);
}

void add_flicker(AVFrame& picture, int index, int centre_x, int centre_y, int size) {
    static const int sizes[] = {16, 9, 13, 8, 15, 10, 12};
    const int half = size * sizes[index % 7] / 32 / 2 * 2;
    const int left = centre_x / 2 * 2 - half, top = centre_y / 2 * 2 - half;
    paint(picture, left, top, 2 * half, 2 * half, {255, 190, 100});
    // Rows change from picture to picture, so that all of the patch moves and not its rim alone.
    for (int y = top + index % 2 * 2; y < top + 2 * half; y += 4) {
        paint(picture, left, y, 2 * half, 2, {255, 235, 200});
    }
}

orva_fire::frame_ptr flicker_picture(int width, int height, int index, int centre_x, int centre_y, int size) {
    orva_fire::frame_ptr picture = still_picture(width, height);
    add_flicker(*picture, index, centre_x, centre_y, size);
    return picture;
}

}  // namespace apps_test
