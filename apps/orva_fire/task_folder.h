// The folder in which a task gathers its results until they are complete. A task that is killed, at whatever moment,
// leaves nothing at the place of the results that looks complete; what it leaves besides is cleared away by the next
// one for the same recording.
#ifndef ORVA_APPS_ORVA_FIRE_TASK_FOLDER_H
#define ORVA_APPS_ORVA_FIRE_TASK_FOLDER_H

#include <string>

namespace orva_fire {

class task_folder {
public:
    // place: where the results shall be. Makes a hidden folder beside it, and the folders above.
    // Tasks may be at the same recording at the same time, here or on another machine: each has a folder of its own,
    // known to be in use by a lock in it, and the last to finish wins. Throws io_error.
    explicit task_folder(const std::string& place);
    ~task_folder();  // removes the folder unless it was published
    task_folder(const task_folder&) = delete;
    task_folder& operator=(const task_folder&) = delete;

    const std::string& path() const { return m_path; }

    // Results of an earlier run go away, and these take their place. Throws io_error.
    void publish();

private:
    void make();
    bool take_lock();

    const std::string m_place;
    std::string m_path;
    int m_lock = -1;
};

// The place of the results if a folder of this name is one of an unfinished task ("gate.mp4" for
// ".gate.mp4.part.x7Qa2k"); otherwise nothing. Very long names are cut.
std::string unfinished_name(const std::string& folder_name);

}  // namespace orva_fire

#endif
