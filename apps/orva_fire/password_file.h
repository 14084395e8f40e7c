// Passwords that stand in files, where command lines and process lists do not show them.
#ifndef ORVA_APPS_ORVA_FIRE_PASSWORD_FILE_H
#define ORVA_APPS_ORVA_FIRE_PASSWORD_FILE_H

#include <string>

namespace orva_fire {

// The first line of a file, without its end. Throws io_error that names the option.
std::string read_password_file(const std::string& path, const std::string& option);

}  // namespace orva_fire

#endif
