// The detector's decisions in plain words, with the numbers that they hang on.
#ifndef ORVA_APPS_ORVA_FIRE_REASONS_H
#define ORVA_APPS_ORVA_FIRE_REASONS_H

#include <string>

#include "apps/orva_fire/evidence.h"

namespace orva_fire {

// One word or two for the place where a box ended: "too steady".
const char* verdict_name(verdict ended);

// A sentence without a full stop: "too steady: its area changes by 9 %, needs 17 %".
std::string reason(const box_evidence& seen);

// What would have made a report of it, or empty: "would have been reported at grade 85".
std::string remedy(const box_evidence& seen);

// How near a box came to a report: 1 is reported, 0.5 and more a candidate that was compared with 50 stored frames.
double closeness(const box_evidence& seen);

// Measures as texts and numbers for whoever shows them.
double brightness_ratio(const box_evidence& seen);  // centre over surround; 0 if not measured
double flicker_share(const box_evidence& seen);     // deviation over mean area; 0 if not measured

// "1:02.5", "1:00:02.5": a moment in a video.
std::string clock_text(double seconds);

// "0.4 s", "12 s", "3 min 20 s".
std::string duration_text(double seconds);

}  // namespace orva_fire

#endif
