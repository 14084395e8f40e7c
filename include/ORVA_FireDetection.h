/**
 * @file
 * The whole interface of liborva_fd: plain records, six functions, named numbers.
 * C99 and C++11. Needs no other header of the library.
 *
 * ## THE LIBRARY IN SHORT
 *
 * A host initialises the library once, starts detection channels on regions of its picture, and hands each channel
 * its frames one at a time. For every frame the channel answers with up to ten boxes where fire is seen.
 *
 *     ORVA_FireDetection_Init();
 *     ORVA_FireDetection_Start(&handle, region);
 *     for each frame: ORVA_FireDetection_SetFrame(handle, frame, &result);
 *     ORVA_FireDetection_Stop(handle);
 *     ORVA_FireDetection_UnInit();
 *
 * Everything is counted in frames, not in seconds. A channel compares a picture with the one before, keeps the last
 * 50 frames in which it saw moving fire colour, and reports a place that was seen in 30 to 47 of them (by grade, see
 * ORVA_FireDetection_SetSensitiveGrade) with an area that flickers. So nothing is reported before the 51st such
 * frame. Made for 10 to 30 frames a second and a camera that stands still.
 *
 * How a result is held: once boxes are reported they stay the same for the next 6 frames, whatever is seen. From the
 * 7th on, a frame with boxes replaces them at once; frames without boxes keep the old ones until the 15th frame after
 * the last replacement. The 16th is taken as it comes: if it is empty, the report ends. A change of the region's size
 * in pixels starts that count again and keeps the boxes.
 *
 * ## PICTURES
 *
 * NV21: a luma plane, one byte a pixel, and one plane of interleaved chroma bytes, V before U, one pair for each
 * 2 x 2 pixels. At most 352 x 288 pixels. The colour test converts with the full-range BT.601 matrix: luma 0 is
 * black, luma 255 white, chroma 128 neutral. A host whose video is limited range (luma 16 to 235), as most coded video
 * is, must expand it first: Y' = (Y - 16) * 255 / 219 and C' = (C - 128) * 255 / 224 + 128, clipped to 0..255. Without
 * that, reds come out too pale and fire is missed. Video with the BT.709 matrix should be converted to BT.601.
 *
 * ## WHICH BYTES ARE READ
 *
 * A channel reads the host's frame in place and writes nothing into it. Reads are not confined to the region: the
 * brightness test reads up to height / 5 rows below the region and up to width / 5 columns to its right, and a region
 * of odd width or height reads one more column or row of both planes. Therefore give each frame as one block of memory:
 *
 * - plane 0 first, plane 1 directly after it: virt_addr[1] = virt_addr[0] + stride[0] * height;
 * - both strides equal, at least `width` (rounded up to even); multiples of 16 are recommended, and even x for regions;
 * - one row to spare at the end: stride[0] * (height + (height + 1) / 2 + 1) bytes in all.
 *
 * Nothing outside that block is read. The frame must stay as it is until ORVA_FireDetection_SetFrame returns; after
 * that the host may reuse it. If stride[0] is a multiple of 16 the region is first widened so that x is a multiple of
 * 16 and y, width and height are even, a width or height that is odd and as long as the frame being shortened by one
 * instead; otherwise the region is used as it stands.
 *
 * ## MEMORY
 *
 * A channel holds 509,932 bytes of working pictures and about 427,000 bytes for lists of spots, boxes and history, all
 * obtained by ORVA_FireDetection_Start and released by ORVA_FireDetection_Stop. Working pictures start zeroed, so the
 * first frame is deterministic. ORVA_FireDetection_SetFrame obtains nothing in builds without the accelerator. The host
 * owns every record and every picture that it passes; the library keeps no pointer to them.
 *
 * ## THREADS
 *
 * The library starts none; all work runs on the calling thread. Channels are independent: Start, Stop of different
 * handles, SetFrame and SetSensitiveGrade may be called from several threads at once. Calls on one handle are
 * serialised by a lock of that handle, with two exceptions that the host must see to: Stop of a handle must not run
 * while another thread may still call into the same handle, and Init and UnInit must not run while any other call does.
 *
 * ## LOG LINES
 *
 * Failures, and some measured ratios of refused candidates, are printed on standard output with printf. There is no
 * switch. A write to a full pipe blocks the call like any other write, and the decimal sign of ratios follows the
 * process's locale (LC_NUMERIC). A host that wants its standard output for itself turns the lines away before Init:
 *
 *     int own = dup(1);                                   (write the program's own output to `own`)
 *     int sink = open("/dev/null", O_WRONLY); dup2(sink, 1); close(sink);
 *
 * ## EXCEPTIONS
 *
 * The library throws nothing of its own. If memory for a channel object or a list cannot be had, the C++ allocator's
 * exception (std::bad_alloc) leaves ORVA_FireDetection_Start (or, in a build with the accelerator,
 * ORVA_FireDetection_SetFrame); every lock and buffer is released before, and the library stays usable. A C++ host may
 * catch it. A C host cannot: the process ends through std::terminate, unless the C code between main and the call was
 * compiled with -fexceptions and something above catches it. Working pictures are different: if they cannot be had,
 * Start returns 4.
 *
 * ## BUILDS WITH THE ACCELERATOR
 *
 * In a build for a chip with the IVE engine, pictures that qualify (stride and physical addresses multiples of 16,
 * even sizes) are processed there; the addresses of both planes must be multiples of 16 and not 0. The engine reads
 * phys_addr; the processor reads the same planes through virt_addr, for the colour and brightness tests, so both
 * must show the same bytes. The engine converts with the BT.709 matrix for studio range, so the rule above on
 * expanding video does not hold there; see docs/porting.md. The engine refuses windows smaller than 64 x 64 pixels,
 * which nothing tests beforehand: SetFrame on such a region returns 4 for every frame. Use regions of at least 64 x
 * 64 pixels. Another stride does not help: the library's own working pictures still qualify, unless the region's
 * width or height is odd.
 */
