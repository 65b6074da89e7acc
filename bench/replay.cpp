// The bare cost of configuring a unit: runs shell lines by system(), one behind the other, and
// exchanges commands with the microcontroller, without the gateway's parsing, walking and deciding.
//
// Usage: replay FILE
// The file holds the entries, each ended by a NUL: "s" and a shell line, or "m" and the line that
// writes a command to the microcontroller's serial device.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

static char entries[1 << 22];

static void exchange(const char* line) {
    const int relay = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(5449);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (connect(relay, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
        system(line) != 0) {
        exit(1);
    }
    // The answer is small: its end mark, a line end and a prompt come with its last piece.
    char answer[4096];
    size_t size = 0;
    ssize_t got = 0;
    while ((got = read(relay, answer + size, sizeof answer - size)) > 0) {
        size += static_cast<size_t>(got);
        if (memmem(answer, size, ":mcu_end", 8) != nullptr && answer[size - 1] == ' ') {
            break;
        }
    }
    close(relay);
}

int main(int count, char** arguments) {
    FILE* file = count == 2 ? fopen(arguments[1], "rb") : nullptr;
    if (file == nullptr) {
        return 2;
    }
    const size_t size = fread(entries, 1, sizeof entries - 1, file);
    fclose(file);
    for (const char* entry = entries; entry < entries + size; entry += strlen(entry) + 1) {
        if (entry[0] == 'm') {
            exchange(entry + 1);
        } else if (system(entry + 1) < 0) {
            return 1;
        }
    }
    return 0;
}
