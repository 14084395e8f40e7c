/* A host in C: opens a channel, shows it a grey frame, and expects an answer without boxes. */
#include <ORVA_FireDetection.h>
#include <stdio.h>
#include <string.h>

enum { WIDTH = 64, HEIGHT = 64 };

static unsigned char picture[WIDTH * (HEIGHT + HEIGHT / 2 + 1)];

int main(void) {
    const fd_rect whole_picture = {0, 1, 0, 1, 1, 1, 1, 1};
    fd_yuv_frame frame;
    fd_result result;
    int handle = -1;

    memset(picture, 128, sizeof(picture));
    memset(&frame, 0, sizeof(frame));
    frame.format = FD_PIXEL_FORMAT_YUV420SP;
    frame.width = WIDTH;
    frame.height = HEIGHT;
    frame.virt_addr[0] = picture;
    frame.virt_addr[1] = picture + WIDTH * HEIGHT;
    frame.stride[0] = frame.stride[1] = WIDTH;

    if (ORVA_FireDetection_Init() != FD_OK) return 1;
    if (ORVA_FireDetection_Start(&handle, whole_picture) != FD_OK || handle != 0) return 2;
    if (ORVA_FireDetection_SetFrame(handle, frame, &result) != FD_OK || result.count != 0) return 3;
    if (ORVA_FireDetection_Stop(handle) != FD_OK) return 4;
    if (ORVA_FireDetection_UnInit() != FD_OK) return 5;
    puts("a frame was answered");
    return 0;
}
