// Explains chosen pictures: for each a folder with a picture of every stage and a JSON file with all numbers, and one
// page over all of them with the reasons in plain words.
#ifndef ORVA_APPS_ORVA_FIRE_EXPLAIN_H
#define ORVA_APPS_ORVA_FIRE_EXPLAIN_H

#include <string>

#include "apps/orva_fire/evidence.h"
#include "apps/orva_fire/stages.h"

namespace orva_fire {

// Where a picture that is explained comes from.
struct explained_place {
    std::string zone;  // its name
    size_t zone_index = 0;
    size_t channel = 0;  // of the zone; 0 where it is looked at in one piece
    box area;            // in source pixels
};

// The numbers of one picture as JSON with an end of line. Boxes are in source pixels and, as "seen", in the detector's.
std::string explanation_json(const explained_place& place, const picture_evidence& seen, int threshold);

// The picture with its boxes: grey where they were left out or refused, yellow for candidates, red for reported ones.
colour_picture marked_boxes(nv21_picture& picture, const picture_evidence& seen);

// Connected parts of the mask, each in a colour of its own.
colour_picture coloured_components(const grey_picture& mask);

class explain_writer {
public:
    // Makes the folder, and removes what an earlier run explained there. Throws io_error.
    // title: of the page, the source's name.
    explain_writer(const std::string& folder, const std::string& title);

    // Writes one picture's files.
    void write(const explained_place& place, nv21_picture& picture, const picture_evidence& seen,
               const stage_pictures& stages);

    // Writes the page, index.html. Only the first 200 pictures are shown in it.
    void finish();

    int written() const { return m_written; }

private:
    const std::string m_folder;
    const std::string m_title;
    std::string m_sections;
    int m_written = 0;
};

}  // namespace orva_fire

#endif
