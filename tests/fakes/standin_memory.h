// The stand-in's memory: buffers and registered frames by their made-up physical addresses, each with the engine's copy
// and the processor's.
#ifndef ORVA_TESTS_FAKES_STANDIN_MEMORY_H
#define ORVA_TESTS_FAKES_STANDIN_MEMORY_H

#include <cstddef>
#include <map>
#include <vector>

#include "backend/hisi_sdk_declarations.h"

namespace standin {

class memory_map {
public:
    // Returns the physical address and sets virt_addr.
    HI_U32 allocate(std::size_t bytes, bool cached, void** virt_addr);
    HI_U32 register_frame(void* memory, std::size_t bytes);
    void unregister_frame(void* memory);

    // Whether both addresses are those of one place in one buffer, which then is released or flushed.
    bool release(HI_U32 phys_addr, const void* virt_addr);
    bool flush(HI_U32 phys_addr, const void* virt_addr, std::size_t length);

    // The engine's bytes from phys_addr on; null unless `bytes` of them lie in one buffer.
    unsigned char* engine_at(HI_U32 phys_addr, std::size_t bytes);

    void set_alignment(HI_U32 alignment) { m_alignment = alignment; }
    int live_buffers() const;

private:
    struct block {
        std::size_t bytes = 0;
        bool cached = false;
        bool frame = false;
        unsigned char* processor = nullptr;  // where the virtual address points
        std::vector<unsigned char> owned;    // behind it, unless it is a frame
        std::vector<unsigned char> engine;   // cached only: what lies in memory
        std::vector<unsigned char> known;    // cached only: the processor's bytes after the last flush
    };
    typedef std::map<HI_U32, block> blocks;

    blocks::iterator block_at(HI_U32 phys_addr, std::size_t bytes);
    HI_U32 free_address(std::size_t bytes, const unsigned char* processor);
    bool is_taken(HI_U32 phys_addr, std::size_t bytes) const;
    static bool is_settled(const block& where, std::size_t from, std::size_t to);
    static void flush_line(block& where, std::size_t from, std::size_t to);

    blocks m_blocks;
    HI_U32 m_alignment = 16;
    HI_U32 m_next = 0;
};

}  // namespace standin

#endif
