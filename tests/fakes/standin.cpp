#include "tests/fakes/standin.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <map>
#include <mutex>

#include "tests/fakes/standin_engine.h"
#include "tests/fakes/standin_limits.h"
#include "tests/fakes/standin_memory.h"
#include "tests/fakes/standin_records.h"
#include "tests/fakes/standin_trace.h"

namespace standin {

namespace {

const IVE_HANDLE k_first_handle = 1001;
const IVE_HANDLE k_no_handle = -77;  // what a refused submission leaves behind
const HI_U32 k_no_address = 0xBADBAD00u;

struct scripted_answer {
    HI_S32 code;
    bool finished;
};

class chip {
public:
    static chip& instance() {
        static chip the_chip;
        return the_chip;
    }

    std::mutex lock;
    memory_map memory;
    std::vector<record> seen;
    bool keep = true;
    std::array<long, k_calls> counts{};
    HI_S8 label_status = 0;
    int undefined = 0;
    int cancelled = 0;
    std::deque<record> queue;
    std::deque<std::vector<HI_U8>> spoilt_labels;

    void reset() {
        seen.clear();
        keep = true;
        counts = {};
        label_status = 0;
        undefined = 0;
        cancelled = 0;
        queue.clear();
        spoilt_labels.clear();
        m_script.clear();
        m_query_time_outs = 0;
        m_engine_time_outs = 0;
        m_fail_in = 0;
        m_fail_after = false;
        memory.set_alignment(16);
    }

    void script(call function, int nth, scripted_answer reply) {
        m_script[{function, counts[static_cast<std::size_t>(function)] + nth}] = reply;
    }
    void script_any(long nth, bool all_after) {
        m_fail_in = nth;
        m_fail_after = all_after;
    }
    void script_time_outs(int queries, int engine) {
        m_query_time_outs += queries;
        m_engine_time_outs += engine;
    }

    // Counts a call. Returns whether its answer is scripted, and which.
    bool is_scripted(call function, scripted_answer* reply) {
        const long nth = ++counts[static_cast<std::size_t>(function)];
        if (m_fail_in > 0 && --m_fail_in == 0) {
            if (m_fail_after) m_fail_in = 1;
            *reply = {function < call::alloc ? HI_ERR_IVE_NOTREADY : HI_FAILURE, false};
            return true;
        }
        const auto it = m_script.find({function, nth});
        if (it != m_script.end()) {
            *reply = it->second;
            m_script.erase(it);
            return true;
        }
        return function == call::query && is_timed_out(reply);
    }

    HI_S32 submit(record job, IVE_HANDLE* handle) {
        scripted_answer reply = {HI_SUCCESS, false};
        job.returned = is_scripted(job.function, &reply) ? reply.code : refusal_of(job, memory);
        job.handle = job.returned == HI_SUCCESS ? m_next_handle++ : k_no_handle;
        *handle = job.handle;
        if (job.returned == HI_SUCCESS) queue.push_back(job);
        return note(job);
    }

    HI_S32 query(record what, HI_BOOL* finished) {
        scripted_answer reply = {HI_SUCCESS, false};
        if (is_scripted(call::query, &reply)) {
            what.returned = reply.code;
            what.finished = reply.finished ? HI_TRUE : HI_FALSE;
            if (reply.finished) run_until(what.handle);
            if (reply.code == HI_ERR_IVE_SYS_TIMEOUT) drop_until(what.handle);
        } else {
            what.returned = wait_for(what.handle, what.flag, &what.finished);
        }
        *finished = what.finished;
        return note(what);
    }

    // Keeps and traces a call; returns its answer.
    HI_S32 note(const record& what) {
        if (keep) seen.push_back(what);
        if (m_trace == nullptr) open_trace_of_environment();
        if (m_trace != nullptr) std::fprintf(m_trace, "%s\n", m_text.line_of(what).c_str());
        if (m_trace != nullptr) std::fflush(m_trace);
        return what.returned;
    }

    void trace_to(const std::string& path) {
        if (m_trace != nullptr) std::fclose(m_trace);
        m_trace = path.empty() ? nullptr : std::fopen(path.c_str(), "w");
        m_text = trace_text();
    }

private:
    bool is_timed_out(scripted_answer* reply) {
        if (m_query_time_outs > 0) {
            --m_query_time_outs;
            *reply = {HI_ERR_IVE_QUERY_TIMEOUT, false};
            return true;
        }
        if (m_engine_time_outs > 0) {
            --m_engine_time_outs;
            *reply = {HI_ERR_IVE_SYS_TIMEOUT, false};
            return true;
        }
        return false;
    }

