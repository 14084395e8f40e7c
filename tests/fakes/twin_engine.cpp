#include "tests/fakes/twin_engine.h"

#include <cstddef>
#include <cstdint>

namespace twin {

namespace {

unsigned char byte_of(int value) {
    return static_cast<unsigned char>(value);
}

// numerator / denominator rounded to the nearest, cut to 0..255.
int nearest_byte(std::int64_t numerator, std::int64_t denominator) {
    if (numerator <= 0) return 0;
    const std::int64_t rounded = (2 * numerator + denominator) / (2 * denominator);
    return rounded > 255 ? 255 : static_cast<int>(rounded);
}

// A number for each component, in raster order of first pixels, from 1; 0 for pixels that are not set. Numbers spread
// from neighbour to neighbour until none changes: every pixel ends with the least raster index of its component.
std::vector<int> components_of(const ref::plane& img) {
    const auto at = [&](int x, int y) { return static_cast<std::size_t>(y * img.width + x); };
    std::vector<int> least(static_cast<std::size_t>(img.width * img.height), 0);
    for (int y = 0; y < img.height; ++y) {
        for (int x = 0; x < img.width; ++x) least[at(x, y)] = img.at(x, y) != 0 ? y * img.width + x + 1 : 0;
    }
    const auto take_least = [&](int x, int y) {
        bool changed = false;
        for (int ny = y - 1; ny <= y + 1; ++ny) {
            for (int nx = x - 1; nx <= x + 1; ++nx) {
                if (nx < 0 || ny < 0 || nx >= img.width || ny >= img.height) continue;
                const int other = least[at(nx, ny)];
                if (other == 0 || other >= least[at(x, y)]) continue;
                least[at(x, y)] = other;
                changed = true;
            }
        }
        return changed;
    };
    bool changed = true;
    while (changed) {
        changed = false;
        for (int y = 0; y < img.height; ++y) {
            for (int x = 0; x < img.width; ++x) changed |= least[at(x, y)] != 0 && take_least(x, y);
        }
        for (int y = img.height - 1; y >= 0; --y) {
            for (int x = img.width - 1; x >= 0; --x) changed |= least[at(x, y)] != 0 && take_least(x, y);
        }
    }
    return least;
}

struct found_component {
    int first;  // its number
    ref::component box;
};

std::vector<found_component> boxes_of(const std::vector<int>& numbers, int width, int height) {
    std::vector<found_component> found;
    std::vector<int> place(numbers.size() + 1, -1);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const int number = numbers[static_cast<std::size_t>(y * width + x)];
            if (number == 0) continue;
            const auto column = static_cast<std::int16_t>(x);
            const auto row = static_cast<std::int16_t>(y);
            int& where = place[static_cast<std::size_t>(number)];
            if (where < 0) {
                where = static_cast<int>(found.size());
                found.push_back({number, {0, column, column, row, row}});
            }
            ref::component& box = found[static_cast<std::size_t>(where)].box;
            ++box.area;
            if (column < box.left) box.left = column;
            if (column > box.right) box.right = column;
            box.bottom = row;
        }
    }
    return found;
}

}  // namespace

void sub(const ref::plane& a, const ref::plane& b, const ref::plane& dst) {
    for (int y = 0; y < a.height; ++y) {
        for (int x = 0; x < a.width; ++x) {
            const int p = a.at(x, y);
            const int q = b.at(x, y);
            dst.at(x, y) = byte_of(p > q ? p - q : q - p);
        }
    }
}

void threshold(const ref::plane& src, const ref::plane& dst, int low) {
    for (int y = 0; y < src.height; ++y) {
        for (int x = 0; x < src.width; ++x) dst.at(x, y) = src.at(x, y) <= low ? 0 : 255;
    }
}

void dilate(const ref::plane& src, const ref::plane& dst) {
    for (int y = 0; y < src.height; ++y) {
        for (int x = 0; x < src.width; ++x) {
            const bool border = x == 0 || y == 0 || x == src.width - 1 || y == src.height - 1;
            bool set = src.at(x, y) != 0;
            for (int n = 0; n < 9 && !border; ++n) set = set || src.at(x - 1 + n % 3, y - 1 + n / 3) != 0;
            dst.at(x, y) = set ? 255 : 0;
        }
    }
}

// With Kr = 0.2126, Kb = 0.0722 and Kg = 0.7152, over the common denominator 219 * 224 * 10000 (times 7152 for green):
//   red   = 255/219 (Y - 16) + 255/224 * 2 (1 - Kr) V
//   green = 255/219 (Y - 16) - 255/224 * 2 (1 - Kb) Kb / Kg U - 255/224 * 2 (1 - Kr) Kr / Kg V
//   blue  = 255/219 (Y - 16) + 255/224 * 2 (1 - Kb) U
ref::bgr convert_pixel(int y, int u, int v) {
    const std::int64_t common = std::int64_t{219} * 224 * 10000;
    const std::int64_t luma = std::int64_t{255} * (y - 16) * 224 * 10000;
    const std::int64_t chroma = std::int64_t{255} * 219;
    const std::int64_t u0 = u - 128;
    const std::int64_t v0 = v - 128;
    const std::int64_t red = luma + chroma * 2 * 7874 * v0;
    const std::int64_t blue = luma + chroma * 2 * 9278 * u0;
    // 2 (1 - Kb) Kb / Kg = 2 * 9278 * 722 / (7152 * 10000), and likewise for V.
    const std::int64_t green = luma * 7152 - chroma * 2 * 9278 * 722 * u0 - chroma * 2 * 7874 * 2126 * v0;
    return {nearest_byte(blue, common), nearest_byte(green, common * 7152), nearest_byte(red, common)};
}

void convert_image(const ref::yuv_view& src, const ref::rgb_view& dst) {
    const ref::plane green = dst.green_plane();
    const ref::plane red = dst.red_plane();
    for (int y = 0; y < src.luma.height; ++y) {
        for (int x = 0; x < src.luma.width; ++x) {
            const int pair = x - x % 2;
            const ref::bgr colour =
                convert_pixel(src.luma.at(x, y), src.chroma_at(pair + 1, y), src.chroma_at(pair, y));
            dst.blue.at(x, y) = byte_of(colour.blue);
            green.at(x, y) = byte_of(colour.green);
            red.at(x, y) = byte_of(colour.red);
        }
    }
}

void label(const ref::plane& img, int first_area, int step, std::vector<ref::component>& out) {
    const std::vector<int> numbers = components_of(img);
    const std::vector<found_component> all = boxes_of(numbers, img.width, img.height);
    std::vector<found_component> left;
    for (int area = first_area; left.empty() || left.size() > 254; area += step) {
        left.clear();
        for (const found_component& one : all) {
            if (one.box.area > area) left.push_back(one);
        }
        if (left.empty()) break;
    }
    std::vector<unsigned char> slot(numbers.size() + 1, 0);
    for (std::size_t i = 0; i < left.size(); ++i) {
        out.push_back(left[i].box);
        slot[static_cast<std::size_t>(left[i].first)] = byte_of(static_cast<int>((i + 1) * 254 / left.size()));
    }
    for (int y = 0; y < img.height; ++y) {
        for (int x = 0; x < img.width; ++x)
            img.at(x, y) = slot[static_cast<std::size_t>(numbers[static_cast<std::size_t>(y * img.width + x)])];
    }
}

}  // namespace twin