#ifndef ORVA_FIREDETECTION_H
#define ORVA_FIREDETECTION_H

#include <stddef.h>
#include <stdint.h>

/** Version of this header. Raised, with the SONAME, by a change of the layout or of an exported name. */
#define ORVA_FD_VERSION_MAJOR 1
/** Raised by what is new and disturbs no host. */
#define ORVA_FD_VERSION_MINOR 0
/** Raised by corrections. */
#define ORVA_FD_VERSION_PATCH 0

/** Marks what the shared library exports. */
#if defined(__GNUC__)
#define ORVA_FD_API __attribute__((visibility("default")))
#else
#define ORVA_FD_API
#endif

/** Boxes in one result at most. */
#define FD_RESULT_MAX_RECTS 10

/** Channels that can be open at once; handles are 0 to 127. */
#define FD_MAX_CHANNELS 128

#define FD_MAX_FRAME_WIDTH 352  /**< Widest frame, in pixels. */
#define FD_MAX_FRAME_HEIGHT 288 /**< Highest frame, in pixels. */

#ifdef __cplusplus
extern "C" {
#endif

/** Status codes of the six functions. Each function's comment says which it returns, and when. */
enum fd_status {
    FD_OK = 0,
    FD_NOT_INITIALISED = 1,     /**< the library is not initialised */
    FD_NOT_IN_USE = 2,          /**< no channel is open under this handle */
    FD_ALREADY_INITIALISED = 3, /**< Init was called twice; or Start had to tear the handle table down */
    FD_PLATFORM_FAILED = 4,     /**< a buffer could not be had, or the accelerator refused or failed a job */
    FD_NO_CHANNEL = 6,          /**< the channel object could not be created */
    FD_INVALID_ARGUMENT = 7,    /**< null handle pointer, bad region, bad grade, refused frame, bad handle for Stop */
    FD_NO_FREE_HANDLE = 8,      /**< all 128 channels are open */
    FD_BAD_HANDLE = 9           /**< handle outside 0..127, for SetFrame and SetSensitiveGrade */
};

/** Pixel format of a frame: a 32-bit word in which C++ allows any value, so that a wrong one can be refused. */
#ifdef __cplusplus
enum fd_pixel_format : unsigned int {
#else
typedef enum fd_pixel_format {
#endif
    FD_PIXEL_FORMAT_YUV420SP = 0, /**< NV21: luma plane, then interleaved V,U pairs. The only format accepted. */
    FD_PIXEL_FORMAT_FORCE_32BIT = 0x7fffffff /**< not a format; keeps the enumeration 32 bits wide */
#ifdef __cplusplus
};
#else
} fd_pixel_format;
#endif

/**
 * An image in memory that belongs to somebody else. The record never owns pixels; copying it copies the view.
 * Fill planes 0 and 1 and set plane 2 to zero.
 */
typedef struct fd_yuv_frame {
    fd_pixel_format format;      /**< FD_PIXEL_FORMAT_YUV420SP */
    uint32_t width;              /**< pixels, 1 to 352 */
    uint32_t height;             /**< rows, 1 to 288 */
    uint32_t phys_addr[3];       /**< bus addresses of the planes for the accelerator; 0 where there is none */
    int32_t reserved;            /**< opaque, never read; -1 by custom */
    unsigned char* virt_addr[3]; /**< the same planes for the processor; planes 0 and 1 must not be null */
    uint32_t stride[3];          /**< bytes from one row to the next; stride[1] must equal stride[0] */
} fd_yuv_frame;

/**
 * A rectangle. Each value carries the size of the picture in whose units it is given, so a region may be in pixels of
 * any picture size or, say, in per mille: x lies at x / x_ref of the width, and so on. On a frame of W x H pixels it
 * becomes x * W / x_ref, y * H / y_ref, width * W / width_ref, height * H / height_ref, rounded down.
 * Boxes in a result have the size of the frame in which they were found as reference, so their values are plain pixels
 * of that frame. A box that is held over a change of the frame size keeps the old size as reference.
 */
typedef struct fd_rect {
    uint16_t x;          /**< left edge */
    uint16_t x_ref;      /**< picture width in the units of x */
    uint16_t y;          /**< top edge */
    uint16_t y_ref;      /**< picture height in the units of y */
    uint16_t width;      /**< width */
    uint16_t width_ref;  /**< picture width in the units of width */
    uint16_t height;     /**< height */
    uint16_t height_ref; /**< picture height in the units of height */
} fd_rect;

/** The answer for one frame. Read the first `count` boxes only; what lies behind them is left over from before. */
typedef struct fd_result {
    fd_rect rects[FD_RESULT_MAX_RECTS]; /**< boxes where fire is seen, in pixels of a frame of x_ref by y_ref */
    uint16_t count;                     /**< valid boxes at the front of rects, 0 to 10 */
} fd_result;

/**
 * Initialises the library: handle table and lookup tables. Call once before anything else; again after UnInit is fine.
 * @return FD_OK; FD_ALREADY_INITIALISED if it is initialised (nothing changes).
 * @note Not while any other call runs.
 */
ORVA_FD_API int ORVA_FireDetection_Init(void);

/**
 * Stops every open channel and closes the handle table. Afterwards every function but Init returns FD_NOT_INITIALISED.
 * A process that exits without calling it is cleaned up by the library's exit handler.
 * @return FD_OK; FD_NOT_INITIALISED if there is nothing to tear down.
 * @note Not while any other call runs.
 */
ORVA_FD_API int ORVA_FireDetection_UnInit(void);

/**
 * Opens a channel on a region of the picture and writes its handle, the lowest free one, to *handle.
 * Obtains the channel's memory (see MEMORY). A new channel has the default sensitivity of grades 68 to 73.
 * @param handle not null; written on success only.
 * @param rect by value, copied. All four references non-zero. In 16.16 fixed point, computed with truncating division:
 *   x / x_ref below 1, width / width_ref above 0, their sum at most 1; the same for y and height. Values of 32768 and
 *   more are refused. The whole picture is {0, 1, 0, 1, 1, 1, 1, 1}.
 * @return FD_OK;
 *   FD_NOT_INITIALISED;
 *   FD_INVALID_ARGUMENT if handle is null or the region breaks the rule above;
 *   FD_PLATFORM_FAILED if a working picture could not be had (everything obtained is released);
 *   FD_NO_CHANNEL if the channel object could not be created;
 *   FD_NO_FREE_HANDLE if 128 channels are open;
 *   FD_ALREADY_INITIALISED if the new handle's lock was found in use: an inner fault, after which the handle table is
 *   closed and the host should call Stop for each of its handles, then UnInit and Init.
 * @note May throw std::bad_alloc (see EXCEPTIONS). Any thread.
 */
ORVA_FD_API int ORVA_FireDetection_Start(int* handle, fd_rect rect);

/**
 * Closes a channel and releases its memory. Waits for a frame in progress on the same channel.
 * @param handle 0 to 127.
 * @return FD_OK, also for a handle of 0..127 that is not open (which prints warnings);
 *   FD_NOT_INITIALISED;
 *   FD_INVALID_ARGUMENT if handle is outside 0..127.
 * @note Any thread, but not while another thread may still call into this handle.
 */
ORVA_FD_API int ORVA_FireDetection_Stop(int handle);

/**
 * Processes one frame on a channel and fills *result with the boxes that are reported for it.
 * @param handle of an open channel.
 * @param frame by value; its pictures are read during the call only (see PICTURES and WHICH BYTES ARE READ). The frame
 *   size may change from call to call; the region follows it. Each change rounds and widens the region from its last
 *   pixels, so it does not come back exactly; a host that needs that opens a new channel. phys_addr is read in builds
 *   with the accelerator only.
 * @param result owned by the host, not checked for null. Written as a whole on success. After FD_INVALID_ARGUMENT,
 *   FD_NOT_IN_USE, FD_BAD_HANDLE, FD_NOT_INITIALISED and FD_PLATFORM_FAILED it is as it was.
 * @return FD_OK;
 *   FD_NOT_INITIALISED;
 *   FD_BAD_HANDLE if handle is outside 0..127;
 *   FD_NOT_IN_USE if no channel is open under it;
 *   FD_INVALID_ARGUMENT, with every state of the channel unchanged, if format is not FD_PIXEL_FORMAT_YUV420SP, width is
 *   above 352 or height above 288, virt_addr[0] or virt_addr[1] is null, or the channel's region cannot be placed on
 *   the frame: scaled to it and widened, it has no column or no row, or reaches beyond the frame's size rounded up to
 *   even;
 *   FD_PLATFORM_FAILED if the accelerator refused or failed a job (see BUILDS WITH THE ACCELERATOR). The next frame
 *   is processed normally.
 * @note May throw std::bad_alloc (see EXCEPTIONS). Any thread; calls on one handle wait for each other.
 */
ORVA_FD_API int ORVA_FireDetection_SetFrame(int handle, fd_yuv_frame frame, fd_result* result);

/**
 * Sets a channel's sensitivity, from its next frame on. A place is reported when it was seen in at least N of the last
 * 50 frames that had moving fire colour, N = (103 - grade) / 6 + 30 rounded down: 47 for grade 0, 30 for grade 100.
 * A new channel has N = 35, the value of grades 68 to 73.
 * @param handle of an open channel.
 * @param grade 0 to 100.
 * @return FD_OK;
 *   FD_NOT_INITIALISED;
 *   FD_BAD_HANDLE if handle is outside 0..127;
 *   FD_NOT_IN_USE if no channel is open under it;
 *   FD_INVALID_ARGUMENT if grade is outside 0..100 (the old value stays).
 * @note Any thread; waits for a frame in progress on the same channel.
 */
ORVA_FD_API int ORVA_FireDetection_SetSensitiveGrade(int handle, int grade);

#ifdef __cplusplus
}
#endif