    std::deque<record>::iterator waiting(IVE_HANDLE handle) {
        return std::find_if(queue.begin(), queue.end(), [&](const record& job) { return job.handle == handle; });
    }

    HI_S32 wait_for(IVE_HANDLE handle, HI_BOOL block, HI_BOOL* finished) {
        *finished = HI_FALSE;
        const bool legal_flag = block == HI_FALSE || block == HI_TRUE;
        if (handle < k_first_handle || handle >= m_next_handle || !legal_flag) return HI_ERR_IVE_ILLEGAL_PARAM;
        const auto job = waiting(handle);
        if (job != queue.end()) {
            if (job->flag == HI_FALSE) return HI_ERR_IVE_QUERY_TIMEOUT;  // never announces itself
            if (block == HI_FALSE) return HI_SUCCESS;                    // later
            run_until(handle);
        }
        *finished = HI_TRUE;
        return HI_SUCCESS;
    }

    void run_until(IVE_HANDLE handle) {
        while (!queue.empty() && queue.front().handle <= handle) {
            const job_end end = run(queue.front(), memory, label_status);
            undefined += end == job_end::undefined_result;
            cancelled += end == job_end::memory_gone;
            if (queue.front().function == call::ccl) spoil_result(queue.front());
            queue.pop_front();
        }
    }

    void spoil_result(const record& job) {
        if (spoilt_labels.empty()) return;
        const std::vector<HI_U8>& bytes = spoilt_labels.front();
        unsigned char* result = memory.engine_at(job.memory.u32PhyAddr, bytes.size());
        if (result != nullptr) std::copy(bytes.begin(), bytes.end(), result);
        spoilt_labels.pop_front();
    }

    void drop_until(IVE_HANDLE handle) {
        while (!queue.empty() && queue.front().handle <= handle) queue.pop_front();
    }

    void open_trace_of_environment() {
        if (m_asked) return;
        m_asked = true;
        const char* path = std::getenv("HI_STANDIN_TRACE");
        if (path != nullptr) trace_to(path);
    }

