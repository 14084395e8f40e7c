#include "apps/orva_fire/task_folder.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <vector>

#include "apps/orva_fire/error.h"

namespace orva_fire {
namespace {

namespace fs = std::filesystem;

const char k_part[] = ".part.", k_old[] = ".old.";
const char k_lock_name[] = "lock";
const char k_random[] = "XXXXXX";
const size_t k_random_length = sizeof k_random - 1;
const size_t k_longest_name = 200;  // file systems allow 255 bytes
const int k_tries = 100;

[[noreturn]] void fail(const std::string& what, const std::string& path) {
    throw io_error("cannot " + what + " '" + path + "': " + std::strerror(errno));
}

// ".gate.mp4.part." in the same folder as the place.
std::string hidden_start(const std::string& place, const char* kind) {
    const fs::path path = place;
    return (path.parent_path() / ("." + path.filename().string().substr(0, k_longest_name) + kind)).string();
}

// Holds for as long as the descriptor is open, on network file systems too. False if another one has it.
bool lock(int descriptor) {
    struct flock whole = {};
    whole.l_type = F_WRLCK;
    whole.l_whence = SEEK_SET;
    return fcntl(descriptor, F_OFD_SETLK, &whole) == 0;
}

void remove_all(const std::string& path) {
    std::error_code ignored;
    fs::remove_all(path, ignored);
}

// Of a task that was killed: nobody holds its lock. One that is just being made has no lock yet and is empty.
void remove_if_abandoned(const std::string& folder) {
    const int descriptor = open((folder + "/" + k_lock_name).c_str(), O_RDWR | O_CLOEXEC);
    if (descriptor < 0) {
        if (errno == ENOENT) (void)rmdir(folder.c_str());  // deliberate: fails for what is not empty
        return;
    }
    if (lock(descriptor)) remove_all(folder);
    close(descriptor);
}

std::vector<std::string> beginning_with(const std::string& start) {
    std::vector<std::string> found;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(fs::path(start).parent_path(), error)) {
        const std::string path = entry.path().string();
        if (path.size() == start.size() + k_random_length && path.rfind(start, 0) == 0) found.push_back(path);
    }
    return found;
}

void clear_away(const std::string& place) {
    for (const std::string& folder : beginning_with(hidden_start(place, k_part))) remove_if_abandoned(folder);
    for (const std::string& folder : beginning_with(hidden_start(place, k_old))) remove_all(folder);
}

// Folders that mkdtemp makes are for their owner alone; results are for whom the user lets read.
void open_to_others(const std::string& folder) {
    const mode_t mask = umask(0);
    umask(mask);
    if (chmod(folder.c_str(), 0777 & ~mask) != 0) fail("make", folder);
}

std::string new_folder(const std::string& start) {
    std::string path = start + k_random;
    if (!mkdtemp(path.data())) fail("make the folder", path);
    return path;
}

// A path with a folder in front, so that the parts can be told from it.
std::string with_parent(const std::string& place) {
    const fs::path path = fs::path(place).lexically_normal();
    return (path.has_parent_path() ? path : "." / path).string();
}

}  // namespace

task_folder::task_folder(const std::string& place) : m_place(with_parent(place)) {
    const std::string parent = fs::path(m_place).parent_path().string();
    std::error_code error;
    fs::create_directories(parent, error);
    if (error) throw io_error("cannot make the folder '" + parent + "': " + error.message());
    const fs::file_status there = fs::status(m_place, error);
    if (fs::exists(there) && !fs::is_directory(there)) {
        throw io_error("'" + m_place + "' is no folder; the results of a recording cannot lie at its own place");
    }
    clear_away(m_place);
    make();
}

void task_folder::make() {
    for (int i = 0; i < k_tries; ++i) {
        m_path = new_folder(hidden_start(m_place, k_part));
        if (take_lock()) return open_to_others(m_path);
    }
    throw io_error("cannot keep a folder beside '" + m_place + "': something removes it again and again");
}

// Another task may take the new folder for an abandoned one until the lock is held. File systems without locks are
// taken as they are; what is left there has to be removed by hand.
bool task_folder::take_lock() {
    m_lock = open((m_path + "/" + k_lock_name).c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    if (m_lock < 0 && errno != ENOENT) fail("write", m_path + "/" + k_lock_name);
    struct stat about = {};
    const bool others = m_lock >= 0 && !lock(m_lock) && (errno == EAGAIN || errno == EACCES);
    if (m_lock >= 0 && !others && fstat(m_lock, &about) == 0 && about.st_nlink > 0) return true;
    if (m_lock >= 0) close(m_lock);
    m_lock = -1;
    return false;
}

task_folder::~task_folder() {
    if (!m_path.empty()) remove_all(m_path);
    if (m_lock >= 0) close(m_lock);
}

void task_folder::publish() {
    if (unlink((m_path + "/" + k_lock_name).c_str()) != 0) fail("remove", m_path + "/" + k_lock_name);
    for (int i = 0; i < k_tries; ++i) {
        if (std::rename(m_path.c_str(), m_place.c_str()) == 0) {
            m_path.clear();
            return;
        }
        if (errno != ENOTEMPTY && errno != EEXIST) fail("rename the results to", m_place);
        // Between these two steps there are no results at the place, which is never taken for done.
        const std::string old = new_folder(hidden_start(m_place, k_old));
        if (std::rename(m_place.c_str(), old.c_str()) != 0 && errno != ENOENT) fail("rename", m_place);
        remove_all(old);
    }
    throw io_error("cannot put the results at '" + m_place + "': others are put there again and again");
}

std::string unfinished_name(const std::string& folder_name) {
    const size_t tail = sizeof k_part - 1 + k_random_length;
    if (folder_name.size() <= tail + 1 || folder_name[0] != '.') return "";
    const size_t end = folder_name.size() - tail;
    return folder_name.compare(end, sizeof k_part - 1, k_part) == 0 ? folder_name.substr(1, end - 1) : "";
}

}  // namespace orva_fire
