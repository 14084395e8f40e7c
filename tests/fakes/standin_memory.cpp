#include "tests/fakes/standin_memory.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>

namespace standin {

namespace {

const HI_U32 k_first_address = 0xC8000000u;
const HI_U32 k_last_address = 0xF8000000u;
const std::size_t k_line = 32;
const std::size_t k_stretch = 128;  // lines that are looked at together first
const std::size_t k_gap = 4096;     // between buffers, so that no overrun finds a neighbour
const unsigned char k_processor_rubbish = 0xCC;
const unsigned char k_engine_rubbish = 0xDD;

// Whether a made-up range would pass for a range of pointers.
bool looks_like_pointer(HI_U32 phys_addr, std::size_t bytes, const unsigned char* processor) {
    const std::uintptr_t first = reinterpret_cast<std::uintptr_t>(processor);
    const std::uintptr_t made_up = phys_addr;
    return made_up < first + bytes && first < made_up + bytes;
}

}  // namespace

bool memory_map::is_taken(HI_U32 phys_addr, std::size_t bytes) const {
    return std::any_of(m_blocks.begin(), m_blocks.end(), [&](const auto& entry) {
        return phys_addr < entry.first + entry.second.bytes && entry.first < phys_addr + bytes;
    });
}

// The next address that nothing has had; after a long time they come round again.
HI_U32 memory_map::free_address(std::size_t bytes, const unsigned char* processor) {
    for (;;) {
        if (m_next < k_first_address || m_next > k_last_address) m_next = k_first_address;
        const HI_U32 address = (m_next / (2 * m_alignment) + 1) * 2 * m_alignment + m_alignment;
        m_next = address + static_cast<HI_U32>(bytes + k_gap);
        if (!looks_like_pointer(address, bytes, processor) && !is_taken(address, bytes)) return address;
    }
}

HI_U32 memory_map::allocate(std::size_t bytes, bool cached, void** virt_addr) {
    block fresh;
    fresh.bytes = bytes;
    fresh.cached = cached;
    fresh.owned.assign(bytes, cached ? k_processor_rubbish : k_engine_rubbish);
    fresh.processor = fresh.owned.data();
    if (cached) {
        fresh.engine.assign(bytes, k_engine_rubbish);
        fresh.known = fresh.owned;
    }
    *virt_addr = fresh.processor;
    const HI_U32 address = free_address(bytes, fresh.processor);
    m_blocks[address] = std::move(fresh);
    return address;
}

HI_U32 memory_map::register_frame(void* memory, std::size_t bytes) {
    block fresh;
    fresh.bytes = bytes;
    fresh.frame = true;
    fresh.processor = static_cast<unsigned char*>(memory);
    const HI_U32 address = free_address(bytes, fresh.processor);
    m_blocks[address] = std::move(fresh);
    return address;
}

void memory_map::unregister_frame(void* memory) {
    for (auto it = m_blocks.begin(); it != m_blocks.end();) {
        it = it->second.frame && it->second.processor == memory ? m_blocks.erase(it) : std::next(it);
    }
}

memory_map::blocks::iterator memory_map::block_at(HI_U32 phys_addr, std::size_t bytes) {
    auto after = m_blocks.upper_bound(phys_addr);
    if (after == m_blocks.begin()) return m_blocks.end();
    const auto it = std::prev(after);
    const std::size_t offset = phys_addr - it->first;
    return offset + bytes <= it->second.bytes ? it : m_blocks.end();
}

bool memory_map::release(HI_U32 phys_addr, const void* virt_addr) {
    const auto it = m_blocks.find(phys_addr);
    if (it == m_blocks.end() || it->second.frame || it->second.processor != virt_addr) return false;
    m_blocks.erase(it);
    return true;
}

// Whether neither side changed these bytes, as most of a small picture's memory is.
bool memory_map::is_settled(const block& where, std::size_t from, std::size_t to) {
    const auto first = static_cast<std::ptrdiff_t>(from);
    return std::memcmp(where.processor + first, where.known.data() + first, to - from) == 0 &&
           std::memcmp(where.processor + first, where.engine.data() + first, to - from) == 0;
}

void memory_map::flush_line(block& where, std::size_t from, std::size_t to) {
    const auto first = static_cast<std::ptrdiff_t>(from);
    const std::size_t bytes = to - from;
    if (std::memcmp(where.processor + first, where.known.data() + first, bytes) != 0) {
        std::memcpy(where.engine.data() + first, where.processor + first, bytes);
    } else {
        std::memcpy(where.processor + first, where.engine.data() + first, bytes);
    }
    std::memcpy(where.known.data() + first, where.processor + first, bytes);
}

bool memory_map::flush(HI_U32 phys_addr, const void* virt_addr, std::size_t length) {
    const auto it = block_at(phys_addr, length);
    if (it == m_blocks.end()) return false;
    block& where = it->second;
    const std::size_t offset = phys_addr - it->first;
    if (where.processor + offset != virt_addr) return false;
    if (!where.cached) return true;
    // Lines lie at multiples of 32 of the physical address, so the first and the last may stick out of the buffer.
    const std::size_t phase = it->first % k_line;
    const std::size_t first_line = (offset + phase) / k_line;
    const std::size_t last_line = (offset + length - 1 + phase) / k_line;
    const auto begin_of = [&](std::size_t line) { return line * k_line < phase ? 0 : line * k_line - phase; };
    const auto end_of = [&](std::size_t line) { return std::min((line + 1) * k_line - phase, where.bytes); };
    for (std::size_t line = first_line; line <= last_line; line += k_stretch) {
        const std::size_t last = std::min(line + k_stretch - 1, last_line);
        if (is_settled(where, begin_of(line), end_of(last))) continue;
        for (std::size_t one = line; one <= last; ++one) flush_line(where, begin_of(one), end_of(one));
    }
    return true;
}

unsigned char* memory_map::engine_at(HI_U32 phys_addr, std::size_t bytes) {
    const auto it = block_at(phys_addr, bytes);
    if (it == m_blocks.end()) return nullptr;
    block& where = it->second;
    return (where.cached ? where.engine.data() : where.processor) + (phys_addr - it->first);
}

int memory_map::live_buffers() const {
    return static_cast<int>(
        std::count_if(m_blocks.begin(), m_blocks.end(), [](const auto& entry) { return !entry.second.frame; }));
}

}  // namespace standin
