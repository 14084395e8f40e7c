#include "bench/painting.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <sstream>

namespace bench {

namespace {

struct kind_name {
    const char* word;
    int values;
};
const kind_name k_kinds[k_stroke_kinds] = {{"grid", 8},   {"line", 4},   {"frame", 4}, {"comb", 5},      {"spiral", 5},
                                           {"stairs", 7}, {"salt", 6},   {"clear", 4}, {"specks", 6},    {"lattice", 8},
                                           {"luma", 2},   {"chroma", 2}, {"turn", 1},  {"background", 4}};

// Two pictures and the state of the brush.
class canvas {
public:
    canvas(int width, int height) : m_turns(2, picture(width, height)), m_columns(width / 2), m_rows(height / 2) {
        const int still[] = {70, 70, 128, 128};
        background(still);
    }

    void apply(const stroke& s) {
        const int* v = s.values;
        switch (s.kind) {
            case stroke_grid:
                return grid(v);
            case stroke_line:
                return line(v[0], v[1], v[2], v[3]);
            case stroke_frame:
                return outline(v[0], v[1], v[2], v[3]);
            case stroke_comb:
                return comb(v);
            case stroke_spiral:
                return spiral(v[0], v[1], v[2], v[3], std::max(2, v[4]));
            case stroke_stairs:
                return stairs(v);
            case stroke_salt:
                return salt(v);
            case stroke_clear:
                return fill(v[0], v[1], v[2], v[3], false);
            case stroke_specks:
                return specks(v);
            case stroke_lattice:
                return lattice(v);
            case stroke_luma:
                std::copy(v, v + 2, m_luma);
                return;
            case stroke_chroma:
                std::copy(v, v + 2, m_chroma);
                return;
            case stroke_turn:
                m_turn = v[0];
                return;
            case stroke_background:
                return background(v);
            case k_stroke_kinds:
                return;
        }
    }

    const std::vector<picture>& turns() const { return m_turns; }

private:
    bool painting_in(int turn) const { return m_turn == turn || m_turn < 0 || m_turn > 1; }

    void block(int x, int y, bool burning) {
        if (x < 0 || y < 0 || x >= m_columns || y >= m_rows) return;
        for (int turn = 0; turn < 2; ++turn) {
            if (!painting_in(turn)) continue;
            picture& p = m_turns[static_cast<std::size_t>(turn)];
            const int luma = burning ? m_luma[turn] : m_background[turn];
            for (int i = 0; i < 4; ++i) p.set_luma(2 * x + i % 2, 2 * y + i / 2, luma);
            p.set_chroma(2 * x, 2 * y, burning ? m_chroma[0] : m_background[2],
                         burning ? m_chroma[1] : m_background[3]);
        }
    }

    void fill(int x, int y, int width, int height, bool burning) {
        const int right = std::min(m_columns, x + width);
        const int bottom = std::min(m_rows, y + height);
        for (int row = std::max(0, y); row < bottom; ++row) {
            for (int column = std::max(0, x); column < right; ++column) block(column, row, burning);
        }
    }

    void background(const int* v) {
        std::copy(v, v + 4, m_background);
        const int turn = m_turn;
        m_turn = 2;
        fill(0, 0, m_columns, m_rows, false);
        m_turn = turn;
    }

    void grid(const int* v) {
        for (int y = v[1]; y < std::min(m_rows, v[1] + v[3]); y += std::max(1, v[5])) {
            for (int x = v[0]; x < std::min(m_columns, v[0] + v[2]); x += std::max(1, v[4]))
                fill(x, y, v[6], v[7], true);
        }
    }

    // One block for each step along the longer side: neighbours touch at an edge or at a corner.
    void line(int x0, int y0, int x1, int y1) {
        const int steps = std::max(1, std::max(std::abs(x1 - x0), std::abs(y1 - y0)));
        for (int i = 0; i <= steps; ++i) block(x0 + (x1 - x0) * i / steps, y0 + (y1 - y0) * i / steps, true);
    }

    void outline(int x, int y, int width, int height) {
        fill(x, y, width, 1, true);
        fill(x, y + height - 1, width, 1, true);
        fill(x, y, 1, height, true);
        fill(x + width - 1, y, 1, height, true);
    }

