#include "bench/cast.h"

#include "bench/measure.h"
#include "bench/plain/plain.h"

namespace bench {

namespace {

double time_first_init(const six_functions& functions) {
    const std::int64_t before = now_ns();
    functions.init();
    const std::int64_t after = now_ns();
    functions.uninit();
    return static_cast<double>(after - before);
}

}  // namespace

cast::cast(const std::string& library_path)
    : m_path(library_path),
      m_functions(load_library(library_path)),
      m_first_init_ns(time_first_init(m_functions)),
      m_library(make_contender("library", m_functions)),
      m_plain_o2(make_contender("plain -O2", ::plain_o2::functions)),
      m_plain_o3(make_contender("plain -O3 native", ::plain_o3::functions)),
      m_doors(make_door_contender()),
      m_opencv(make_opencv_contender()) {}

std::vector<contender*> cast::all() const {
    std::vector<contender*> everybody = {m_library.get(), m_plain_o2.get(), m_plain_o3.get()};
    if (m_opencv) everybody.push_back(m_opencv.get());
    return everybody;
}

}  // namespace bench
