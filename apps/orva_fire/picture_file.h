// Single pictures as bytes of JPEG and PNG files.
#ifndef ORVA_APPS_ORVA_FIRE_PICTURE_FILE_H
#define ORVA_APPS_ORVA_FIRE_PICTURE_FILE_H

#include <string>

#include "apps/orva_fire/ffmpeg.h"
#include "apps/orva_fire/geometry.h"

namespace orva_fire {

// A JPEG file of this size, full range and BT.601 whatever the picture is. Throws io_error.
std::string jpeg_bytes(const AVFrame& picture, picture_size size);

// A PNG file; the picture is GRAY8 or RGB24. Throws io_error.
std::string png_bytes(const AVFrame& picture);

// The same at most so wide, its aspect kept.
std::string thumbnail(const AVFrame& picture, int most_columns);

// Writes a file, all of it or nothing. Throws io_error that names it.
void save_bytes(const std::string& path, const std::string& bytes);

}  // namespace orva_fire

#endif
