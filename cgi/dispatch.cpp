#include "cgi/dispatch.h"

#include <cjson/cJSON.h>

#include <cstdio>
#include <cstring>

#include "cgi/body.h"
#include "cgi/pattern.h"
#include "cgi/streams.h"
#include "cgi/upload_kinds.h"
#include "device/signals.h"
#include "device/unit.h"

// --- The replies ---------------------------------------------------------------------------------

// What a reply tells about a failure.
static const char* feedback_of(Reply reply) {
    switch (reply) {
        case Reply::none:
        case Reply::success:
            break;
        case Reply::not_supported:
            return "The uploaded file is not in the supported list";
        case Reply::too_large:
            return "more than 500kb";
        case Reply::not_json:
            return "The uploaded file format is not JSON";
        case Reply::type_deleted:
            return "Invalid file, do not delete the type field in the JSON data.";
        case Reply::type_modified:
            return "Invalid file, do not modify the type field in the JSON data.";
        case Reply::out_of_range:
            return "Error, the parameter range is incorrect";
        case Reply::error_node:
            return "Error, JSON data error node";
        case Reply::invalid_edid:
            return "Invalid EDID data, must be 256 bytes and contain only hex characters "
                   "(0-9A-Fa-f)";
    }
    return "";
}

// The MAC goes in as the unit's tool prints it.
static void print_reply(Reply reply, const char* mac) {
    if (reply == Reply::success) {
        printf("{\"command\":\"uploadConfFile\",\"success\":true,\"mac\":\"%s\"}", mac);
    } else if (reply != Reply::none) {
        printf(
            "{\"command\":\"uploadConfFile\",\"success\":false,\"mac\":\"%s\",\"feedback\":\"%s\"}",
            mac, feedback_of(reply));
    }
}

// --- The dispatch --------------------------------------------------------------------------------

static constexpr size_t content_buffer_size = 0x100000;
static constexpr size_t size_limit = 512000;

static char content_buffer[content_buffer_size];

static Reply handle_upload(const UploadKind& kind, const char* request, size_t length) {
    const size_t most = kind.size_limited ? size_limit : content_buffer_size - 1;
    const Content content = find_content(request, length, most);
    if (content.begin == nullptr) {
        return Reply::none;
    }
    if (content.length > most) {
        return Reply::too_large;
    }
    memcpy(content_buffer, content.begin, content.length);
    content_buffer[content.length] = '\0';
    const int result = kind.handle(content_buffer);
    return result >= 0 && result < handler_results ? kind.replies[result] : Reply::none;
}

void dispatch_upload(const char* request, size_t size) {
    const ReplyStream reply_stream = put_reply_aside();
    outlast_the_caller();
    char mac[output_text_size] = {};
    read_command_output("astparam g ethaddr", mac);

    const size_t length = strnlen(request, size);  // nothing behind a NUL is seen
    const UploadKind* kind = find_first_row(request, request + length, upload_kinds).row;
    Reply reply = Reply::not_supported;
    char* exported = nullptr;
    if (kind != nullptr && kind->export_object != nullptr) {
        reply = Reply::none;
        exported = kind->export_object();
    } else if (kind != nullptr) {
        reply = handle_upload(*kind, request, length);
    }

    take_reply_up(reply_stream);
    print_reply(reply, mac);
    if (exported != nullptr) {
        printf("%s", exported);
        cJSON_free(exported);
    }
}