    IVE_HANDLE m_next_handle = k_first_handle;
    std::map<std::pair<call, long>, scripted_answer> m_script;
    int m_query_time_outs = 0;
    int m_engine_time_outs = 0;
    long m_fail_in = 0;
    bool m_fail_after = false;
    std::FILE* m_trace = nullptr;
    bool m_asked = false;
    trace_text m_text;
};

typedef std::lock_guard<std::mutex> guard;

// A null argument: counted and kept like any other call.
HI_S32 refuse_null(call function, HI_BOOL flag) {
    chip& the_chip = chip::instance();
    record what = named(function, flag);
    scripted_answer reply = {HI_SUCCESS, false};
    the_chip.is_scripted(function, &reply);
    what.returned = HI_ERR_IVE_NULL_PTR;
    return the_chip.note(what);
}

HI_S32 allocate(call function, HI_U32* phys_addr, void** virt_addr, const char* block, const char* zone,
                HI_U32 length) {
    chip& the_chip = chip::instance();
    const guard held(the_chip.lock);
    record what = alloc_record(function, block, zone, length);
    scripted_answer reply = {HI_SUCCESS, false};
    if (the_chip.is_scripted(function, &reply)) {
        what.returned = reply.code;
    } else if (phys_addr == nullptr || virt_addr == nullptr || length == 0 || what.block_name.size() > 14) {
        what.returned = HI_FAILURE;
    }
    if (what.returned == HI_SUCCESS) {
        what.phys_addr = the_chip.memory.allocate(length, function == call::alloc_cached, &what.virt_addr);
    } else {
        what.phys_addr = k_no_address;
        what.virt_addr = &the_chip;
    }
    if (phys_addr != nullptr) *phys_addr = what.phys_addr;
    if (virt_addr != nullptr) *virt_addr = what.virt_addr;
    return the_chip.note(what);
}

}  // namespace

void reset() {
    const guard held(chip::instance().lock);
    chip::instance().reset();
}

int calls(call function) {
    const guard held(chip::instance().lock);
    return static_cast<int>(chip::instance().counts[static_cast<std::size_t>(function)]);
}

long all_calls() {
    const guard held(chip::instance().lock);
    long sum = 0;
    for (const long count : chip::instance().counts) sum += count;
    return sum;
}

std::vector<record> records() {
    const guard held(chip::instance().lock);
    return chip::instance().seen;
}

std::vector<record> records(call function) {
    std::vector<record> some;
    for (const record& one : records()) {
        if (one.function == function) some.push_back(one);
    }
    return some;
}

void keep_records(bool keep) {
    const guard held(chip::instance().lock);
    chip::instance().keep = keep;
}

void answer(call function, int nth, HI_S32 code, bool finished) {
    const guard held(chip::instance().lock);
    chip::instance().script(function, nth, {code, finished});
}

void fail_any(long nth, bool all_after) {
    const guard held(chip::instance().lock);
    chip::instance().script_any(nth, all_after);
}

void time_out_queries(int times) {
    const guard held(chip::instance().lock);
    chip::instance().script_time_outs(times, 0);
}

void time_out_engine(int times) {
    const guard held(chip::instance().lock);
    chip::instance().script_time_outs(0, times);
}

void set_label_status(HI_S8 status) {
    const guard held(chip::instance().lock);
    chip::instance().label_status = status;
}

void spoil_labels(const std::vector<HI_U8>& bytes) {
    const guard held(chip::instance().lock);
    chip::instance().spoilt_labels.push_back(bytes);
}

int live_buffers() {
    const guard held(chip::instance().lock);
    return chip::instance().memory.live_buffers();
}

void set_alignment(HI_U32 alignment) {
    const guard held(chip::instance().lock);
    chip::instance().memory.set_alignment(alignment);
}

HI_U32 register_frame(void* memory, std::size_t bytes) {
    const guard held(chip::instance().lock);
    return chip::instance().memory.register_frame(memory, bytes);
}

void unregister_frame(void* memory) {
    const guard held(chip::instance().lock);
    chip::instance().memory.unregister_frame(memory);
}

std::vector<unsigned char> engine_bytes(HI_U32 phys_addr, std::size_t bytes) {
    const guard held(chip::instance().lock);
    const unsigned char* first = chip::instance().memory.engine_at(phys_addr, bytes);
    return first == nullptr ? std::vector<unsigned char>() : std::vector<unsigned char>(first, first + bytes);
}

bool write_engine_bytes(HI_U32 phys_addr, const std::vector<unsigned char>& bytes) {
    const guard held(chip::instance().lock);
    unsigned char* first = chip::instance().memory.engine_at(phys_addr, bytes.size());
    if (first == nullptr) return false;
    std::copy(bytes.begin(), bytes.end(), first);
    return true;
}

int pending_jobs() {
    const guard held(chip::instance().lock);
    return static_cast<int>(chip::instance().queue.size());
}

int undefined_results() {
    const guard held(chip::instance().lock);
    return chip::instance().undefined;
}

int cancelled_jobs() {
    const guard held(chip::instance().lock);
    return chip::instance().cancelled;
}

void trace_to(const std::string& path) {
    const guard held(chip::instance().lock);
    chip::instance().trace_to(path);
}

}  // namespace standin

// --- the vendor's interface -------------------------------------------------------------------------------------

using standin::call;
using standin::chip;
using standin::guard;
using standin::record;

