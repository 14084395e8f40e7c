#include "apps/orva_fire/live_source.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "apps/orva_fire/error.h"
#include "apps/orva_fire/stop_signal.h"
#include "apps/orva_fire/wall_clock.h"

extern "C" {
#include <libavutil/imgutils.h>
}

namespace orva_fire {
namespace {

using namespace std::chrono_literals;

const auto k_patience_of_caller = 500ms;
const auto k_look_around = 100ms;  // how often a wait looks whether the program shall stop
const size_t k_fewest_queued = 2;

size_t bytes_of(const AVFrame& picture) {
    const int bytes =
        av_image_get_buffer_size(static_cast<AVPixelFormat>(picture.format), picture.width, picture.height, 1);
    return bytes > 0 ? static_cast<size_t>(bytes) : 0;
}

std::string seconds_text(double seconds) {
    char text[32];
    std::snprintf(text, sizeof text, "%g s", seconds);
    return text;
}

}  // namespace

live_source::live_source(const input_address& address, const live_settings& settings)
    : m_settings(settings),
      m_address(address),
      m_back_off(settings.first_pause, settings.longest_pause),
      m_start(clock::now()),
      m_given_at(m_start) {
    const auto prepare = m_address.prepare;
    m_address.prepare = [this, prepare](AVFormatContext& input) {
        if (prepare) prepare(input);
        // Everything in the libraries that waits asks this a few times a second.
        input.interrupt_callback.opaque = this;
        input.interrupt_callback.callback = [](void* self) -> int {
            const auto* source = static_cast<live_source*>(self);
            return source->ending() || source->past_deadline() ? 1 : 0;
        };
    };
    m_thread = std::thread([this] { run(); });
}

live_source::~live_source() {
    m_closing = true;
    m_thread.join();
}

bool live_source::ending() const {
    return m_closing || stop_wanted();
}

void live_source::pass_deadline_on(double seconds) {
    const auto patience = std::chrono::duration_cast<clock::duration>(std::chrono::duration<double>(seconds));
    m_deadline = (clock::now() + patience).time_since_epoch().count();
}

bool live_source::past_deadline() const {
    return clock::now().time_since_epoch().count() > m_deadline;
}

void live_source::run() {
    do {
        read_connection();
    } while (m_settings.reconnects && !ending());
    const std::lock_guard<std::mutex> guard(m_lock);
    m_ended = true;
    m_arrived.notify_all();
}

// One connection from its opening to its loss, and the pause after it.
void live_source::read_connection() {
    std::string reason;
    bool whole = false;
    try {
        pass_deadline_on(m_settings.patience);
        video_source source(m_address, m_size);
        read_pictures(source);
        reason = source.problem();
        whole = reason.empty() && m_connected_before;
        if (reason.empty()) reason = m_address.name + ": the stream ended";
        if (past_deadline()) reason = m_address.name + ": no picture for " + seconds_text(m_settings.patience);
    } catch (const refused_error& error) {
        reason = error.what();
        if (!m_connected_before) {
            const std::lock_guard<std::mutex> guard(m_lock);
            m_refusal = reason + "; check the user in the address and --password-file or ORVA_FIRE_PASSWORD";
            m_closing = true;
        }
    } catch (const io_error& error) {
        reason = error.what();
        if (past_deadline()) reason = m_address.name + " does not answer (" + seconds_text(m_settings.patience) + ")";
    } catch (const std::exception& error) {
        reason = m_address.name + ": " + error.what();
    }
    if (ending()) return;
    if (m_settings.reconnects) {
        pause(reason);
    } else if (!whole) {
        const std::lock_guard<std::mutex> guard(m_lock);
        m_problem = reason;
    }
}

void live_source::read_pictures(video_source& source) {
    {
        const std::lock_guard<std::mutex> guard(m_lock);
        m_rate = source.nominal_rate();
    }
    const double elapsed = std::chrono::duration<double>(clock::now() - m_start).count();
    const double offset = m_connected_before ? std::max(elapsed, m_last_seconds + m_last_interval) : 0;
    source_picture picture;
    while (!ending() && source.next(picture)) {
        if (!m_connected_before) m_start = clock::now();
        if (m_gap) warn(m_address.name + ": there are pictures again");
        if (m_size.width == 0) m_size = {picture.frame->width, picture.frame->height};
        m_connected_before = true;
        m_back_off.succeeded();
        pass_deadline_on(m_settings.patience);
        picture.seconds += offset;
        picture.after_gap = std::exchange(m_gap, false);
        picture.wall_milliseconds = wall_clock_now();
        m_last_seconds = picture.seconds;
        for (const std::string& warning : source.take_warnings()) warn(warning);
        enqueue(std::move(picture));
        picture = source_picture();
    }
}

// When the caller is too slow the oldest pictures go: what is seen now matters more than what was seen before.
void live_source::enqueue(source_picture picture) {
    const std::lock_guard<std::mutex> guard(m_lock);
    m_queued_bytes += bytes_of(*picture.frame);
    m_queue.push_back(std::move(picture));
    while (m_queued_bytes > m_settings.queue_bytes && m_queue.size() > k_fewest_queued) {
        m_queued_bytes -= bytes_of(*m_queue.front().frame);
        const bool gap = m_queue.front().after_gap;
        m_queue.pop_front();
        m_queue.front().after_gap |= gap;
        ++m_dropped;
    }
    m_arrived.notify_all();
}

void live_source::pause(const std::string& reason) {
    m_gap = m_connected_before;
    const double pause = m_back_off.next();
    // The same again every half minute for days would bury everything else in the log.
    const bool known = pause >= m_settings.longest_pause && reason == m_last_reason;
    if (!known) warn(reason + "; trying again in " + seconds_text(pause));
    m_last_reason = pause >= m_settings.longest_pause ? reason : "";
    const auto until = clock::now() + std::chrono::duration<double>(pause);
    while (!ending() && clock::now() < until) {
        std::this_thread::sleep_for(std::min<clock::duration>(
            k_look_around, std::chrono::duration_cast<clock::duration>(until - clock::now()) + 1ms));
    }
}

void live_source::warn(const std::string& text) {
    const std::lock_guard<std::mutex> guard(m_lock);
    m_warnings.push_back(text);
}

bool live_source::next(source_picture& picture) {
    std::unique_lock<std::mutex> guard(m_lock);
    const auto until = clock::now() + k_patience_of_caller;
    while (m_queue.empty() && !m_ended && !stop_wanted() && clock::now() < until) {
        m_arrived.wait_for(guard, k_look_around);
    }
    if (!m_refusal.empty()) throw refused_error(m_refusal);
    if (stop_wanted()) return false;
    const auto now = clock::now();
    if (!m_queue.empty()) {
        m_queued_bytes -= bytes_of(*m_queue.front().frame);
        picture = std::move(m_queue.front());
        m_queue.pop_front();
        picture.index = m_index++;
        m_given_seconds = picture.seconds;
        m_given_at = now;
        return true;
    }
    if (m_ended) return false;
    picture = source_picture();
    picture.index = m_index;
    picture.seconds = m_given_seconds + std::chrono::duration<double>(now - m_given_at).count();
    picture.wall_milliseconds = wall_clock_now();
    return true;
}

double live_source::nominal_rate() const {
    const std::lock_guard<std::mutex> guard(m_lock);
    return m_rate;
}

int64_t live_source::dropped() const {
    const std::lock_guard<std::mutex> guard(m_lock);
    return m_dropped;
}

std::string live_source::problem() const {
    const std::lock_guard<std::mutex> guard(m_lock);
    return m_problem;
}

std::vector<std::string> live_source::take_warnings() {
    const std::lock_guard<std::mutex> guard(m_lock);
    return std::exchange(m_warnings, {});
}

}  // namespace orva_fire
