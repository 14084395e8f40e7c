#include "tests/fakes/channel_pair.h"

#include <cstddef>
#include <cstring>
#include <stdexcept>

#include "preprocess/CYuv420_Rgb.h"
#include "tests/support/capture.h"
#include "tests/support/test_access.h"

namespace fakes {

namespace {

using orva_fd::test_access;

// "" or where the processor's copy of a buffer differs from the twin's, row padding included.
std::string difference(const char* name, const orva_fd::hisi_mmz_mem& memory, const twin::cached_memory& wanted) {
    const auto* got = static_cast<const unsigned char*>(memory.virt_addr());
    const std::vector<unsigned char>& bytes = wanted.processor_bytes();
    if (std::memcmp(got, bytes.data(), bytes.size()) == 0) return "";
    std::size_t at = 0;
    while (got[at] == bytes[at]) ++at;
    return std::string(name) + " image, byte " + std::to_string(at) + " (row " + std::to_string(at / 352) +
           ", column " + std::to_string(at % 352) + "): got " + std::to_string(got[at]) + ", wanted " +
           std::to_string(bytes[at]);
}

// The boxes that count; what lies behind them is compared too, as the whole record is copied.
bool same(const fd_result& a, const fd_result& b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

}  // namespace

void pair_totals::add(const pair_totals& other) {
    frames += other.frames;
    with_boxes += other.with_boxes;
    refused += other.refused;
    engine_operations += other.engine_operations;
    software_operations += other.software_operations;
    both_ways += other.both_ways;
}

std::string pair_totals::text() const {
    return std::to_string(frames) + " frames compared, " + std::to_string(with_boxes) + " with boxes, " +
           std::to_string(refused) + " refused by the chip, " + std::to_string(engine_operations) +
           " operations on the engine, " + std::to_string(software_operations) + " in software, " +
           std::to_string(both_ways) + " frames with both";
}

channel_pair::channel_pair(const fd_rect& region) {
    orva_fd::fd_table::init();
    orva_fd::CYuv420_Rgb::init();
    orva_fd::pre_process::init();
    if (m_channel.start(region) != 0) throw std::runtime_error("the channel did not start");
    const std::size_t phase = test_access::diff_mem(test_access::stage(m_channel)).phys_addr() % 32;
    m_twin = new twin::accelerated_channel(m_log, region, phase);
}

channel_pair::~channel_pair() {
    m_channel.stop();
    delete m_twin;
}

void channel_pair::set_sensitive(int grade) {
    m_channel.set_sensitive(grade);
    m_twin->set_sensitive(grade);
}

std::string channel_pair::image_difference() {
    orva_fd::pre_process& stage = test_access::stage(m_channel);
    twin::accelerated_stage& wanted = m_twin->stage();
    std::string text = difference("foreground", test_access::fg_mem(stage), wanted.foreground());
    if (text.empty()) text = difference("difference", test_access::diff_mem(stage), wanted.difference());
    if (text.empty()) text = difference("rgb", test_access::rgb_mem(stage), wanted.rgb());
    return text;
}

std::string channel_pair::compare(const fd_yuv_frame& frame) {
    fd_yuv_frame copy = frame;
    const support::outcome got = support::outcome_of([&] { return m_channel.set_frame(copy, m_result); });
    m_code = got.status;
    m_text = got.text;
    const pair_totals before = totals();
    const int wanted = m_twin->set_frame(frame, m_twin_result);
    const std::string wanted_text = m_log.take_text();
    const pair_totals after = totals();
    const bool both =
        after.engine_operations > before.engine_operations && after.software_operations > before.software_operations;
    if (both) ++m_totals.both_ways;
    ++m_totals.frames;
    if (m_code == 4) ++m_totals.refused;
    if (m_code == 0 && m_result.count != 0) ++m_totals.with_boxes;
    if (m_code != wanted) return "code " + std::to_string(m_code) + ", wanted " + std::to_string(wanted);
    if (m_text != wanted_text) return "lines:\n" + m_text + "wanted:\n" + wanted_text;
    if (!same(m_result, m_twin_result))
        return "results differ: " + std::to_string(m_result.count) + " boxes, wanted " +
               std::to_string(m_twin_result.count);
    return image_difference();
}

pair_totals channel_pair::totals() {
    m_totals.engine_operations = m_twin->stage().engine_operations();
    m_totals.software_operations = m_twin->stage().software_operations();
    return m_totals;
}

}  // namespace fakes