extern "C" {

HI_S32 HI_MPI_IVE_Sub(IVE_HANDLE* handle, IVE_SRC_IMAGE_S* first, IVE_SRC_IMAGE_S* second, IVE_DST_IMAGE_S* dst,
                      IVE_SUB_CTRL_S* control, HI_BOOL instant) {
    const guard held(chip::instance().lock);
    if (!handle || !first || !second || !dst || !control) return standin::refuse_null(call::sub, instant);
    return chip::instance().submit(standin::sub_record(first, second, dst, control, instant), handle);
}

HI_S32 HI_MPI_IVE_DMA(IVE_HANDLE* handle, IVE_DATA_S* src, IVE_DST_DATA_S* dst, IVE_DMA_CTRL_S* control,
                      HI_BOOL instant) {
    const guard held(chip::instance().lock);
    if (!handle || !src || !dst || !control) return standin::refuse_null(call::dma, instant);
    return chip::instance().submit(standin::dma_record(src, dst, control, instant), handle);
}

HI_S32 HI_MPI_IVE_Dilate(IVE_HANDLE* handle, IVE_SRC_IMAGE_S* src, IVE_DST_IMAGE_S* dst, IVE_DILATE_CTRL_S* control,
                         HI_BOOL instant) {
    const guard held(chip::instance().lock);
    if (!handle || !src || !dst || !control) return standin::refuse_null(call::dilate, instant);
    return chip::instance().submit(standin::dilate_record(src, dst, control, instant), handle);
}

HI_S32 HI_MPI_IVE_Thresh(IVE_HANDLE* handle, IVE_SRC_IMAGE_S* src, IVE_DST_IMAGE_S* dst, IVE_THRESH_CTRL_S* control,
                         HI_BOOL instant) {
    const guard held(chip::instance().lock);
    if (!handle || !src || !dst || !control) return standin::refuse_null(call::thresh, instant);
    return chip::instance().submit(standin::thresh_record(src, dst, control, instant), handle);
}

HI_S32 HI_MPI_IVE_CSC(IVE_HANDLE* handle, IVE_SRC_IMAGE_S* src, IVE_DST_IMAGE_S* dst, IVE_CSC_CTRL_S* control,
                      HI_BOOL instant) {
    const guard held(chip::instance().lock);
    if (!handle || !src || !dst || !control) return standin::refuse_null(call::csc, instant);
    return chip::instance().submit(standin::csc_record(src, dst, control, instant), handle);
}

HI_S32 HI_MPI_IVE_CCL(IVE_HANDLE* handle, IVE_IMAGE_S* image, IVE_DST_MEM_INFO_S* blob, IVE_CCL_CTRL_S* control,
                      HI_BOOL instant) {
    const guard held(chip::instance().lock);
    if (!handle || !image || !blob || !control) return standin::refuse_null(call::ccl, instant);
    return chip::instance().submit(standin::ccl_record(image, blob, control, instant), handle);
}

HI_S32 HI_MPI_IVE_Query(IVE_HANDLE handle, HI_BOOL* finished, HI_BOOL block) {
    const guard held(chip::instance().lock);
    if (finished == nullptr) return standin::refuse_null(call::query, block);
    return chip::instance().query(standin::query_record(handle, block), finished);
}

HI_S32 HI_MPI_SYS_MmzAlloc(HI_U32* phys_addr, HI_VOID** virt_addr, const HI_CHAR* block, const HI_CHAR* zone,
                           HI_U32 length) {
    return standin::allocate(call::alloc, phys_addr, virt_addr, block, zone, length);
}

HI_S32 HI_MPI_SYS_MmzAlloc_Cached(HI_U32* phys_addr, HI_VOID** virt_addr, const HI_CHAR* block, const HI_CHAR* zone,
                                  HI_U32 length) {
    return standin::allocate(call::alloc_cached, phys_addr, virt_addr, block, zone, length);
}

HI_S32 HI_MPI_SYS_MmzFlushCache(HI_U32 phys_addr, HI_VOID* virt_addr, HI_U32 length) {
    chip& the_chip = chip::instance();
    const guard held(the_chip.lock);
    record what = standin::memory_record(call::flush, phys_addr, virt_addr, length);
    standin::scripted_answer reply = {HI_SUCCESS, false};
    if (the_chip.is_scripted(call::flush, &reply)) {
        what.returned = reply.code;
    } else if (length == 0 || !the_chip.memory.flush(phys_addr, virt_addr, length)) {
        what.returned = HI_FAILURE;
    }
    return the_chip.note(what);
}

HI_S32 HI_MPI_SYS_MmzFree(HI_U32 phys_addr, HI_VOID* virt_addr) {
    chip& the_chip = chip::instance();
    const guard held(the_chip.lock);
    record what = standin::memory_record(call::free, phys_addr, virt_addr, 0);
    standin::scripted_answer reply = {HI_SUCCESS, false};
    const bool scripted = the_chip.is_scripted(call::free, &reply);
    const bool released = the_chip.memory.release(phys_addr, virt_addr);
    what.returned = scripted ? reply.code : released ? HI_SUCCESS : HI_FAILURE;
    return the_chip.note(what);
}

}  // extern "C"
