// One request of the unit's web interface, from its first byte to the reply. The program is a CGI
// program that writes its own status line; each run serves one request and ends.
#include <strings.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "cgi/dispatch.h"

static constexpr size_t request_buffer_size = 0xA00000;
// One less, so that the closing NUL always fits.
static constexpr int32_t longest_request = request_buffer_size - 1;

// A request takes memory only as far as its bytes reach.
static char request_buffer[request_buffer_size];
static int32_t request_length;

// The announced length of the body. More than the buffer holds, and less than nothing, mean as much
// as it holds.
static int32_t announced_length(const char* text) {
    const long length = strtol(text, nullptr, 10);
    return length < 0 || length > longest_request ? longest_request : static_cast<int32_t>(length);
}

// Reads the body up to its announced length or its end. Standard input has no buffer, so that no
// byte behind the announced length is taken from it, and fread then asks for all that is missing at
// once.
static void read_body() {
    const char* announced = getenv("CONTENT_LENGTH");
    const int32_t wanted = announced == nullptr ? 0 : announced_length(announced);
    if (wanted > 0) {
        request_length =
            static_cast<int32_t>(fread(request_buffer, 1, static_cast<size_t>(wanted), stdin));
    }
    request_buffer[request_length] = '\0';
}

int main() {
    setvbuf(stdin, nullptr, _IONBF, 0);
    // The status line ends in CR LF, the header and the empty line behind it in LF alone: that is
    // what the unit's web interface has always been sent. Every run begins so, also one that has
    // nothing to say.
    puts("HTTP/1.1 200 OK\r");
    puts("Content-Type: text/html\n");
    const char* method = getenv("REQUEST_METHOD");
    if (method == nullptr) {
        return 0;
    }
    if (strcasecmp(method, "POST") == 0) {
        read_body();
        dispatch_upload(request_buffer, static_cast<size_t>(request_length));
    } else if (strcasecmp(method, "GET") == 0) {
        const char* query = getenv("QUERY_STRING");
        if (query != nullptr) {
            const size_t length = strnlen(query, longest_request);
            memcpy(request_buffer, query, length);
            request_buffer[length] = '\0';
            dispatch_upload(request_buffer, length);
        }
    }
    return 0;
}
