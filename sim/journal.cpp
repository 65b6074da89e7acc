#include "journal.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

namespace sim {

static constexpr char journal_path[] = "/run/sim/journal";

// Length of the valid UTF-8 sequence at the start of bytes, 0 when there is none.
static size_t utf8_sequence_length(std::string_view bytes) {
    const unsigned char lead = static_cast<unsigned char>(bytes[0]);
    size_t length = 0;
    if (lead < 0x80) {
        return 1;
    } else if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
    }
    if (length == 0 || bytes.size() < length) {
        return 0;
    }
    for (size_t i = 1; i < length; i++) {
        if ((static_cast<unsigned char>(bytes[i]) & 0xC0) != 0x80) {
            return 0;
        }
    }
    return length;
}

std::string escape_bytes(std::string_view bytes) {
    std::string escaped;
    escaped.reserve(bytes.size());
    for (size_t i = 0; i < bytes.size();) {
        const unsigned char byte = static_cast<unsigned char>(bytes[i]);
        const size_t length = utf8_sequence_length(bytes.substr(i));
        if (length == 0 || byte < 32 || byte == 127 || byte == '^') {
            char code[4];
            snprintf(code, sizeof code, "^%02X", byte);
            escaped += code;
            i++;
        } else {
            escaped += bytes.substr(i, length);
            i += length;
        }
    }
    return escaped;
}

std::string quote_argument(std::string_view argument) {
    const std::string text = escape_bytes(argument);
    const bool plain = !text.empty() && text.find_first_of(" \"\\'$`;&|<>(){}") == text.npos;
    if (plain) {
        return text;
    }
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') {
            quoted += '\\';
        }
        quoted += c;
    }
    return quoted + '"';
}

void append_entry(std::string_view kind, std::string_view text) {
    std::string line(kind);
    if (!text.empty()) {
        line += ' ';
        line += text;
    }
    line += '\n';
    const int journal = open(journal_path, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666);
    if (journal < 0 || flock(journal, LOCK_EX) != 0 ||
        write(journal, line.data(), line.size()) != static_cast<ssize_t>(line.size())) {
        perror("simulated unit: journal");
        _exit(111);
    }
    close(journal);
}

bool read_file(const char* path, std::string& text) {
    const int file = open(path, O_RDONLY | O_CLOEXEC);
    if (file < 0) {
        return false;
    }
    std::string content;
    char piece[65536];
    ssize_t got = 0;
    while ((got = read(file, piece, sizeof piece)) > 0) {
        content.append(piece, static_cast<size_t>(got));
    }
    close(file);
    text = content;
    return true;
}

bool write_file(const char* path, std::string_view text) {
    const std::string temporary = std::string(path) + ".new";
    const int file = open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (file < 0) {
        return false;
    }
    const bool written = write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    close(file);
    return written && rename(temporary.c_str(), path) == 0;
}

int take_lock(const char* path) {
    const int lock = open(path, O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    if (lock >= 0) {
        while (flock(lock, LOCK_EX) != 0 && errno == EINTR) {
        }
    }
    return lock;
}

void release_lock(int lock) {
    close(lock);
}

}  // namespace sim
