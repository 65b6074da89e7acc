// Applying a piece of a document to the recorder and seeing what the unit was told.
#pragma once

#include <cjson/cJSON.h>

#include <string>

// Parses `json`, hands it to `apply` as the section's item and returns the whole trace of it. What
// the recorder was told before stays; the trace starts empty.
std::string trace_of(void (*apply)(const cJSON* section), const std::string& json);

// The trace of taking one parameter snapshot.
inline const std::string snapshot_trace = "shell cp /dev/shm/rwparam /dev/shm/rwparam_temp\n";
