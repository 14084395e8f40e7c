#include "bench/cast.h"

#include "bench/plain/plain.h"

namespace bench {

cast::cast(const std::string& library_path)
    : m_path(library_path),
      m_library(make_contender("library", load_library(library_path))),
      m_plain_o2(make_contender("plain -O2", ::plain_o2::functions)),
      m_plain_o3(make_contender("plain -O3 native", ::plain_o3::functions)),
      m_opencv(make_opencv_contender()) {}

std::vector<contender*> cast::all() const {
    std::vector<contender*> everybody = {m_library.get(), m_plain_o2.get(), m_plain_o3.get()};
    if (m_opencv) everybody.push_back(m_opencv.get());
    return everybody;
}

}  // namespace bench
