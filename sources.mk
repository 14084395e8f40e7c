# The library's sources, for the CMake build (which reads the lists) and for plain make (below).
ORVA_FD_SOURCES := \
    api/FireDetection_Api.cpp \
    api/GlobalObject.cpp \
    manager/FireDetectionManager.cpp \
    manager/Handledispather.cpp \
    manager/Mutex.cpp \
    channel/foreground_analysis.cpp \
    channel/frame_process.cpp \
    preprocess/CYuv420_Rgb.cpp \
    preprocess/pre_process.cpp \
    backend/hisi_ive_func.cpp \
    backend/hisi_mmz_mem.cpp \
    imgproc/bwlabel_ccl.cpp \
    imgproc/common.cpp \
    imgproc/morphology.cpp

# Without an accelerator, buffers come from ordinary memory.
ORVA_FD_HEAP_SOURCES := \
    backend/memory_zone_heap.cpp
