/* A host in C on the shared library: layouts, records by value, and a flame whose boxes can be worked out by hand.
 * Prints what it finds; exit code 0 if all of it is right. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "ORVA_FireDetection.h"
#include "tests/fakes/abi_records.h"

enum { SIZE = 96, FLAME_X = 40, FLAME_Y = 32, FIRST_REPORT = 51 };

static int wrong = 0;

static void check(int right, const char* what) {
    if (right) return;
    ++wrong;
    fprintf(stderr, "wrong: %s\n", what);
}

static void paint(unsigned char* picture, int x, int y, int size, int luma) {
    int row;
    int column;
    for (row = y; row < y + size; ++row) {
        for (column = x; column < x + size; ++column) {
            picture[row * SIZE + column] = (unsigned char)luma;
            picture[(SIZE + row / 2) * SIZE + column] = (unsigned char)(column % 2 == 0 ? 160 : 100);
        }
    }
}

/* A square of 24 pixels and one of 40 in turn around one centre, on grey. Dilation widens each by a pixel on each side,
 * to areas 676 and 1764. */
static void paint_frame(unsigned char* picture, int number) {
    memset(picture, 40, SIZE * SIZE);
    memset(picture + SIZE * SIZE, 128, SIZE * (SIZE / 2 + 1));
    if (number % 2 == 1) {
        paint(picture, FLAME_X + 8, FLAME_Y + 8, 24, 200);
    } else {
        paint(picture, FLAME_X, FLAME_Y, 40, 240);
    }
}

static fd_yuv_frame frame_of(unsigned char* picture) {
    fd_yuv_frame frame;
    memset(&frame, 0, sizeof frame);
    frame.format = FD_PIXEL_FORMAT_YUV420SP;
    frame.width = SIZE;
    frame.height = SIZE;
    frame.reserved = -1;
    frame.virt_addr[0] = picture;
    frame.virt_addr[1] = picture + SIZE * SIZE;
    frame.stride[0] = SIZE;
    frame.stride[1] = SIZE;
    return frame;
}

/* The first report is the mean of 26 small squares and 25 large ones: 3 pixels right of and below the large one's
 * corner, 34 wide and high. The region starts at column 16 and row 8, in units of another size. */
static void play(void) {
    unsigned char* picture = malloc((size_t)SIZE * (SIZE + SIZE / 2 + 1));
    const fd_rect region = {1, 6, 1, 12, 5, 6, 11, 12};
    fd_result result;
    int handle = -1;
    int number;
    check(ORVA_FireDetection_Init() == FD_OK, "init");
    check(ORVA_FireDetection_Start(&handle, region) == FD_OK && handle == 0, "start");
    for (number = 1; number <= FIRST_REPORT; ++number) {
        paint_frame(picture, number);
        check(ORVA_FireDetection_SetFrame(handle, frame_of(picture), &result) == FD_OK, "frame");
        check(result.count == (number == FIRST_REPORT ? 1 : 0), "number of boxes");
    }
    printf("box %u/%u %u/%u %u/%u %u/%u\n", result.rects[0].x, result.rects[0].x_ref, result.rects[0].y,
           result.rects[0].y_ref, result.rects[0].width, result.rects[0].width_ref, result.rects[0].height,
           result.rects[0].height_ref);
    check(result.rects[0].x == FLAME_X + 3 && result.rects[0].y == FLAME_Y + 3, "place of the box");
    check(result.rects[0].width == 34 && result.rects[0].height == 34, "size of the box");
    check(result.rects[0].x_ref == SIZE && result.rects[0].height_ref == SIZE, "references of the box");
    check(ORVA_FireDetection_Stop(handle) == FD_OK, "stop");
    check(ORVA_FireDetection_UnInit() == FD_OK, "uninit");
    free(picture);
}

int main(void) {
    const size_t frame_bytes = sizeof(void*) == 4 ? 52 : 72;
    printf("fd_rect %u, fd_result %u, fd_yuv_frame %u\n", (unsigned)sizeof(fd_rect), (unsigned)sizeof(fd_result),
           (unsigned)sizeof(fd_yuv_frame));
    check(sizeof(fd_rect) == 16, "size of fd_rect");
    check(sizeof(fd_result) == 162, "size of fd_result");
    check(sizeof(fd_yuv_frame) == frame_bytes, "size of fd_yuv_frame");
    check(abi_c_calls() == 0, "records by value from C");
    check(abi_cpp_calls() == 0, "records by value from C++");
    play();
    return wrong == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
