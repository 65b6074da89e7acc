#include "cgi/dispatch.h"

#include <cjson/cJSON.h>

#include <cstdio>
#include <cstring>

#include "cgi/body.h"
#include "cgi/pattern.h"
#include "cgi/streams.h"
#include "cgi/uploads.h"
#include "device/signals.h"
#include "device/unit.h"
#include "unitconf/configuration.h"

// --- The replies ---------------------------------------------------------------------------------

enum class Reply : unsigned char {
    none,
    success,
    not_supported,
    too_large,
    not_json,
    type_deleted,
    type_modified,
    out_of_range,
    error_node,
    invalid_edid,
};

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

// --- The kinds of uploads ------------------------------------------------------------------------

static constexpr int handler_results = 6;

struct UploadKind {
    Pattern pattern;  // the form field as a browser writes it
    bool size_limited = false;
    int (*handle)(const char* content) = nullptr;  // applies the content
    Reply replies[handler_results] = {};  // by the handler's result; any other has no reply
    char* (*export_object)() = nullptr;   // instead of all that: the reply, without any content
};

// In the order in which they are looked for: the first pattern that stands anywhere in the request
// decides.
static constexpr UploadKind upload_kinds[] = {
    {.pattern = " name=\"Rs232CodeUpload\"",
     .size_limited = true,
     .handle = store_rs232_list,
     .replies = {Reply::not_json, Reply::success}},
    {.pattern = " name=\"IRCodeUpload\"",
     .size_limited = true,
     .handle = store_ir_list,
     .replies = {Reply::not_json, Reply::success}},
    {.pattern = " name=\"UnitConfUpload\"",
     .handle = apply_unit_configuration,
     .replies = {Reply::not_json, Reply::success, Reply::not_json, Reply::type_deleted,
                 Reply::type_modified}},
    {.pattern = " name=\"TriggerCommandsUpload\"",
     .handle = store_trigger_lists,
     .replies = {Reply::not_json, Reply::success}},
    // Neither blank nor quotes: it is also the query of a GET.
    {.pattern = "name=getCaEncryptData", .export_object = export_certificates},
    {.pattern = " name=\"VideoWallUpload\"",
     .size_limited = true,
     .handle = apply_video_wall_upload,
     .replies = {Reply::not_json, Reply::success, Reply::not_json, Reply::out_of_range,
                 Reply::error_node}},
    {.pattern = " name=\"CustomEdidFile\"",
     .size_limited = true,
     .handle = load_custom_edid,
     .replies = {Reply::not_json, Reply::success, Reply::not_json, Reply::out_of_range,
                 Reply::error_node, Reply::invalid_edid}},
};

static_assert(same_anchor(upload_kinds));

static const UploadKind* recognise_upload(const char* request, size_t length) {
    return find_first_row(request, request + length, upload_kinds).row;
}

const char* recognised_field(const char* request, size_t length) {
    const UploadKind* kind = recognise_upload(request, length);
    return kind == nullptr ? nullptr : kind->pattern.text;
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
    const UploadKind* kind = recognise_upload(request, length);
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
