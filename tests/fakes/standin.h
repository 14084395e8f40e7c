// The stand-in chip: the eleven functions of the vendor's interface over ordinary memory, as awkward as the interface
// allows, so that what passes here does not rest on luck.
//
//   - Physical addresses are made up. An image is found by its physical address alone; virtual ones are recorded only.
//   - Jobs wait in a queue. One that was submitted as instant runs when it is waited for, together with all before it;
//     others never announce themselves. So a result that is read too early is an old one.
//   - Cached memory exists twice, as the processor sees it and as the engine does. A flush writes back those lines
//     of 32 bytes that the processor changed since the last flush, and reloads the others; nothing else moves a byte.
//     A line counts as changed by its bytes: one that was rewritten with what it held does not.
//   - Fresh memory holds rubbish, a failing call leaves rubbish in its results.
//   - What the chip refuses is refused, at submission, with the chip's code.
//
// This header is the other side: what tests ask and tell. HI_STANDIN_TRACE=FILE in the environment writes one line for
// each call. Any thread; one lock guards everything.
#ifndef ORVA_TESTS_FAKES_STANDIN_H
#define ORVA_TESTS_FAKES_STANDIN_H

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "backend/hisi_sdk_declarations.h"

namespace standin {

enum class call { sub, dma, dilate, thresh, csc, ccl, query, alloc, alloc_cached, flush, free, count_of_calls };
const int k_calls = static_cast<int>(call::count_of_calls);
const char* name_of(call function);

// One call: a copy of what it was handed, and its answer. Fields that a function does not have stay zero.
struct record {
    call function = call::count_of_calls;
    HI_S32 returned = 0;
    IVE_HANDLE handle = 0;                // given out, or asked for
    HI_BOOL flag = HI_FALSE;              // instant, or block
    HI_BOOL finished = HI_FALSE;          // answer of a query
    std::array<IVE_IMAGE_S, 3> images{};  // in the order of the arguments
    std::array<IVE_DATA_S, 2> data{};
    IVE_MEM_INFO_S memory{};
    IVE_SUB_CTRL_S sub{};
    IVE_DMA_CTRL_S dma{};
    IVE_DILATE_CTRL_S dilate{};
    IVE_THRESH_CTRL_S thresh{};
    IVE_CSC_CTRL_S csc{};
    IVE_CCL_CTRL_S ccl{};
    HI_U32 phys_addr = 0;  // memory functions
    void* virt_addr = nullptr;
    HI_U32 length = 0;
    std::string block_name;
    bool default_zone = false;
};

// Forgets calls, scripts and jobs; buffers and registered frames stay. Every test starts with it.
void reset();

// --- what was called --------------------------------------------------------------------------------------------

int calls(call function);
long all_calls();
std::vector<record> records();
std::vector<record> records(call function);
void keep_records(bool keep);  // long runs turn them off; counts go on

// --- what to answer ---------------------------------------------------------------------------------------------
// Counts start at the next call of the function, with 1. A scripted refusal comes before any check of the arguments.

// finished: for a query, the flag that is set beside the code; the job has run then.
void answer(call function, int nth, HI_S32 code, bool finished = false);
// The nth call of all from now on fails, whatever it is; with all_after every later one too. Jobs and queries fail with
// "not ready", memory with -1. A failing release releases all the same.
void fail_any(long nth, bool all_after);
void time_out_queries(int times);  // the next waits end before their job; it stays in the queue
void time_out_engine(int times);   // the next waits end with the engine reset; the job and all before it are lost
void set_label_status(HI_S8 status);
// The result of the next labelling job that has run is overwritten by these bytes, as by an engine that lost its way.
// Several wait in line.
void spoil_labels(const std::vector<HI_U8>& bytes);

// --- memory -----------------------------------------------------------------------------------------------------

int live_buffers();
// Addresses of new buffers are multiples of this and not of its double. 16 at first.
void set_alignment(HI_U32 alignment);
// Makes ordinary memory known to the engine, as a picture that video hardware filled: not cached, one copy.
// Returns its physical address.
HI_U32 register_frame(void* memory, std::size_t bytes);
void unregister_frame(void* memory);
// What the engine sees; empty if the bytes are not one buffer's.
std::vector<unsigned char> engine_bytes(HI_U32 phys_addr, std::size_t bytes);
// Writes as the engine would, past the processor's copy.
bool write_engine_bytes(HI_U32 phys_addr, const std::vector<unsigned char>& bytes);

// --- what should not happen -------------------------------------------------------------------------------------

int pending_jobs();
int undefined_results();  // jobs whose input makes the chip's result undefined: a dilation of values between 0 and 255
int cancelled_jobs();     // jobs whose memory was gone when they came to run

// Writes the trace to this file from now on, with names and jobs counted anew; "" ends it.
void trace_to(const std::string& path);

}  // namespace standin

#endif
