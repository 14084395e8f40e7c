#include "apps/orva_fire/password_file.h"

#include <fstream>

#include "apps/orva_fire/error.h"

namespace orva_fire {

std::string read_password_file(const std::string& path, const std::string& option) {
    std::ifstream file(path);
    std::string line;
    if (!std::getline(file, line)) throw io_error(option + ": cannot read a line from '" + path + "'");
    if (!line.empty() && line.back() == '\r') line.pop_back();
    return line;
}

}  // namespace orva_fire
