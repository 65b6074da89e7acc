// The least that any program in the gateway's place does for a request: asks for the MAC, reads the
// body in one block, finds the form field and the content by memmem, copies the content, parses it
// where the gateway does, and prints the reply. What the gateway costs is told beside this.
//
// Usage: floor FIELD LIMIT PARSES [STORED TWIN]
// The field is looked for as a browser writes it; a content above LIMIT bytes is refused; STORED is
// where the content goes in the stored form of lists, TWIN where `cp` then puts its copy.
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

// Every double quote becomes TAG, line ends and tabs go; written, flushed, renamed, copied.
static void store(const char* stored, const char* twin) {
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
    if (write(file, text, size) < 0 || fsync(file) != 0 || close(file) != 0 ||
        rename(line, stored) != 0) {
        exit(1);
    }
    snprintf(line, sizeof line, "cp %s %s", stored, twin);
    exit(system(line) == 0 ? 0 : 1);
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
    bool success = false;
    const char* field = find(body, end, arguments[1]);
    const char* begin = field == nullptr ? nullptr : find(body, end, "\r\n\r\n");
    if (begin != nullptr) {
        begin += 4;
        const char* last = static_cast<size_t>(end - begin) > limit + 6 ? begin + limit + 6 : end;
        const char* found = find(begin, last, "\r\n----");
        const auto size = static_cast<size_t>((found == nullptr ? last : found) - begin);
        if (size <= limit) {
            memcpy(content, begin, size);
            success = arguments[3][0] != '1' || cJSON_Parse(content) != nullptr;
            if (count > 5) {
                store(arguments[4], arguments[5]);
            }
        }
    }
    printf("{\"command\":\"uploadConfFile\",\"success\":%s,\"mac\":\"%s\"}",
           success ? "true" : "false", mac);
    return 0;
}
