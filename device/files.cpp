#include <fcntl.h>
#include <libgen.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "device/unit.h"

bool read_file(const char* path, FileBytes* file) {
    FILE* stream = fopen(path, "rbe");
    if (stream == nullptr) {
        return false;
    }
    const long end = fseek(stream, 0, SEEK_END) == 0 ? ftell(stream) : -1;
    if (end < 0) {
        fclose(stream);
        return false;
    }
    rewind(stream);
    const auto size = static_cast<size_t>(end);
    *file = {static_cast<char*>(malloc(size + 1)), 0};
    if (file->bytes != nullptr) {
        file->size = fread(file->bytes, 1, size, stream);
        file->bytes[file->size] = '\0';
    }
    fclose(stream);
    return true;
}

bool file_exists(const char* path) {
    return access(path, F_OK) == 0;
}

// Writes all of the bytes, however many calls that takes.
static bool write_all(int descriptor, const char* bytes, size_t size) {
    while (size > 0) {
        const ssize_t written = write(descriptor, bytes, size);
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            return false;
        }
        bytes += written;
        size -= static_cast<size_t>(written);
    }
    return true;
}

bool write_file(const char* path, const char* bytes, size_t size) {
    const int descriptor = open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (descriptor < 0) {
        return false;
    }
    struct stat status = {};
    const bool is_file = fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
    const bool written = write_all(descriptor, bytes, size);
    if (close(descriptor) == 0 && written) {
        return true;
    }
    if (is_file) {
        unlink(path);
    }
    return false;
}

// --- Replacing a file as a whole -----------------------------------------------------------------

// The names that a replacement deals with. The new content gets a name of its own before it takes
// over the file's: the same with a "~" for the last character, so that it fits wherever the file's
// does, is no "*.json", and is found again by the next replacement when a power cut leaves it over.
struct Replacement {
    const char* path;
    const char* temporary;
    const char* folder;
};

// The new content, written and flushed, in a file that may have no name yet.
static bool write_content(int descriptor, const char* path, const char* bytes, size_t size) {
    struct stat present;
    if (stat(path, &present) == 0) {
        // Who may not give the file to its owner may still give it to the group.
        [[maybe_unused]] const bool given =
            fchown(descriptor, present.st_uid, present.st_gid) == 0 ||
            fchown(descriptor, static_cast<uid_t>(-1), present.st_gid) == 0;
        if (fchmod(descriptor, present.st_mode & 07777) != 0) {
            return false;
        }
    } else if (errno != ENOENT) {
        return false;
    }
    return write_all(descriptor, bytes, size) && fsync(descriptor) == 0;
}

static bool give_name(int descriptor, const char* name) {
    char nameless[64];
    snprintf(nameless, sizeof nameless, "/proc/self/fd/%d", descriptor);
    return linkat(AT_FDCWD, nameless, AT_FDCWD, name, AT_SYMLINK_FOLLOW) == 0;
}

// Makes the temporary file with the whole content. Where the system can, it has no name until it is
// complete, so that nothing is left over however it ends before.
static bool make_nameless_temporary(const Replacement& names, const char* bytes, size_t size) {
    const int descriptor = open(names.folder, O_TMPFILE | O_WRONLY | O_CLOEXEC, 0666);
    if (descriptor < 0) {
        return false;
    }
    const bool made = write_content(descriptor, names.path, bytes, size) &&
                      give_name(descriptor, names.temporary);
    return close(descriptor) == 0 && made;
}

static bool make_named_temporary(const Replacement& names, const char* bytes, size_t size) {
    const int descriptor = open(names.temporary, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (descriptor < 0) {
        return false;
    }
    const bool made = write_content(descriptor, names.path, bytes, size);
    return close(descriptor) == 0 && made;
}

static bool make_temporary(const Replacement& names, const char* bytes, size_t size) {
    unlink(names.temporary);
    return make_nameless_temporary(names, bytes, size) || make_named_temporary(names, bytes, size);
}

// Opens a folder and waits until nobody else has it; closing the descriptor lets the next one in.
// -1 when it cannot be opened. Where it cannot be locked, nobody is waited for.
static int open_alone(const char* path) {
    const int folder = open(path, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    while (folder >= 0 && flock(folder, LOCK_EX) != 0 && errno == EINTR) {
    }
    return folder;
}

// One replacement in a folder at a time, so that two uploads of the same list do not get hold of
// each other's temporary file.
static bool replace_in_folder(const Replacement& names, const char* bytes, size_t size) {
    const int folder = open_alone(names.folder);
    if (folder < 0) {
        return false;
    }
    const bool replaced =
        make_temporary(names, bytes, size) && rename(names.temporary, names.path) == 0;
    if (!replaced) {
        unlink(names.temporary);
    }
    fsync(folder);
    close(folder);
    return replaced;
}

// The file that a path leads to, links followed as the shell would: for a link that leads nowhere
// yet the file is made first, empty, and `made` says so. Allocated; null when that cannot be done
// or memory runs out.
static char* target_of(const char* path, bool* made) {
    struct stat present;
    if (lstat(path, &present) != 0) {
        return errno == ENOENT ? strdup(path) : nullptr;
    }
    if (S_ISLNK(present.st_mode) && !file_exists(path)) {
        const int descriptor = open(path, O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
        if (descriptor < 0) {
            return nullptr;
        }
        close(descriptor);
        *made = true;
    }
    return realpath(path, nullptr);
}

static bool replace_target(const char* target, const char* bytes, size_t size) {
    struct stat present;
    if (stat(target, &present) == 0 && !S_ISREG(present.st_mode)) {
        return write_file(target, bytes, size);
    }
    char* temporary = strdup(target);
    char* folder = strdup(target);
    bool replaced = false;
    if (temporary != nullptr && folder != nullptr) {
        const size_t length = strlen(temporary);
        if (length > 0 && temporary[length - 1] != '~') {
            temporary[length - 1] = '~';
            replaced = replace_in_folder({target, temporary, dirname(folder)}, bytes, size);
        }
    }
    free(temporary);
    free(folder);
    return replaced;
}

static bool replace_here(const char* path, const char* bytes, size_t size) {
    bool made = false;
    char* target = target_of(path, &made);
    if (target == nullptr) {
        return false;
    }
    const bool replaced = replace_target(target, bytes, size);
    if (made && !replaced) {
        unlink(target);
    }
    free(target);
    return replaced;
}

// A child does it, in a session of its own: when this program is killed, the child goes on to the
// end.
bool replace_file(const char* path, const char* bytes, size_t size) {
    const pid_t child = fork();
    if (child > 0) {
        int status = 0;
        while (waitpid(child, &status, 0) < 0) {
            if (errno != EINTR) {
                return false;
            }
        }
        return status == 0;
    }
    if (child == 0) {
        setsid();
    }
    const bool replaced = replace_here(path, bytes, size);
    if (child == 0) {
        _exit(replaced ? 0 : 1);
    }
    return replaced;
}

// --- One run at a time ---------------------------------------------------------------------------

int take_turn() {
    return open_alone("/var/tmp");
}

void end_turn(int turn) {
    if (turn >= 0) {
        close(turn);
    }
}