    void comb(const int* v) {
        fill(v[0], v[1], v[2], 1, true);
        for (int x = v[0]; x < std::min(m_columns, v[0] + v[2]); x += std::max(1, v[4])) fill(x, v[1], 1, v[3], true);
    }

    void spiral(int x, int y, int width, int height, int pitch) {
        while (width > pitch && height > pitch) {
            fill(x, y, width, 1, true);
            fill(x + width - 1, y, 1, height, true);
            fill(x, y + height - 1, width, 1, true);
            fill(x, y + pitch, 1, height - pitch, true);
            fill(x, y + pitch, pitch, 1, true);  // the step inwards
            x += pitch;
            y += pitch;
            width -= 2 * pitch;
            height -= 2 * pitch;
        }
    }

    void stairs(const int* v) {
        for (int i = 0; i < std::min(1000, v[2]); ++i) fill(v[0] + i * v[3], v[1] + i * v[4], v[5], v[6], true);
    }

    void salt(const int* v) {
        random_source random(static_cast<std::uint64_t>(v[5]));
        for (int y = v[1]; y < v[1] + v[3]; ++y) {
            for (int x = v[0]; x < v[0] + v[2]; ++x) {
                if (random.below(1000) < v[4]) block(x, y, true);
            }
        }
    }

    // One pixel moves; its dilation reaches into a neighbouring block with one corner, and only that block burns. So
    // one pixel of the mask remains, and becomes 3 x 3. x, y: that pixel.
    void speck(int x, int y) {
        const int moving_x = x + (x % 2 == 0 ? -1 : 1);
        const int moving_y = y + (y % 2 == 0 ? -1 : 1);
        if (x < 1 || y < 1 || x > 2 * m_columns - 2 || y > 2 * m_rows - 2) return;
        for (int turn = 0; turn < 2; ++turn) {
            if (!painting_in(turn)) continue;
            picture& p = m_turns[static_cast<std::size_t>(turn)];
            p.set_chroma(x, y, m_chroma[0], m_chroma[1]);
            for (int i = 0; i < 4; ++i) p.set_luma(x / 2 * 2 + i % 2, y / 2 * 2 + i / 2, m_luma[0]);
            p.set_luma(moving_x, moving_y, m_luma[turn]);
        }
    }

    void specks(const int* v) {
        for (int y = std::max(1, v[1]); y < std::min(m_rows - 1, v[1] + v[3]); y += std::max(2, v[5])) {
            for (int x = std::max(1, v[0]); x < std::min(m_columns - 1, v[0] + v[2]); x += std::max(2, v[4]))
                speck(2 * x - 1, 2 * y - 1);
        }
    }

    void lattice(const int* v) {
        const int most = 400;  // steps to either side reach every pixel from every corner
        for (int i = -most; i <= most; ++i) {
            for (int j = -most; j <= most; ++j) {
                const int x = i * v[4] + j * v[6];
                const int y = i * v[5] + j * v[7];
                if (x >= 0 && y >= 0 && x < 2 * v[2] && y < 2 * v[3]) speck(2 * v[0] + x, 2 * v[1] + y);
            }
        }
    }

