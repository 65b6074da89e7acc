// One request of the unit's web interface, from its first byte to the reply. The program is a CGI
// program that writes its own status line; each run serves one request and ends.
#include <strings.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "cgi/dispatch.h"

static constexpr int32_t longest_request = 0x9FFFFF;

// A request takes memory only as far as its bytes reach.
static char request_buffer[longest_request];

// The announced length of the body. More than the buffer holds, and less than nothing, mean as much
// as it holds.
static int32_t announced_length(const char* text) {
    const long length = strtol(text, nullptr, 10);
    return length < 0 || length > longest_request ? longest_request : static_cast<int32_t>(length);
}

// Reads the body up to its announced length or its end and returns its size. Standard input has no
// buffer, so that no byte behind the announced length is taken from it, and fread then asks for all
// that is missing at once.
static size_t read_body() {
    const char* announced = getenv("CONTENT_LENGTH");
    const int32_t wanted = announced == nullptr ? 0 : announced_length(announced);
    return wanted > 0 ? fread(request_buffer, 1, static_cast<size_t>(wanted), stdin) : 0;
}

int main() {
    setvbuf(stdin, nullptr, _IONBF, 0);
    // The status line ends in CR LF, the header and the empty line behind it in LF alone: that is
    // what the unit's web interface has always been sent. Every run begins so, also one that has
    // nothing to say.
    puts("HTTP/1.1 200 OK\r");
    printf("%s\n\n", "Content-Type: text/html");
    const char* method = getenv("REQUEST_METHOD");
    if (method == nullptr) {
        return 0;
    }
    if (strcasecmp(method, "POST") == 0) {
        const size_t size = read_body();
        dispatch_upload(request_buffer, size);
    } else if (strcasecmp(method, "GET") == 0) {
        const char* query = getenv("QUERY_STRING");
        if (query != nullptr) {
            dispatch_upload(query, strnlen(query, longest_request));
        }
    }
    return 0;
}
