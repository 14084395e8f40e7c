// Single pictures in a folder, shown one after the other as if they were a video.
#ifndef ORVA_APPS_ORVA_FIRE_IMAGE_SOURCE_H
#define ORVA_APPS_ORVA_FIRE_IMAGE_SOURCE_H

#include <memory>

#include "apps/orva_fire/picture_filter.h"
#include "apps/orva_fire/picture_source.h"

namespace orva_fire {

// True for names that end like a picture's: .jpg, .png and so on.
bool is_image_name(const std::string& name);

// The pictures that a pattern stands for, %d or %05d for the number, in the order of their numbers; none if the text is
// no such pattern. Numbers may be missing.
std::vector<std::string> images_of_pattern(const std::string& pattern);

// Puts names into the order that people expect: frame2 before frame10.
void sort_naturally(std::vector<std::string>& names);

class image_source : public picture_source {
public:
    // files: at least one. name: of them all, for messages. rate: pictures a second.
    image_source(std::vector<std::string> files, const std::string& name, double rate);

    // Pictures that cannot be read are passed over; see problem().
    bool next(source_picture& picture) override;
    double duration() const override { return static_cast<double>(m_files.size()) / m_rate; }
    double nominal_rate() const override { return m_rate; }
    std::string problem() const override;
    std::vector<std::string> take_warnings() override { return {}; }

private:
    bool read(const std::string& file, frame_ptr& picture);

    const std::vector<std::string> m_files;
    const std::string m_name;
    const double m_rate;
    size_t m_next = 0;
    int64_t m_index = 0;
    int64_t m_damaged = 0;
    std::string m_first_damage;
    picture_size m_size;
};

}  // namespace orva_fire

#endif