/* The layout that host and library share, checked where it is declared. */
#if defined(__cplusplus)
#define ORVA_FD_LAYOUT(name, condition) static_assert(condition, #name)
#else
#define ORVA_FD_LAYOUT(name, condition) typedef char orva_fd_layout_##name[(condition) ? 1 : -1]
#endif
ORVA_FD_LAYOUT(format_is_32_bits, sizeof(fd_pixel_format) == 4);
ORVA_FD_LAYOUT(rect_is_8_halfwords, sizeof(fd_rect) == 16 && offsetof(fd_rect, height_ref) == 14);
ORVA_FD_LAYOUT(result_is_162_bytes, sizeof(fd_result) == 162 && offsetof(fd_result, count) == 160);
ORVA_FD_LAYOUT(frame_head, offsetof(fd_yuv_frame, width) == 4 && offsetof(fd_yuv_frame, height) == 8 &&
                               offsetof(fd_yuv_frame, phys_addr) == 12 && offsetof(fd_yuv_frame, reserved) == 24);
ORVA_FD_LAYOUT(frame_pointers, offsetof(fd_yuv_frame, virt_addr) == (sizeof(void*) == 4 ? 28 : 32));
ORVA_FD_LAYOUT(frame_strides, offsetof(fd_yuv_frame, stride) == (sizeof(void*) == 4 ? 40 : 56));
ORVA_FD_LAYOUT(frame_size, sizeof(fd_yuv_frame) == (sizeof(void*) == 4 ? 52 : 72));
#undef ORVA_FD_LAYOUT

#endif
