#include "apps/orva_fire/pipe_input.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <new>

#include "apps/orva_fire/stop_signal.h"

extern "C" {
#include <libavutil/mem.h>
}

namespace orva_fire {
namespace {

const int k_buffer_bytes = 64 * 1024;
const int k_look_around_milliseconds = 200;

class pipe_input {
public:
    explicit pipe_input(int descriptor) : m_descriptor(descriptor) {
        auto* buffer = static_cast<uint8_t*>(av_malloc(static_cast<size_t>(k_buffer_bytes)));
        m_context = avio_alloc_context(buffer, k_buffer_bytes, 0, this, read_some, nullptr, nullptr);
        if (!m_context) throw std::bad_alloc();
    }
    ~pipe_input() {
        av_freep(&m_context->buffer);
        avio_context_free(&m_context);
    }
    pipe_input(const pipe_input&) = delete;
    pipe_input& operator=(const pipe_input&) = delete;

    void attach(AVFormatContext& input) {
        input.pb = m_context;
        input.flags |= AVFMT_FLAG_CUSTOM_IO;
        m_asked = &input;
    }

private:
    bool interrupted() const {
        if (stop_wanted()) return true;
        const AVIOInterruptCB& asked = m_asked->interrupt_callback;
        return asked.callback && asked.callback(asked.opaque);
    }

    static int read_some(void* self, uint8_t* buffer, int size) {
        const auto* input = static_cast<pipe_input*>(self);
        while (!input->interrupted()) {
            pollfd waiting = {input->m_descriptor, POLLIN, 0};
            const int ready = poll(&waiting, 1, k_look_around_milliseconds);
            if (ready == 0 || (ready < 0 && errno == EINTR)) continue;
            if (ready < 0) return AVERROR(errno);
            const ssize_t got = read(input->m_descriptor, buffer, static_cast<size_t>(size));
            if (got > 0) return static_cast<int>(got);
            if (got == 0) return AVERROR_EOF;
            if (errno != EINTR && errno != EAGAIN) return AVERROR(errno);
        }
        return AVERROR_EXIT;
    }

    const int m_descriptor;
    AVIOContext* m_context = nullptr;
    AVFormatContext* m_asked = nullptr;
};

}  // namespace

input_address pipe_address(int descriptor, const std::string& name) {
    // Shared by the copies of the address; the last of them lives as long as the stream that reads from it.
    const auto input = std::make_shared<pipe_input>(descriptor);
    input_address address;
    address.name = name;
    address.prepare = [input](AVFormatContext& context) { input->attach(context); };
    return address;
}

}  // namespace orva_fire
