#!/usr/bin/env python3
"""A host in Python: the smallest host once more, by ctypes, records passed by value.

find_fire.py [LIBRARY]    LIBRARY is liborva_fd.so.1 where it is not installed.
"""
import ctypes
import sys

WIDTH, HEIGHT, STRIDE, FRAMES = 176, 144, 176, 70
U8, U16, U32 = ctypes.c_ubyte, ctypes.c_uint16, ctypes.c_uint32


class Rect(ctypes.Structure):
    _fields_ = [(name, U16) for name in ("x", "x_ref", "y", "y_ref", "width", "width_ref", "height", "height_ref")]


class Result(ctypes.Structure):
    _fields_ = [("rects", Rect * 10), ("count", U16)]


class Frame(ctypes.Structure):
    _fields_ = [("format", U32), ("width", U32), ("height", U32), ("phys_addr", U32 * 3), ("reserved", ctypes.c_int32),
                ("virt_addr", ctypes.POINTER(U8) * 3), ("stride", U32 * 3)]


def load(name):
    """The library with the types of its functions, which ctypes cannot read from the header."""
    library = ctypes.CDLL(name)
    library.ORVA_FireDetection_Start.argtypes = [ctypes.POINTER(ctypes.c_int), Rect]
    library.ORVA_FireDetection_SetFrame.argtypes = [ctypes.c_int, Frame, ctypes.POINTER(Result)]
    return library


def check(code):
    if code != 0:
        raise RuntimeError(f"the library answered {code}")


def draw(picture, frame):
    """A dark room with a flame that changes its height from frame to frame. NV21, both planes in one block."""
    chroma = STRIDE * HEIGHT
    picture[:chroma] = bytes([60]) * chroma
    picture[chroma:] = bytes([128]) * (len(picture) - chroma)
    for y in range(45 + (frame * 17) % 40, 100):
        row = bytes(150 + (frame * 31 + x * 7 + y * 13) % 80 for x in range(80, 104))
        picture[y * STRIDE + 80:y * STRIDE + 104] = row
        picture[chroma + y // 2 * STRIDE + 80:chroma + y // 2 * STRIDE + 104] = bytes([150, 90]) * 12  # V, U


def main():
    library = load(sys.argv[1] if len(sys.argv) > 1 else "liborva_fd.so.1")
    picture = bytearray(STRIDE * (HEIGHT + HEIGHT // 2 + 1))  # one row to spare
    luma = (U8 * len(picture)).from_buffer(picture)
    planes = [ctypes.cast(ctypes.byref(luma, at), ctypes.POINTER(U8)) for at in (0, STRIDE * HEIGHT)]
    frame = Frame(0, WIDTH, HEIGHT, (0, 0, 0), -1, (ctypes.POINTER(U8) * 3)(*planes), (STRIDE, STRIDE, 0))
    handle, result = ctypes.c_int(), Result()
    check(library.ORVA_FireDetection_Init())
    check(library.ORVA_FireDetection_Start(ctypes.byref(handle), Rect(0, 1, 0, 1, 1, 1, 1, 1)))
    for number in range(FRAMES):
        draw(picture, number)
        check(library.ORVA_FireDetection_SetFrame(handle, frame, ctypes.byref(result)))
        if result.count > 0 and number % 10 == 0:
            box = result.rects[0]
            print(f"frame {number}: fire at x {box.x}, y {box.y}, width {box.width}, height {box.height}")
    check(library.ORVA_FireDetection_Stop(handle))
    check(library.ORVA_FireDetection_UnInit())


if __name__ == "__main__":
    main()
