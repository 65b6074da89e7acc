// The appliers of a unit configuration's sections. Each takes the item of its key as the document
// holds it, of any JSON type, does not own it, and reports nothing: a member that cannot be used is
// skipped, and what a section does always (pauses, refresh lines, install scripts) happens all the
// same.
#pragma once

#include <cjson/cJSON.h>

// identity.cpp

// Stores the device name when it is at most 32 bytes long, and passes it on to the Dante transmit
// channels that the unit keeps in step with it. An item that is not a text changes nothing.
void apply_device_name(const cJSON* item);

// Stores the serial number in both parameter stores, then waits 1 second. An item that is not a text
// changes nothing.
void apply_serial_number(const cJSON* item);
