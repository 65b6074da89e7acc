// The kinds of uploads: the form field each is known by, who deals with it and what is replied.
#pragma once

#include "cgi/pattern.h"
#include "cgi/uploads.h"
#include "unitconf/configuration.h"

// What is sent back.
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

inline constexpr int handler_results = 6;

struct UploadKind {
    Pattern pattern;  // the form field as a browser writes it
    bool size_limited = false;
    int (*handle)(const char* content) = nullptr;  // applies the content
    Reply replies[handler_results] = {};  // by the handler's result; any other has no reply
    char* (*export_object)() = nullptr;   // instead of all that: the reply, without any content
};

// In the order in which they are looked for: the first pattern that stands anywhere in the request
// decides.
inline constexpr UploadKind upload_kinds[] = {
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
