// The allocation functions of a test program, replaced so that chosen requests fail and live blocks are counted.
#ifndef ORVA_TESTS_API_FAILING_NEW_H
#define ORVA_TESTS_API_FAILING_NEW_H

namespace failing_new {

// Requests that may throw, those that may not, or all of them.
enum class kind { throwing, nothrow, any };

// While it lives, requests of one kind are counted, and `count` of them from number `first`, 1-based, fail.
class plan {
public:
    plan(kind which, long first, long count);
    ~plan();
    plan(const plan&) = delete;
    plan& operator=(const plan&) = delete;

    long requests() const;
    long failures() const;
};

// While it lives, the plan's requests are not counted and do not fail (or do again): a test's own requests are no part
// of what it tests.
class pause {
public:
    explicit pause(bool paused = true);
    ~pause();
    pause(const pause&) = delete;
    pause& operator=(const pause&) = delete;

private:
    bool m_before;
};

const long k_all_after = 1000000000;

// Blocks obtained and not given back since the program began.
long live_blocks();

}  // namespace failing_new

#endif
