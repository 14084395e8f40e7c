/* A host in C: the header is C99, the records have their layout and travel by value, and the six functions work. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "ORVA_FireDetection.h"
#include "ORVA_FireDetection.h" /* may be included twice */

static int failures = 0;

static void expect(int line, const char* what, long got, long wanted) {
    if (got == wanted) return;
    fprintf(stderr, "line %d: %s is %ld, wanted %ld\n", line, what, got, wanted);
    ++failures;
}

#define EXPECT(got, wanted) expect(__LINE__, #got, (long)(got), (long)(wanted))

/* --- layout ------------------------------------------------------------------------------------------------------ */

static void check_layout(void) {
    const size_t pointer = sizeof(void*);
    EXPECT(sizeof(fd_pixel_format), 4);
    EXPECT(sizeof(fd_rect), 16);
    EXPECT(offsetof(fd_rect, x), 0);
    EXPECT(offsetof(fd_rect, x_ref), 2);
    EXPECT(offsetof(fd_rect, y), 4);
    EXPECT(offsetof(fd_rect, y_ref), 6);
    EXPECT(offsetof(fd_rect, width), 8);
    EXPECT(offsetof(fd_rect, width_ref), 10);
    EXPECT(offsetof(fd_rect, height), 12);
    EXPECT(offsetof(fd_rect, height_ref), 14);
    EXPECT(sizeof(fd_result), 162);
    EXPECT(offsetof(fd_result, rects), 0);
    EXPECT(offsetof(fd_result, count), 160);
    EXPECT(offsetof(fd_yuv_frame, format), 0);
    EXPECT(offsetof(fd_yuv_frame, width), 4);
    EXPECT(offsetof(fd_yuv_frame, height), 8);
    EXPECT(offsetof(fd_yuv_frame, phys_addr), 12);
    EXPECT(offsetof(fd_yuv_frame, reserved), 24);
    EXPECT(offsetof(fd_yuv_frame, virt_addr), pointer == 4 ? 28 : 32);
    EXPECT(offsetof(fd_yuv_frame, stride), pointer == 4 ? 40 : 56);
    EXPECT(sizeof(fd_yuv_frame), pointer == 4 ? 52 : 72);
    EXPECT(FD_RESULT_MAX_RECTS, 10);
    EXPECT(FD_MAX_CHANNELS, 128);
    EXPECT(FD_MAX_FRAME_WIDTH, 352);
    EXPECT(FD_MAX_FRAME_HEIGHT, 288);
    EXPECT(FD_PIXEL_FORMAT_YUV420SP, 0);
}

static void check_codes(void) {
    EXPECT(FD_OK, 0);
    EXPECT(FD_NOT_INITIALISED, 1);
    EXPECT(FD_NOT_IN_USE, 2);
    EXPECT(FD_ALREADY_INITIALISED, 3);
    EXPECT(FD_PLATFORM_FAILED, 4);
    EXPECT(FD_NO_CHANNEL, 6);
    EXPECT(FD_INVALID_ARGUMENT, 7);
    EXPECT(FD_NO_FREE_HANDLE, 8);
    EXPECT(FD_BAD_HANDLE, 9);
}

/* --- a rectangle by value: each field decides on its own ---------------------------------------------------------- */

static int start_and_stop(fd_rect region) {
    int handle = -1;
    const int status = ORVA_FireDetection_Start(&handle, region);
    if (status == FD_OK) EXPECT(ORVA_FireDetection_Stop(handle), FD_OK);
    EXPECT(handle, status == FD_OK ? 0 : -1);
    return status;
}

static void check_rectangle(void) {
    const fd_rect good = {30, 100, 20, 50, 140, 200, 180, 300};
    fd_rect region = good;
    EXPECT(start_and_stop(region), FD_OK);
#define REFUSED_WITH(field, value) \
    region = good;                 \
    region.field = (value);        \
    EXPECT(start_and_stop(region), FD_INVALID_ARGUMENT)
    REFUSED_WITH(x, 31);
    REFUSED_WITH(x_ref, 99);
    REFUSED_WITH(y, 21);
    REFUSED_WITH(y_ref, 49);
    REFUSED_WITH(width, 141);
    REFUSED_WITH(width_ref, 199);
    REFUSED_WITH(height, 181);
    REFUSED_WITH(height_ref, 299);
    REFUSED_WITH(x_ref, 0);
    REFUSED_WITH(y_ref, 0);
    REFUSED_WITH(width_ref, 0);
    REFUSED_WITH(height_ref, 0);
    REFUSED_WITH(width, 0);
    REFUSED_WITH(height, 0);
#undef REFUSED_WITH
}

/* --- a frame by value ----------------------------------------------------------------------------------------------
 */

enum { k_width = 352, k_height = 288, k_stride = 384, k_length = k_stride * (k_height + k_height / 2 + 1) };

static fd_yuv_frame frame_of(unsigned char* pixels) {
    fd_yuv_frame frame;
    memset(&frame, 0, sizeof frame);
    frame.format = FD_PIXEL_FORMAT_YUV420SP;
    frame.width = k_width;
    frame.height = k_height;
    frame.phys_addr[0] = 0xdeadbeefu; /* not looked at */
    frame.phys_addr[2] = 0x12345678u;
    frame.reserved = 4711;
    frame.virt_addr[0] = pixels;
    frame.virt_addr[1] = pixels + k_stride * k_height;
    frame.stride[0] = k_stride;
    frame.stride[1] = k_stride;
    frame.stride[2] = 99;
    return frame;
}

