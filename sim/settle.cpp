#include "settle.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <map>
#include <string>
#include <system_error>

#include "journal.h"

namespace sim {

// Above everything that a shell opens for itself.
static constexpr int settle_descriptor = 199;
static constexpr int longest_wait_ms = 300;

static constexpr char noted_path[] = "/run/sim/noted";

// What the simulator writes itself into a watched folder.
static constexpr char own_dump[] = "/var/tmp/lmparam_dump";

static constexpr const char* watched[] = {"/share", "/sys/devices/platform/videoip", "/user_data2",
                                          "/var/tmp"};

static std::string settle_path(pid_t gateway) {
    return std::string(state_folder) + "/settle." + std::to_string(gateway);
}

bool inside_a_line() {
    return fcntl(settle_descriptor, F_GETFD) != -1;
}

void hold_settle_lock(pid_t gateway) {
    const int lock = open(settle_path(gateway).c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    if (lock < 0) {
        return;
    }
    flock(lock, LOCK_SH);
    dup2(lock, settle_descriptor);
    close(lock);
}

void drop_settle_lock() {
    close(settle_descriptor);
}

static void wait_for_lock(const std::string& path) {
    const int lock = open(path.c_str(), O_RDWR | O_CLOEXEC);
    if (lock < 0) {
        return;
    }
    int waited_ms = 0;
    while (flock(lock, LOCK_EX | LOCK_NB) != 0) {
        if (waited_ms++ >= longest_wait_ms) {
            // A new file means a new lock: what still holds the old one is not waited for again.
            unlink(path.c_str());
            break;
        }
        usleep(1000);
    }
    close(lock);
}

void wait_for_background_work(pid_t gateway) {
    wait_for_lock(settle_path(gateway));
}

void wait_for_all_background_work() {
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(state_folder, error)) {
        if (entry.path().filename().string().starts_with("settle.")) {
            wait_for_lock(entry.path().string());
        }
    }
}

bool tell_microcontroller(const char* command) {
    const int channel = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    snprintf(address.sun_path, sizeof address.sun_path, "%s/mcu.sock", state_folder);
    const bool told =
        connect(channel, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0 &&
        write(channel, command, strlen(command)) > 0;
    char answer = 0;
    while (told && read(channel, &answer, 1) > 0) {
    }
    close(channel);
    return told;
}

// A noted file gets this time of change, which no write leaves behind, so that the next change
// shows however soon it comes.
static constexpr timespec noted_time = {1, 0};

using FileMap = std::map<std::string, std::string>;

// Notes one file: its inode goes to `present`, its size to `changed` when it is not as it was
// before.
static void note_file(const std::string& path, const FileMap& before, FileMap& present,
                      FileMap& changed) {
    struct stat info = {};
    if (path == own_dump || lstat(path.c_str(), &info) != 0 || S_ISDIR(info.st_mode)) {
        return;
    }
    const std::string inode = std::to_string(info.st_ino);
    present[path] = inode;
    const auto known = before.find(path);
    if (info.st_mtim.tv_sec == noted_time.tv_sec && info.st_mtim.tv_nsec == noted_time.tv_nsec &&
        known != before.end() && known->second == inode) {
        return;
    }
    const timespec times[] = {noted_time, noted_time};
    utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW);
    changed[path] = std::to_string(info.st_size);
}

static void note_files_below(const char* folder, const FileMap& before, FileMap& present,
                             FileMap& changed) {
    std::error_code error;
    std::filesystem::recursive_directory_iterator entry(folder, error);
    for (const std::filesystem::recursive_directory_iterator end; !error && entry != end;
         entry.increment(error)) {
        note_file(entry->path().string(), before, present, changed);
    }
}

void note_files(bool silent) {
    const int lock = take_lock("/run/sim/noted.lock");
    FileMap before;
    std::string text;
    read_file(noted_path, text);
    for (size_t at = 0; at < text.size();) {
        const size_t inode = text.find('\0', at);
        const size_t end = text.find('\0', inode + 1);
        before[text.substr(at, inode - at)] = text.substr(inode + 1, end - inode - 1);
        at = end + 1;
    }

    FileMap present;
    FileMap changed;
    for (const char* folder : watched) {
        note_files_below(folder, before, present, changed);
    }
    for (const auto& [path, inode] : before) {
        if (!present.contains(path)) {
            changed[path] = "gone";
        }
    }
    if (!changed.empty()) {
        std::string list;
        for (const auto& [path, inode] : present) {
            list += path + '\0' + inode + '\0';
        }
        write_file(noted_path, list);
        for (const auto& [path, size] : changed) {
            if (!silent) {
                append_entry("file", escape_bytes(path) + ' ' + size);
            }
        }
    }
    release_lock(lock);
}

}  // namespace sim
