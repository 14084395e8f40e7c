// Scenes that are hard to process, written as a few strokes: the mask that a channel finds is painted block by block,
// so shapes, counts and neighbourhoods of components come out as meant. A text of strokes is short enough to be kept,
// changed at random and read.
#ifndef ORVA_BENCH_PAINTING_H
#define ORVA_BENCH_PAINTING_H

#include <string>
#include <vector>

#include "bench/scenes.h"

namespace bench {

// Coordinates count blocks of 2 x 2 pixels, the unit in which the fire-colour filter decides. A painted block burns and
// changes its luma from frame to frame, so that it moves. The ring has two frames, turn 0 and turn 1.
enum stroke_kind {
    stroke_grid,        // x y width height pitch_x pitch_y block_width block_height
    stroke_line,        // x0 y0 x1 y1
    stroke_frame,       // x y width height: an outline
    stroke_comb,        // x y width height pitch: a spine on top, teeth below
    stroke_spiral,      // x y width height pitch: one line inwards
    stroke_stairs,      // x y count step_x step_y block_width block_height
    stroke_salt,        // x y width height permille seed
    stroke_clear,       // x y width height
    stroke_specks,      // x y width height pitch_x pitch_y: single pixels, dilated to 3 x 3
    stroke_lattice,     // x y width height, then two steps in pixels, a_x a_y b_x b_y: single pixels at all their sums
    stroke_luma,        // luma of painted blocks in turn 0 and in turn 1, from here on
    stroke_chroma,      // u v, from here on
    stroke_turn,        // paint in turn 0, in turn 1, or in both (2), from here on
    stroke_background,  // luma in turn 0, luma in turn 1, u, v: fills the picture
    k_stroke_kinds
};

struct stroke {
    stroke_kind kind;
    int values[8];
};

struct painting {
    std::string name;
    std::vector<stroke> strokes;
};

int value_count(stroke_kind kind);

// "name: kind values; kind values". parse ends the program if the text is wrong.
std::string to_text(const painting& p);
painting parse(const std::string& text);

scene paint(const painting& p, int width, int height);

// The shapes one thinks of, and the worst ten that the random search has found so far.
std::vector<painting> constructed_paintings();
std::vector<painting> found_paintings();

}  // namespace bench

#endif
