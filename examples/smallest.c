/* The smallest host: one channel on the whole picture, a flame drawn by the program itself, the boxes printed. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "ORVA_FireDetection.h"

enum { WIDTH = 176, HEIGHT = 144, STRIDE = 176, FRAMES = 70 };

/* A dark room with a flame that changes its height from frame to frame. NV21, both planes in one block. */
static void draw(unsigned char* picture, int frame) {
    unsigned char* luma = picture;
    unsigned char* chroma = picture + STRIDE * HEIGHT;
    const int top = 45 + (frame * 17) % 40;
    int x, y;
    memset(luma, 60, STRIDE * HEIGHT);
    memset(chroma, 128, STRIDE * HEIGHT / 2);
    for (y = top; y < 100; ++y) {
        for (x = 80; x < 104; ++x) {
            luma[y * STRIDE + x] = (unsigned char)(150 + (frame * 31 + x * 7 + y * 13) % 80);
            chroma[y / 2 * STRIDE + x / 2 * 2] = 150;    /* V */
            chroma[y / 2 * STRIDE + x / 2 * 2 + 1] = 90; /* U */
        }
    }
}

int main(void) {
    const fd_rect whole_picture = {0, 1, 0, 1, 1, 1, 1, 1};
    unsigned char* picture = malloc(STRIDE * (HEIGHT + HEIGHT / 2 + 1)); /* one row to spare */
    fd_yuv_frame frame;
    fd_result result;
    int handle, i;

    if (picture == NULL || ORVA_FireDetection_Init() != FD_OK) return 1;
    if (ORVA_FireDetection_Start(&handle, whole_picture) != FD_OK) return 1;

    memset(&frame, 0, sizeof(frame));
    frame.format = FD_PIXEL_FORMAT_YUV420SP;
    frame.width = WIDTH;
    frame.height = HEIGHT;
    frame.virt_addr[0] = picture;
    frame.virt_addr[1] = picture + STRIDE * HEIGHT;
    frame.stride[0] = frame.stride[1] = STRIDE;

    for (i = 0; i < FRAMES; ++i) {
        draw(picture, i);
        if (ORVA_FireDetection_SetFrame(handle, frame, &result) != FD_OK) return 1;
        if (result.count > 0 && i % 10 == 0) {
            const fd_rect box = result.rects[0];
            printf("frame %d: fire at x %d, y %d, width %d, height %d\n", i, box.x, box.y, box.width, box.height);
        }
    }

    ORVA_FireDetection_Stop(handle);
    ORVA_FireDetection_UnInit();
    free(picture);
    return 0;
}