/* The answer between guard bytes: neither more nor less than the record is written. */
struct guarded_result {
    unsigned char before[16];
    fd_result result;
    unsigned char after[16];
};

static int set_frame(int handle, fd_yuv_frame frame, fd_result* result) {
    struct guarded_result answer;
    int i, status;
    memset(&answer, 0x5a, sizeof answer);
    status = ORVA_FireDetection_SetFrame(handle, frame, &answer.result);
    for (i = 0; i < 16; ++i) {
        EXPECT(answer.before[i], 0x5a);
        EXPECT(answer.after[i], 0x5a);
    }
    *result = answer.result;
    return status;
}

static void check_refusals(int handle, unsigned char* pixels) {
    const fd_yuv_frame good = frame_of(pixels);
    fd_yuv_frame frame;
    fd_result result;
#define REFUSED_WITH(field, value)                                  \
    frame = good;                                                   \
    frame.field = (value);                                          \
    EXPECT(set_frame(handle, frame, &result), FD_INVALID_ARGUMENT); \
    EXPECT(result.count, 0x5a5a)
    REFUSED_WITH(format, (fd_pixel_format)1);
    REFUSED_WITH(width, 353);
    REFUSED_WITH(width, 0);
    REFUSED_WITH(height, 289);
    REFUSED_WITH(height, 0);
    REFUSED_WITH(virt_addr[0], NULL);
    REFUSED_WITH(virt_addr[1], NULL);
#undef REFUSED_WITH
    EXPECT(ORVA_FireDetection_SetFrame(-1, good, &result), FD_BAD_HANDLE);
    EXPECT(ORVA_FireDetection_SetFrame(1, good, &result), FD_NOT_IN_USE);
}

/* --- a flame -------------------------------------------------------------------------------------------------------
 */

static void paint(unsigned char* pixels, int x, int y, int size, int luma, int u, int v) {
    int row, column;
    for (row = y; row < y + size; ++row) {
        for (column = x; column < x + size; ++column) pixels[row * k_stride + column] = (unsigned char)luma;
    }
    for (row = y / 2; row < (y + size) / 2; ++row) {
        for (column = x; column < x + size; column += 2) {
            pixels[(k_height + row) * k_stride + column] = (unsigned char)v;
            pixels[(k_height + row) * k_stride + column + 1] = (unsigned char)u;
        }
    }
}

/* Squares of 24 and 40 pixels in turn, found as components of 26 and 42: after 26 small and 25 large ones the averages
 * are left 103, top 83, width and height 34. */
static void check_flame(int handle, unsigned char* pixels) {
    int number;
    for (number = 1; number <= 51; ++number) {
        fd_result result;
        memset(pixels, 40, k_stride * k_height);
        memset(pixels + k_stride * k_height, 128, k_length - k_stride * k_height);
        if (number % 2 == 1) {
            paint(pixels, 108, 88, 24, 200, 100, 160);
        } else {
            paint(pixels, 100, 80, 40, 240, 100, 160);
        }
        EXPECT(set_frame(handle, frame_of(pixels), &result), FD_OK);
        EXPECT(result.count, number == 51);
        if (result.count == 0) continue;
        EXPECT(result.rects[0].x, 103);
        EXPECT(result.rects[0].y, 83);
        EXPECT(result.rects[0].width, 34);
        EXPECT(result.rects[0].height, 34);
        EXPECT(result.rects[0].x_ref, k_width);
        EXPECT(result.rects[0].y_ref, k_height);
        EXPECT(result.rects[0].width_ref, k_width);
        EXPECT(result.rects[0].height_ref, k_height);
    }
}

int main(void) {
    const fd_rect whole = {0, 1, 0, 1, 1, 1, 1, 1};
    unsigned char* pixels = (unsigned char*)calloc(k_length, 1);
    int handle = -1;
    if (pixels == NULL) return EXIT_FAILURE;
    check_layout();
    check_codes();
    EXPECT(ORVA_FireDetection_UnInit(), FD_NOT_INITIALISED);
    EXPECT(ORVA_FireDetection_Init(), FD_OK);
    EXPECT(ORVA_FireDetection_Init(), FD_ALREADY_INITIALISED);
    check_rectangle();
    EXPECT(ORVA_FireDetection_Start(NULL, whole), FD_INVALID_ARGUMENT);
    EXPECT(ORVA_FireDetection_Start(&handle, whole), FD_OK);
    EXPECT(handle, 0);
    EXPECT(ORVA_FireDetection_SetSensitiveGrade(handle, 70), FD_OK);
    EXPECT(ORVA_FireDetection_SetSensitiveGrade(handle, 101), FD_INVALID_ARGUMENT);
    check_refusals(handle, pixels);
    check_flame(handle, pixels);
    EXPECT(ORVA_FireDetection_Stop(handle), FD_OK);
    EXPECT(ORVA_FireDetection_Stop(128), FD_INVALID_ARGUMENT);
    EXPECT(ORVA_FireDetection_UnInit(), FD_OK);
    free(pixels);
    return failures == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
