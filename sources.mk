# The library's sources, for the CMake build (which reads the lists) and for plain make (below).
ORVA_FD_SOURCES := \
    api/FireDetection_Api.cpp \
    api/GlobalObject.cpp \
    manager/FireDetectionManager.cpp \
    manager/Handledispather.cpp \
    manager/Mutex.cpp \
    channel/box_merger.cpp \
    channel/foreground_analysis.cpp \
    channel/frame_process.cpp \
    preprocess/CYuv420_Rgb.cpp \
    preprocess/pre_process.cpp \
    preprocess/region_scan.cpp \
    preprocess/region_scan_scalar.cpp \
    backend/hisi_ive_func.cpp \
    backend/hisi_mmz_mem.cpp \
    imgproc/bwlabel_ccl.cpp \
    imgproc/common.cpp \
    imgproc/morphology.cpp

# Where most of the time goes, compiled with -O3 (which vectorises); -O2 does the rest in less space.
ORVA_FD_ROW_SOURCES := \
    channel/box_rows.cpp \
    imgproc/rows.cpp \
    imgproc/rows_scalar.cpp \
    imgproc/run_labeller.cpp \
    preprocess/color_rows.cpp \
    preprocess/color_rows_scalar.cpp

# Without an accelerator, buffers come from ordinary memory.
ORVA_FD_HEAP_SOURCES := \
    backend/memory_zone_heap.cpp

# The chip's accelerator and memory zone.
ORVA_FD_IVE_SOURCES := \
    backend/hisi_ive_accel.cpp \
    backend/memory_zone_mmz.cpp

# ---------------------------------------------------------------------------------------------------------------------
# The rest is for plain make, without CMake:
#
#   make -f sources.mk CROSS_COMPILE=arm-linux-gnueabi- [ORVA_IVE=OFF|STANDIN|SDK] [-j4]
#
# gives OUT/liborva_fd.a and OUT/liborva_fd.so (with its SONAME, exporting the six functions).
#   OUT              folder of the results; default out
#   CPU_FLAGS        what the maker's own programs are compiled with; must be the same here, see docs/porting.md
#   ORVA_SDK_INCLUDE folder of the vendor's headers, with ORVA_IVE=SDK; the libraries are linked with the program
# ---------------------------------------------------------------------------------------------------------------------
ORVA_IVE ?= OFF
OUT ?= out
CPU_FLAGS ?=
CXXFLAGS ?= -O2
ORVA_CXX := $(CROSS_COMPILE)$(if $(filter default undefined,$(origin CXX)),g++,$(CXX))
ORVA_AR := $(CROSS_COMPILE)$(if $(filter default undefined,$(origin AR)),ar,$(AR))
ORVA_ROOT := $(patsubst %/,%,$(dir $(lastword $(MAKEFILE_LIST))))

ifeq ($(filter OFF STANDIN SDK,$(ORVA_IVE)),)
$(error ORVA_IVE is '$(ORVA_IVE)'; it must be OFF, STANDIN or SDK)
endif
ifeq ($(ORVA_IVE),OFF)
ORVA_SEAM_SOURCES := $(ORVA_FD_HEAP_SOURCES)
ORVA_SEAM_FLAGS :=
else
ORVA_SEAM_SOURCES := $(ORVA_FD_IVE_SOURCES)
ORVA_SEAM_FLAGS := -DORVA_IVE_ENABLED=1
endif
ifeq ($(ORVA_IVE),SDK)
ifeq ($(wildcard $(ORVA_SDK_INCLUDE)/mpi_ive.h),)
$(error ORVA_SDK_INCLUDE: no mpi_ive.h in '$(ORVA_SDK_INCLUDE)')
endif
ORVA_SEAM_FLAGS += -DORVA_IVE_VENDOR_HEADERS=1 -isystem $(ORVA_SDK_INCLUDE)
endif

ORVA_MAJOR := $(shell sed -n 's/^.define ORVA_FD_VERSION_MAJOR *//p' $(ORVA_ROOT)/include/ORVA_FireDetection.h)
ORVA_FLAGS := -std=c++11 -fPIC -fvisibility=hidden -fvisibility-inlines-hidden -ffp-contract=off -pthread \
    -Wall -Wextra -I$(ORVA_ROOT) -I$(ORVA_ROOT)/include $(ORVA_SEAM_FLAGS) $(CPU_FLAGS)
ORVA_OBJECT_DIR := $(OUT)/objects
ORVA_ROW_OBJECTS := $(patsubst %.cpp,$(ORVA_OBJECT_DIR)/%.o,$(ORVA_FD_ROW_SOURCES))
ORVA_OBJECTS := $(patsubst %.cpp,$(ORVA_OBJECT_DIR)/%.o,$(ORVA_FD_SOURCES) $(ORVA_FD_ROW_SOURCES) $(ORVA_SEAM_SOURCES))

# What the results were built with. The file is rewritten only when one of these changed, and all is built anew then: an
# object of another processor, or a library with another back end, must not pass for one of this build.
ORVA_SETTINGS_FILE := $(OUT)/settings
ORVA_SETTINGS := $(ORVA_IVE) $(ORVA_CXX) $(ORVA_AR) $(ORVA_FLAGS) $(CXXFLAGS) $(LDFLAGS) $(ORVA_OBJECTS)
ORVA_QUOTE := '
ORVA_QUOTED_SETTINGS := '$(subst $(ORVA_QUOTE),'\'',$(ORVA_SETTINGS))'

.PHONY: all clean print-sources FORCE
all: $(OUT)/liborva_fd.a $(OUT)/liborva_fd.so

$(ORVA_ROW_OBJECTS): ORVA_ROW_FLAGS := -O3

$(ORVA_SETTINGS_FILE): FORCE
	@mkdir -p $(@D)
	@printf '%s\n' $(ORVA_QUOTED_SETTINGS) | cmp -s - $@ || printf '%s\n' $(ORVA_QUOTED_SETTINGS) > $@

$(ORVA_OBJECT_DIR)/%.o: $(ORVA_ROOT)/%.cpp $(ORVA_SETTINGS_FILE)
	@mkdir -p $(@D)
	$(ORVA_CXX) $(ORVA_FLAGS) $(CXXFLAGS) $(ORVA_ROW_FLAGS) -MMD -MP -c $< -o $@

$(OUT)/liborva_fd.a: $(ORVA_OBJECTS) $(ORVA_SETTINGS_FILE)
	rm -f $@
	$(ORVA_AR) rcs $@ $(ORVA_OBJECTS)

# Vendor symbols stay open here: the program that loads the library links the vendor's libraries.
$(OUT)/liborva_fd.so: $(ORVA_OBJECTS) $(ORVA_SETTINGS_FILE) $(ORVA_ROOT)/cmake/orva_fd.map
	$(ORVA_CXX) $(CPU_FLAGS) -shared -pthread -Wl,-soname,liborva_fd.so.$(ORVA_MAJOR) \
	    -Wl,--version-script=$(ORVA_ROOT)/cmake/orva_fd.map $(LDFLAGS) $(ORVA_OBJECTS) -o $@.$(ORVA_MAJOR)
	ln -sf liborva_fd.so.$(ORVA_MAJOR) $@

clean:
	rm -rf $(ORVA_OBJECT_DIR) $(ORVA_SETTINGS_FILE) $(OUT)/liborva_fd.a $(OUT)/liborva_fd.so*

# The sources of the chosen build, for scripts.
print-sources:
	@echo $(ORVA_FD_SOURCES) $(ORVA_FD_ROW_SOURCES) $(ORVA_SEAM_SOURCES)

-include $(ORVA_OBJECTS:.o=.d)
