#include <fcntl.h>
#include <sys/stat.h>
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
    write_all(descriptor, bytes, size);
    close(descriptor);
    return true;
}

bool replace_file(const char* path, const char* bytes, size_t size) {
    char temporary[1024];
    const int length = snprintf(temporary, sizeof temporary, "%s.new", path);
    if (length < 0 || static_cast<size_t>(length) >= sizeof temporary) {
        return false;
    }
    const int descriptor = open(temporary, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (descriptor < 0) {
        return false;
    }
    const bool flushed = write_all(descriptor, bytes, size) && fsync(descriptor) == 0;
    const bool closed = close(descriptor) == 0;
    if (!flushed || !closed || rename(temporary, path) != 0) {
        unlink(temporary);
        return false;
    }
    return true;
}
