// A contender of this program's own channels, which tell when each of their stages ends.
#ifndef ORVA_BENCH_STAGED_CONTENDER_H
#define ORVA_BENCH_STAGED_CONTENDER_H

#include <map>
#include <memory>
#include <string>

#include "bench/contenders.h"

namespace bench {

// channel: default-constructible, with set_frame(frame, result). It tells the hook that watcher points to, if any.
template <class channel>
class staged_contender : public contender {
public:
    staged_contender(const std::string& name, stage_hook* watcher) : contender(name), m_watcher(watcher) {}

    int open() override {
        m_channels[m_next].reset(new channel);
        return m_next++;
    }
    void close(int handle) override { m_channels.erase(handle); }
    int play(int handle, const fd_yuv_frame& frame, fd_result* result) override {
        m_channels[handle]->set_frame(frame, result);
        return FD_OK;
    }
    bool watch_stages(stage_hook hook) override {
        *m_watcher = hook;
        return true;
    }

private:
    stage_hook* m_watcher;
    std::map<int, std::unique_ptr<channel>> m_channels;
    int m_next = 0;
};

}  // namespace bench

#endif
