#include "tests/apps/seen_events.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

namespace apps_test {
namespace {

// One file a test program and shard, made anew by each run.
std::ofstream open_file(const char* folder) {
    std::filesystem::create_directories(folder);
    const char* shard = std::getenv("GTEST_SHARD_INDEX");
    const std::string program = std::filesystem::read_symlink("/proc/self/exe").filename().string();
    return std::ofstream(std::string(folder) + "/" + program + "-" + (shard ? shard : "0") + ".jsonl");
}

}  // namespace

void keep_events(const std::string& lines) {
    const char* folder = std::getenv("ORVA_SEEN_EVENTS");
    if (!folder) return;
    static std::ofstream file = open_file(folder);
    std::istringstream stream(lines);
    for (std::string line; std::getline(stream, line);) {
        const auto value = nlohmann::json::parse(line, nullptr, false);
        if (value.is_object() && value.contains("schema") && value.contains("event")) file << line << std::endl;
    }
}

}  // namespace apps_test
