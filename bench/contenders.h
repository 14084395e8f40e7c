// Who plays the scenes: any library given by path, the plain text in two builds, and the chain of OpenCV's calls.
#ifndef ORVA_BENCH_CONTENDERS_H
#define ORVA_BENCH_CONTENDERS_H

#include <memory>
#include <string>
#include <vector>

#include "bench/six_functions.h"

namespace bench {

// One way to process frames. One thread at a time.
class contender {
public:
    explicit contender(const std::string& name) : m_name(name) {}
    virtual ~contender() {}
    const std::string& name() const { return m_name; }

    // Opens a channel on the whole picture; ends the program if that fails.
    virtual int open() = 0;
    virtual void close(int handle) = 0;
    virtual int play(int handle, const fd_yuv_frame& frame, fd_result* result) = 0;
    // False if stages cannot be told apart.
    virtual bool watch_stages(stage_hook) { return false; }

private:
    std::string m_name;
};

// The six functions of a shared library; ends the program with a message if it cannot be loaded or lacks one. The
// library stays loaded.
six_functions load_library(const std::string& path);

// Drives six functions; calls init now and uninit at the end.
std::unique_ptr<contender> make_contender(const std::string& name, const six_functions& functions);

// The chain of OpenCV's calls, or null in a build without OpenCV.
std::unique_ptr<contender> make_opencv_contender();

// The stages of this build's library, called one by one.
std::unique_ptr<contender> make_door_contender();

}  // namespace bench

#endif
