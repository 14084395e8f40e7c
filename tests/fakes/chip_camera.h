// A camera whose pictures the engine knows, as video hardware's: not cached.
#ifndef ORVA_TESTS_FAKES_CHIP_CAMERA_H
#define ORVA_TESTS_FAKES_CHIP_CAMERA_H

#include "tests/fakes/camera.h"
#include "tests/fakes/standin.h"

namespace fakes {

class chip_camera : public camera {
public:
    chip_camera(int width, int height, int stride, int shift, std::uint32_t seed)
        : camera(width, height, stride, shift, seed) {
        m_phys_addr = standin::register_frame(bytes().data(), bytes().size());
    }
    ~chip_camera() { standin::unregister_frame(bytes().data()); }
};

}  // namespace fakes

#endif
