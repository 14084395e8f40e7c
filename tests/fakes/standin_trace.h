// One line of text for one vendor call, free of what differs between machines: addresses are given by buffer and
// offset, handles by the number of the job. The same lines come from the stand-in and from a chip with the shim,
// trace_shim.cpp.
#ifndef ORVA_TESTS_FAKES_STANDIN_TRACE_H
#define ORVA_TESTS_FAKES_STANDIN_TRACE_H

#include <map>
#include <string>

#include "tests/fakes/standin.h"

namespace standin {

class trace_text {
public:
    // The line, without its end. Learns names of buffers and jobs from the calls, so it must see every one.
    std::string line_of(const record& what);

private:
    std::string place(HI_U32 phys_addr) const;
    std::string image(const IVE_IMAGE_S& img) const;
    std::string data(const IVE_DATA_S& data) const;
    std::string job(IVE_HANDLE handle) const;
    std::string arguments(const record& what) const;
    std::string submission(const record& what) const;
    std::string answer(const record& what);
    void learn(const record& what);

    struct buffer {
        HI_U32 bytes;
        int number;
    };
    std::map<HI_U32, buffer> m_buffers;
    std::map<IVE_HANDLE, int> m_jobs;
    int m_buffers_seen = 0;
    int m_jobs_seen = 0;
};

}  // namespace standin

#endif
