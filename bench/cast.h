// Everybody who plays, opened once for a run of the program.
#ifndef ORVA_BENCH_CAST_H
#define ORVA_BENCH_CAST_H

#include <memory>
#include <string>
#include <vector>

#include "bench/contenders.h"

namespace bench {

class cast {
public:
    explicit cast(const std::string& library_path);

    const std::string& library_path() const { return m_path; }
    contender& library() const { return *m_library; }
    contender& plain_o2() const { return *m_plain_o2; }
    contender& plain_o3() const { return *m_plain_o3; }
    contender& doors() const { return *m_doors; }         // this build's library, stage by stage
    contender* opencv() const { return m_opencv.get(); }  // null in a build without it

    const six_functions& library_functions() const { return m_functions; }
    double first_init_ns() const { return m_first_init_ns; }

    // The library first, then plain -O2, plain -O3, OpenCV.
    std::vector<contender*> all() const;

private:
    std::string m_path;
    six_functions m_functions;
    double m_first_init_ns;
    std::unique_ptr<contender> m_library;
    std::unique_ptr<contender> m_plain_o2;
    std::unique_ptr<contender> m_plain_o3;
    std::unique_ptr<contender> m_doors;
    std::unique_ptr<contender> m_opencv;
};

}  // namespace bench

#endif