    std::vector<picture> m_turns;
    int m_columns;
    int m_rows;
    int m_luma[2] = {235, 190};
    int m_chroma[2] = {90, 150};
    int m_turn = 2;
    int m_background[4];
};

}  // namespace

int value_count(stroke_kind kind) {
    return k_kinds[kind].values;
}

std::string to_text(const painting& p) {
    std::ostringstream text;
    text << p.name << ":";
    for (const stroke& s : p.strokes) {
        text << (&s == &p.strokes[0] ? " " : "; ") << k_kinds[s.kind].word;
        for (int i = 0; i < value_count(s.kind); ++i) text << ' ' << s.values[i];
    }
    return text.str();
}

painting parse(const std::string& text) {
    painting p = {text.substr(0, text.find(':')), {}};
    std::istringstream strokes(text.substr(std::min(text.size(), p.name.size() + 1)));
    std::string part;
    while (std::getline(strokes, part, ';')) {
        std::istringstream words(part);
        std::string word;
        words >> word;
        int kind = 0;
        while (kind < k_stroke_kinds && word != k_kinds[kind].word) ++kind;
        stroke s = {static_cast<stroke_kind>(kind), {}};
        bool good = kind < k_stroke_kinds;
        for (int i = 0; good && i < value_count(s.kind); ++i) good = static_cast<bool>(words >> s.values[i]);
        if (!good) {
            std::fprintf(stderr, "painting '%s': what is '%s'?\n", p.name.c_str(), part.c_str());
            std::exit(2);
        }
        p.strokes.push_back(s);
    }
    return p;
}

scene paint(const painting& p, int width, int height) {
    canvas c(width, height);
    for (const stroke& s : p.strokes) c.apply(s);
    return {p.name, c.turns()};
}

std::vector<painting> constructed_paintings() {
    const char* const texts[] = {
        "specks: background 70 70 128 128; specks 1 1 175 143 2 2",
        // Squares of 3 x 3 that touch at corners only, one in 15 pixels.
        "densest specks: background 70 70 128 128; lattice 0 0 176 144 4 1 1 4",
        "specks before moving grey: background 60 180 128 128; specks 1 1 175 143 2 2; grid 0 0 176 144 3 3 1 1",
        "grid of 4 x 4: background 60 180 128 128; grid 0 0 176 144 3 3 1 1",
        "grid of 6 x 6: background 60 180 128 128; grid 0 0 176 144 4 4 2 2",
        "comb: background 60 180 128 128; comb 0 1 176 141 3",
        "combs: grid 0 0 1 1 1 1 1 1; comb 1 1 86 70 3; comb 89 1 86 70 3; comb 1 73 86 70 3; comb 89 73 86 70 3",
        "spiral: background 60 180 128 128; spiral 0 0 176 144 3",
        "chain of small steps: background 70 70 128 128; stairs 2 2 60 3 2 1 1; stairs 60 2 60 2 2 1 1",
        "isolated heads, then specks: background 70 70 128 128; grid 2 2 172 80 24 24 1 1; grid 13 14 160 70 24 24 1 "
        "1; "
        "specks 2 100 172 42 2 2",
        // Nearest edges of neighbours lie 40 apart in all, the least that keeps boxes of 4 x 6, or of 3 x 3, unmerged.
        "as many as stay unmerged: background 70 70 128 128; grid 1 1 174 142 24 24 1 2; grid 13 13 160 130 24 24 1 2",
        "as many specks as stay unmerged: background 70 70 128 128; specks 1 1 175 143 22 22; specks 12 12 164 132 22 "
        "22",
        "as many as stay unmerged, area changes: background 70 70 128 128; turn 0; grid 1 1 174 142 24 24 1 2; "
        "grid 13 13 160 130 24 24 1 2; turn 1; grid 1 1 174 142 24 24 1 1; grid 13 13 160 130 24 24 1 1",
        "refused before a bright wall: background 255 255 128 128; grid 1 1 174 142 24 24 1 2; "
        "grid 13 13 160 130 24 24 1 2",
        "salt: background 60 180 128 128; salt 0 0 176 144 120 1",
        "much salt: background 60 180 128 128; salt 0 0 176 144 450 2",
        "everything burns: background 190 235 90 150",
        "everything at the colour limit: background 225 180 100 133; luma 224 181; chroma 100 134; grid 0 0 176 144 2 "
        "1 1 1",
        "nested frames: frame 0 0 176 144; frame 22 22 132 100; frame 44 44 88 56; frame 66 66 44 12",
        "diagonals: line 0 0 120 120; line 30 0 150 120; line 60 0 175 115; line 0 30 110 140; line 0 60 80 140; "
        "line 90 0 175 85; line 0 90 50 140; line 120 0 175 55; line 150 0 175 25",
    };
    std::vector<painting> all;
    for (const char* text : texts) all.push_back(parse(text));
    return all;
}

std::vector<painting> found_paintings() {
    const char* const texts[] = {
#include "bench/found_paintings.inc"
        nullptr};
    std::vector<painting> all;
    for (const char* text : texts) {
        if (text != nullptr) all.push_back(parse(text));
    }
    return all;
}

}  // namespace bench
