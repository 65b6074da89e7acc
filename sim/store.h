// The unit's two parameter stores and the dumps in which its services export them.
#pragma once

#include <string>
#include <string_view>

namespace sim {

enum class Store {
    rw,     // astparam's: key=value entries, exported to /dev/shm/rwparam
    live,   // lmparam's: KEY=value lines, exported to /var/tmp/lmparam_dump
    peers,  // the other units on the network: address=MAC, looked up by node_query, not exported
};

// Loads the stores of a factory-fresh unit from the text file of its model (sections [astparam],
// [lmparam] and [peers]; "key=value" lines; "#" comments) and writes both dumps. False when the
// file cannot be read or holds a line outside that form.
bool load_initial_parameters(const char* path);

// True and the value when the store has the key, exact case.
bool get_parameter(Store store, std::string_view key, std::string& value);

// Sets a key, at its place when it exists, else at the end, and writes the store's dump again.
void set_parameter(Store store, std::string_view key, std::string_view value);

// Takes a key out of the store and its dump.
void unset_parameter(Store store, std::string_view key);

}  // namespace sim
