// The least that any program in the gateway's place does for a request: asks for the MAC, reads the
// body in one block, finds the form field and the content by memmem, copies the content, parses it
// where the gateway does, and prints the reply. What the gateway costs is told beside this.
//
// Usage: floor FIELD LIMIT PARSES [STORED TWIN]
// FIELD is looked for as it stands. Of a content at most LIMIT bytes are taken; without a limit, 0,
// the field is all that is looked for. PARSES is how often the content is parsed. STORED is where
// it goes in the stored form of lists, TWIN where `cp` then puts its copy.
#include <cjson/cJSON.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

static char body[0xA00000];
static char content[0x100000];

static size_t read_body() {
    const char* announced = getenv("CONTENT_LENGTH");
    size_t wanted = announced == nullptr ? 0 : strtoul(announced, nullptr, 10);
    wanted = wanted < sizeof body ? wanted : sizeof body - 1;
    size_t size = 0;
    ssize_t got = 1;
    while (size < wanted && (got = read(STDIN_FILENO, body + size, wanted - size)) > 0) {
        size += static_cast<size_t>(got);
    }
    return size;
}

static const char* find(const char* text, const char* end, const char* wanted) {
    return static_cast<const char*>(
        memmem(text, static_cast<size_t>(end - text), wanted, strlen(wanted)));
}

// False when the content is longer than the limit.
static bool copy_content(const char* end, size_t limit) {
    const char* headers = find(body, end, "\r\n\r\n");
    const char* begin = headers == nullptr ? body : headers + 4;
    const char* found = find(begin, end, "\r\n----");
    const auto size = static_cast<size_t>((found == nullptr ? end : found) - begin);
    if (size > limit) {
        return false;
    }
    memcpy(content, begin, size);
    return true;
}

// Every double quote becomes TAG, line ends and tabs go; written, flushed, renamed, copied.
static bool store(const char* stored, const char* twin) {
    char* text = static_cast<char*>(malloc(3 * strlen(content) + 1));
    size_t size = 0;
    for (const char* at = content; *at != '\0'; at++) {
        if (*at == '"') {
            memcpy(text + size, "TAG", 3);
            size += 3;
        } else if (*at != '\r' && *at != '\n' && *at != '\t') {
            text[size++] = *at;
        }
    }
    char line[1024];
    snprintf(line, sizeof line, "%s.floor", stored);
    const int file = open(line, O_WRONLY | O_CREAT | O_TRUNC, 0666);
    if (write(file, text, size) != static_cast<ssize_t>(size) || fsync(file) != 0 ||
        close(file) != 0 || rename(line, stored) != 0) {
        return false;
    }
    snprintf(line, sizeof line, "cp %s %s", stored, twin);
    return system(line) == 0;
}

int main(int count, char** arguments) {
    if (count < 4) {
        return 2;
    }
    char mac[1024] = "";
    FILE* tool = popen("astparam g ethaddr", "r");
    if (tool == nullptr || fgets(mac, sizeof mac, tool) == nullptr) {
        return 1;
    }
    pclose(tool);
    mac[strcspn(mac, "\n")] = '\0';

    printf("HTTP/1.1 200 OK\r\nContent-Type: text/html\n\n");
    const char* const end = body + read_body();
    const size_t limit = strtoul(arguments[2], nullptr, 10);
    bool success = find(body, end, arguments[1]) != nullptr;
    if (success && limit > 0) {
        success = copy_content(end, limit);
        for (int parses = atoi(arguments[3]); success && parses > 0; parses--) {
            success = cJSON_Parse(content) != nullptr;
        }
        if (success && count > 5) {
            success = store(arguments[4], arguments[5]);
        }
    }
    printf("{\"command\":\"uploadConfFile\",\"success\":%s,\"mac\":\"%s\"}",
           success ? "true" : "false", mac);
    return 0;
}
