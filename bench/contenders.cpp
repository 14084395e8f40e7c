#include "bench/contenders.h"

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "bench/scenes.h"

namespace bench {

namespace {

class six_function_contender : public contender {
public:
    six_function_contender(const std::string& name, const six_functions& functions)
        : contender(name), m_functions(functions) {
        m_functions.init();
    }
    ~six_function_contender() override { m_functions.uninit(); }

    int open() override {
        int handle = -1;
        if (m_functions.start(&handle, whole_picture()) != FD_OK) {
            std::fprintf(stderr, "%s: no channel could be opened\n", name().c_str());
            std::exit(1);
        }
        return handle;
    }
    void close(int handle) override { m_functions.stop(handle); }
    int play(int handle, const fd_yuv_frame& frame, fd_result* result) override {
        return m_functions.set_frame(handle, frame, result);
    }
    bool watch_stages(stage_hook hook) override {
        if (m_functions.watch_stages == nullptr) return false;
        m_functions.watch_stages(hook);
        return true;
    }

private:
    six_functions m_functions;
};

template <typename function>
void look_up(void* library, const char* name, function* result) {
    void* address = dlsym(library, name);
    if (address == nullptr) {
        std::fprintf(stderr, "the library has no %s\n", name);
        std::exit(1);
    }
    std::memcpy(result, &address, sizeof(address));
}

}  // namespace

six_functions load_library(const std::string& path) {
    // A bare file name would be looked for where the system keeps its libraries.
    const std::string place = path.find('/') == std::string::npos ? "./" + path : path;
    void* library = dlopen(place.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        std::fprintf(stderr, "%s\n", dlerror());
        std::exit(1);
    }
    six_functions functions = {};
    look_up(library, "ORVA_FireDetection_Init", &functions.init);
    look_up(library, "ORVA_FireDetection_UnInit", &functions.uninit);
    look_up(library, "ORVA_FireDetection_Start", &functions.start);
    look_up(library, "ORVA_FireDetection_Stop", &functions.stop);
    look_up(library, "ORVA_FireDetection_SetFrame", &functions.set_frame);
    look_up(library, "ORVA_FireDetection_SetSensitiveGrade", &functions.set_grade);
    return functions;
}

std::unique_ptr<contender> make_contender(const std::string& name, const six_functions& functions) {
    return std::unique_ptr<contender>(new six_function_contender(name, functions));
}

}  // namespace bench
