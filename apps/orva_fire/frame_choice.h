// Which pictures of a clip are to be explained.
#ifndef ORVA_APPS_ORVA_FIRE_FRAME_CHOICE_H
#define ORVA_APPS_ORVA_FIRE_FRAME_CHOICE_H

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace orva_fire {

class frame_choice {
public:
    // text: numbers and stretches with commas between them, "140,150-160,300-"; "all" or empty for every picture.
    // Throws usage_error if it has another form.
    static frame_choice parse(const std::string& text);

    bool holds(int64_t frame) const;

private:
    std::vector<std::pair<int64_t, int64_t>> m_stretches;  // both ends inclusive
};

}  // namespace orva_fire

#endif
